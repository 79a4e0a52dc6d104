#include "shell/devicedatagram.h"

#include "foundation/QAESEncryption.h"
#include "protocol/codec.h"
#include "shell/devicekey.h"

#include <QBitArray>

namespace {

constexpr int kTotalLengthOffset = 4;
constexpr int kCipherOffset = 6;

// Offsets from a record's start, in bytes.
constexpr int kCoveredOffset = 2; ///< the length field, where the checksum begins
constexpr int kTypeOffset = 8;
constexpr int kTextFlagOffset = 47;
constexpr int kTextOffset = 48;

// What is to be added to L, or taken from it.
constexpr int kRecordOverhead = 12;
constexpr int kCoveredOverhead = 8;
constexpr int kBeforeCrc = 10;
constexpr int kBeforeText = 38;

/// No record begins in the last 15 bytes of a plain text, which can be padding. A whole block of
/// padding has one byte more, with which a record does begin; its bytes of value 16 make it one of
/// another type, whose length ends the chain.
constexpr int kWalkMargin = 15;

bool within(const QByteArray &bytes, int offset, int count)
{
    return offset >= 0 && offset <= bytes.size() - count;
}

/// True when the checksum over the L + 8 bytes of the record at `start` is the one that stands at
/// L + 10, high byte first. That place is counted from the start of `plain`, not of the record, as
/// devices in use put it there: a later record passes only where the bytes there happen to hold its
/// checksum. The length of what is covered goes by the one byte that `crc16` takes.
bool recordMatches(const QByteArray &plain, int start, int length)
{
    const auto covered = quint8(length + kCoveredOverhead);
    const int crcOffset = length + kBeforeCrc;
    if (!within(plain, start + kCoveredOffset, covered) || !within(plain, crcOffset, kCrcSize))
        return false;
    const quint16 crc = crc16(plain.constData() + start + kCoveredOffset, covered);
    return byteAt(plain, crcOffset) == crc >> 8 && byteAt(plain, crcOffset + 1) == (crc & 0xFF);
}

/// Takes the name out of the record at `start`, if it has a text. False when flag or text lie
/// beyond the end of `plain`, which makes no name.
bool takeName(const QByteArray &plain, int start, int length, QString &deviceName)
{
    if (!within(plain, start + kTextFlagOffset, 1))
        return false;
    if (byteAt(plain, start + kTextFlagOffset) == 0)
        return true;
    const int size = qMax(0, length - kBeforeText);
    if (!within(plain, start + kTextOffset, size))
        return false;
    const QString text = QString::fromUtf8(plain.constData() + start + kTextOffset, size);
    deviceName = text.split(QLatin1Char('\n')).first();
    return true;
}

} // namespace

bool readDeviceDatagram(const QByteArray &datagram, QString &deviceName)
{
    const int total = decodeI16(datagram.mid(kTotalLengthOffset, 2));
    const QByteArray cipherText = datagram.mid(kCipherOffset, qMax(0, total - kCipherOffset));
    QAESEncryption cipher(QAESEncryption::AES_128, QAESEncryption::CBC, QAESEncryption::PKCS7);
    return readDeviceRecords(cipher.decode(cipherText, deviceKey(), deviceVector()), deviceName);
}

bool readDeviceRecords(const QByteArray &plain, QString &deviceName)
{
    // A negative length can lead back: nothing else would end a chain that has come around.
    QBitArray visited(plain.size());
    for (int start = 0; start < plain.size() - kWalkMargin;) {
        if (start < 0 || visited.testBit(start))
            return false;
        visited.setBit(start);
        const int length = readI16(plain.constData() + start + kCoveredOffset);
        const bool actedUpon = readI16(plain.constData() + start + kTypeOffset) == 0;
        if (actedUpon &&
            !(recordMatches(plain, start, length) && takeName(plain, start, length, deviceName)))
            return false;
        start += length + kRecordOverhead;
    }
    return true;
}
