#pragma once

#include <QByteArray>
#include <QString>

// One record and one datagram of a device, as it sends them.

/// What a name is before it is read.
const QString kOldName = QStringLiteral("old");

/// The name in the record.
const QString kName = QStringLiteral("吊舱 7");

/// A whole record: type 0, L = 51, the text "吊舱 7\nrest" of 13 bytes, CRC A7 82.
const QByteArray kRecord = QByteArray::fromHex("0000"
                                               "3300"
                                               "01020304"
                                               "0000"
                                               "a0a1a2a3a4a5a6a7a8a9aaabacadaeaf"
                                               "000000000000000000000000000000000000000000"
                                               "01"
                                               "e5908ae888b12037"
                                               "0a"
                                               "72657374"
                                               "a782");

/// The same as a datagram, T = 70, made outside of this program: the record through
/// `openssl enc -aes-128-cbc`, with key and vector as shell/devicekey.cpp makes them.
const QByteArray kDatagram = QByteArray::fromHex("00000000"
                                                 "4600"
                                                 "75d2897507415d856a00a96f814938ff"
                                                 "cfe12dd64f3a53fc8c9a032b9f357be0"
                                                 "70f8b028b143111295b5acceb4fcea82"
                                                 "005c9ba0ee6f29fdff607eba308fb578");

inline QByteArray withByte(QByteArray bytes, int at, char value)
{
    bytes[at] = value;
    return bytes;
}
