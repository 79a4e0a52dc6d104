#pragma once

#include <QByteArray>
#include <QString>

// The enciphered datagram that names a device: 4 bytes not read, the total length T as i16 at
// offset 4, and from offset 6 on T - 6 bytes, AES-128 in CBC mode. The plain text is a chain of
// records of L + 12 bytes, L being the i16 at a record's offset 2. Without widgets or sockets.

/// Deciphers one datagram and walks its records as `readDeviceRecords` does. Of a T that says more
/// than there is, what is there is taken; with a T below 6 there is nothing.
bool readDeviceDatagram(const QByteArray &datagram, QString &deviceName);

/// Walks the records of a plain text, which may end in padding: none begins in the last 15 bytes. A
/// record of type 0 (i16 at offset 8) with a text (flag at offset 47, L - 38 bytes of UTF-8 from
/// offset 48) leaves the text's first line in `deviceName`, and an empty one where L is below 38;
/// records of other types are passed over.
///
/// Returns false at the first record of type 0 whose checksum doesn't match or whose flag or text
/// lie beyond the end, or at a chain that leads out at the front or around for ever. What was read
/// before that stands in `deviceName`.
bool readDeviceRecords(const QByteArray &plain, QString &deviceName);
