#pragma once

#include <QByteArray>
#include <QString>
#include <QtGlobal>

// The field codec of the GCU private protocol: little-endian field access, the fixed-point
// conversions, hexadecimal text and the frame checksum. Reentrant, without state.

/// Size of the checksum that ends every frame, in bytes.
constexpr int kCrcSize = 2;

/// Reads the two little-endian bytes at `data`; no alignment is assumed.
qint16 readI16(const void *data);
quint16 readU16(const void *data);

/// Reads the four little-endian bytes at `data`; no alignment is assumed.
qint32 readI32(const void *data);
quint32 readU32(const void *data);

/// Stores `value` in two little-endian bytes at `buffer` + `offset`.
void writeI16At(void *buffer, int offset, qint16 value);
void writeU16At(void *buffer, int offset, quint16 value);

/// Stores `value` in four little-endian bytes at `buffer` + `offset`.
void writeI32At(void *buffer, int offset, qint32 value);
void writeU32At(void *buffer, int offset, quint32 value);

/// Sets or clears bit `bit` (0 to 7) of the byte at `byte`; the other seven stay.
void setBit(quint8 *byte, int bit, bool on);

/// The value as a new little-endian array of two or four bytes.
QByteArray encodeI16(qint16 value);
QByteArray encodeU16(quint16 value);
QByteArray encodeI32(qint32 value);
QByteArray encodeU32(quint32 value);

/// The value of the first two or four bytes of `bytes`. Missing bytes read as zero, so that a
/// single byte reads as an unsigned number from 0 to 255.
qint16 decodeI16(const QByteArray &bytes);
quint16 decodeU16(const QByteArray &bytes);
qint32 decodeI32(const QByteArray &bytes);
quint32 decodeU32(const QByteArray &bytes);

/// The byte at `offset` of `bytes`, or 0 where there is none.
quint8 byteAt(const QByteArray &bytes, int offset);

/// CRC-16/XMODEM over `length` bytes at `data`: polynomial 0x1021, start value 0, no reflection,
/// no final XOR, check value 0x31C3. The length is one byte wide on purpose: who asks for more
/// than 255 bytes gets the checksum of that many modulo 256.
quint16 crc16(const void *data, quint8 length);

/// `crc16` over all of `bytes`, its length modulo 256.
quint16 crc16Of(const QByteArray &bytes);

/// The two bytes of a checksum in memory order, low byte first. A frame takes the second first.
QByteArray crc16Bytes(quint16 crc);

/// Appends the checksum of what `frame` holds so far, high byte first.
void appendCrc(QByteArray &frame);

/// True when `frame` holds two bytes at `end`, and they are the checksum of the bytes before them,
/// high byte first.
bool crcStandsAt(const QByteArray &frame, int end);

/// Two upper-case digits and one blank for each byte; the text ends in a blank.
QString toHexText(const QByteArray &bytes);

/// Two upper-case digits for each byte without separators: the form of the traffic log.
QString hexDigits(const QByteArray &bytes);

/// Bytes of a hexadecimal text. Blanks are removed, other characters are dropped by
/// `QByteArray::fromHex`, which pairs digits from the end.
QByteArray hexTextToBytes(const QString &text);

/// Truncates toward zero and keeps the low 32 bits. Infinite and not-a-number give 0.
qint32 truncateToI32(double value);

/// The wire integer of an operator's text: parsed and multiplied in single precision. Text that
/// doesn't parse gives 0.
qint32 scaledSingle(const QString &text, float factor);

/// The same in double precision.
qint32 scaledDouble(const QString &text, double factor);
