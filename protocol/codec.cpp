#include "protocol/codec.h"

#include <QtEndian>

#include <algorithm>
#include <cmath>

namespace {

template <typename T>
QByteArray encode(T value)
{
    QByteArray bytes(sizeof(T), Qt::Uninitialized);
    qToLittleEndian(value, bytes.data());
    return bytes;
}

template <typename T>
T decode(const QByteArray &bytes)
{
    char padded[sizeof(T)] = {};
    const int size = qMin(bytes.size(), int(sizeof(T)));
    std::copy_n(bytes.constData(), size, padded);
    return qFromLittleEndian<T>(padded);
}

constexpr char16_t hexDigit(int nibble)
{
    return char16_t(nibble < 10 ? '0' + nibble : 'A' + nibble - 10);
}

QString digits(const QByteArray &bytes, int charactersPerByte)
{
    QString text(bytes.size() * charactersPerByte, Qt::Uninitialized);
    QChar *out = text.data();
    for (const char byte : bytes) {
        out[0] = hexDigit(quint8(byte) >> 4);
        out[1] = hexDigit(byte & 0x0F);
        if (charactersPerByte == 3)
            out[2] = QLatin1Char(' ');
        out += charactersPerByte;
    }
    return text;
}

} // namespace

qint16 readI16(const void *data)
{
    return qFromLittleEndian<qint16>(data);
}

quint16 readU16(const void *data)
{
    return qFromLittleEndian<quint16>(data);
}

qint32 readI32(const void *data)
{
    return qFromLittleEndian<qint32>(data);
}

quint32 readU32(const void *data)
{
    return qFromLittleEndian<quint32>(data);
}

void writeI16At(void *buffer, int offset, qint16 value)
{
    qToLittleEndian(value, static_cast<uchar *>(buffer) + offset);
}

void writeU16At(void *buffer, int offset, quint16 value)
{
    qToLittleEndian(value, static_cast<uchar *>(buffer) + offset);
}

void writeI32At(void *buffer, int offset, qint32 value)
{
    qToLittleEndian(value, static_cast<uchar *>(buffer) + offset);
}

void writeU32At(void *buffer, int offset, quint32 value)
{
    qToLittleEndian(value, static_cast<uchar *>(buffer) + offset);
}

void setBit(quint8 *byte, int bit, bool on)
{
    const auto mask = quint8(1u << bit);
    *byte = quint8(on ? *byte | mask : *byte & ~mask);
}

QByteArray encodeI16(qint16 value)
{
    return encode(value);
}

QByteArray encodeU16(quint16 value)
{
    return encode(value);
}

QByteArray encodeI32(qint32 value)
{
    return encode(value);
}

QByteArray encodeU32(quint32 value)
{
    return encode(value);
}

qint16 decodeI16(const QByteArray &bytes)
{
    return decode<qint16>(bytes);
}

quint16 decodeU16(const QByteArray &bytes)
{
    return decode<quint16>(bytes);
}

qint32 decodeI32(const QByteArray &bytes)
{
    return decode<qint32>(bytes);
}

quint32 decodeU32(const QByteArray &bytes)
{
    return decode<quint32>(bytes);
}

quint8 byteAt(const QByteArray &bytes, int offset)
{
    return offset >= 0 && offset < bytes.size() ? quint8(bytes.at(offset)) : quint8(0);
}

quint16 crc16(const void *data, quint8 length)
{
    const quint16 table[16] = {0x0000, 0x1021, 0x2042, 0x3063, 0x4084, 0x50A5, 0x60C6, 0x70E7,
                               0x8108, 0x9129, 0xA14A, 0xB16B, 0xC18C, 0xD1AD, 0xE1CE, 0xF1EF};
    const auto *byte = static_cast<const quint8 *>(data);
    quint16 crc = 0;
    for (const quint8 *const end = byte + length; byte != end; ++byte) {
        crc = quint16(quint16(crc << 4) ^ table[(crc >> 12) ^ (*byte >> 4)]);
        crc = quint16(quint16(crc << 4) ^ table[(crc >> 12) ^ (*byte & 0x0F)]);
    }
    return crc;
}

quint16 crc16Of(const QByteArray &bytes)
{
    return crc16(bytes.constData(), quint8(bytes.size()));
}

QByteArray crc16Bytes(quint16 crc)
{
    return encodeU16(crc);
}

void appendCrc(QByteArray &frame)
{
    const QByteArray crc = crc16Bytes(crc16Of(frame));
    frame.append(crc.at(1)).append(crc.at(0));
}

bool crcStandsAt(const QByteArray &frame, int end)
{
    if (end < 0 || end + kCrcSize > frame.size())
        return false;
    const quint16 crc = crc16Of(frame.left(end));
    return byteAt(frame, end) == (crc >> 8) && byteAt(frame, end + 1) == (crc & 0xFF);
}

QString toHexText(const QByteArray &bytes)
{
    return digits(bytes, 3);
}

QString hexDigits(const QByteArray &bytes)
{
    return digits(bytes, 2);
}

QByteArray hexTextToBytes(const QString &text)
{
    return QByteArray::fromHex(QString(text).remove(QLatin1Char(' ')).toLatin1());
}

qint32 truncateToI32(double value)
{
    if (!std::isfinite(value))
        return 0;
    constexpr double kRange = 4294967296.0;
    return qint32(quint32(qint64(std::fmod(std::trunc(value), kRange))));
}

qint32 scaledSingle(const QString &text, float factor)
{
    const float product = text.toFloat() * factor;
    return truncateToI32(double(product));
}

qint32 scaledDouble(const QString &text, double factor)
{
    return truncateToI32(text.toDouble() * factor);
}
