#include "shell/devicedatagram.h"

#include "foundation/QAESEncryption.h"
#include "protocol/codec.h"

#include <QBitArray>

namespace {

constexpr int kTotalLengthOffset = 4;
constexpr int kCipherOffset = 6;
constexpr int kCipherBlock = 16;

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

/// No record begins in the last bytes of a plain text: they can be padding.
constexpr int kWalkMargin = 15;

/// A buffer whose writes the compiler must leave as they are. Key and vector are written into one
/// byte by byte at each use: gathered into a constant they would stand somewhere as a whole.
using WrittenBytes = volatile char[kCipherBlock];

QByteArray copyOf(const WrittenBytes &bytes)
{
    QByteArray copy;
    for (const volatile char &byte : bytes)
        copy.append(char(byte));
    return copy;
}

QByteArray deviceKey()
{
    WrittenBytes key;
    key[0] = '\xB3';
    key[1] = '\xCB';
    key[2] = '\xC3';
    key[3] = '\x6A';
    key[4] = '\x05';
    key[5] = '\x55';
    key[6] = '\xD1';
    key[7] = '\xDE';
    key[8] = '\x8A';
    key[9] = '\x68';
    key[10] = '\x69';
    key[11] = '\xCF';
    key[12] = '\x1A';
    key[13] = '\x45';
    key[14] = '\xDA';
    key[15] = '\xE1';
    return copyOf(key);
}

QByteArray deviceVector()
{
    WrittenBytes vector;
    vector[0] = '\xA7';
    vector[1] = '\x34';
    vector[2] = '\xF5';
    vector[3] = '\x52';
    vector[4] = '\x13';
    vector[5] = '\x0C';
    vector[6] = '\x95';
    vector[7] = '\xC1';
    vector[8] = '\x47';
    vector[9] = '\x12';
    vector[10] = '\x85';
    vector[11] = '\xA1';
    vector[12] = '\x6B';
    vector[13] = '\x12';
    vector[14] = '\xBC';
    vector[15] = '\x72';
    return copyOf(vector);
}

bool within(const QByteArray &bytes, int offset, int count)
{
    return offset >= 0 && offset <= bytes.size() - count;
}

/// True when the checksum over the L + 8 bytes of the record at `start` is the one that stands at
/// L + 10, high byte first. That place is counted from the start of `plain`, not of the record, and
/// is meant to be: a later record passes only where the bytes there happen to hold its checksum.
/// The length of what is covered goes by the one byte that `crc16` takes.
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
        const bool named = readI16(plain.constData() + start + kTypeOffset) == 0;
        if (named &&
            !(recordMatches(plain, start, length) && takeName(plain, start, length, deviceName)))
            return false;
        start += length + kRecordOverhead;
    }
    return true;
}
