#include "foundation/QAESEncryption.h"
#include "fuzz/fuzzinput.h"
#include "protocol/codec.h"
#include "shell/devicedatagram.h"
#include "shell/devicekey.h"

#include <QLoggingCategory>

#include <utility>

// The enciphered datagram; and the walk of its records, in the clear and enciphered here, which
// must come to the same. No fuzzer would come upon a checksum: that of one record is put right, and
// the first byte, which nothing else reads, says which.

namespace {

/// The most that goes into a datagram with its padding, whose length is an i16.
constexpr int kMostPlain = 32000;
constexpr int kCipherBlock = 16;

/// What a reader returned, and the name it left.
using Reading = std::pair<bool, QString>;

Reading readingOf(bool (*read)(const QByteArray &, QString &), const QByteArray &bytes)
{
    Reading reading;
    reading.first = read(bytes, reading.second);
    return reading;
}

/// L + 8 of the record at `start`.
int coveredAt(const QByteArray &plain, int start)
{
    return decodeI16(plain.mid(start + 2, 2)) + 8;
}

/// Where the walk comes to after so many records, or where it leaves `plain`.
int startOf(const QByteArray &plain, int record)
{
    int start = 0;
    for (; record > 0 && start >= 0 && start < plain.size(); --record)
        start += coveredAt(plain, start) + 4;
    return start;
}

QByteArray withChecksum(const QByteArray &plain)
{
    const int start = startOf(plain, byteAt(plain, 0));
    if (start < 0 || start >= plain.size())
        return plain;
    const int place = coveredAt(plain, start) + 2;
    const QByteArray covered = plain.mid(start + 2, quint8(place - 2));
    QByteArray sealed = plain;
    if (place >= 0 && place + kCrcSize <= plain.size()) {
        const quint16 crc = crc16Of(covered);
        sealed[place] = char(crc >> 8);
        sealed[place + 1] = char(crc);
    }
    return sealed;
}

QByteArray withPadding(const QByteArray &plain)
{
    const int missing = kCipherBlock - plain.size() % kCipherBlock;
    return plain + QByteArray(missing, char(missing));
}

QByteArray datagramOf(const QByteArray &plain)
{
    const QByteArray coded =
        QAESEncryption::Crypt(QAESEncryption::AES_128, QAESEncryption::CBC, plain, deviceKey(),
                              deviceVector(), QAESEncryption::PKCS7);
    return QByteArray(4, '\0') + encodeI16(qint16(coded.size() + 6)) + coded;
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    // Whoever enciphers writes the keys to the log.
    QLoggingCategory::defaultCategory()->setEnabled(QtDebugMsg, false);
    const QByteArray input = inputOf(data, size);
    readingOf(readDeviceDatagram, input);
    readingOf(readDeviceRecords, input);

    const QByteArray sealed = withChecksum(input.left(kMostPlain));
    // A copy that nothing follows, as with the input itself; and one amid other bytes, which shows
    // what Qt reads beyond the end: it isn't built with the sanitizers.
    const std::vector<std::uint8_t> exact(sealed.cbegin(), sealed.cend());
    const QByteArray amid = sealed + QByteArray(kMostPlain, 'x');
    require(
        readingOf(readDeviceRecords, inputOf(exact.data(), exact.size())) ==
            readingOf(readDeviceRecords, QByteArray::fromRawData(amid.constData(), sealed.size())),
        "what stands after the records shows");
    const Reading inTheClear = readingOf(readDeviceRecords, withPadding(sealed));
    require(readingOf(readDeviceDatagram, datagramOf(sealed)) == inTheClear,
            "enciphered, the same records read otherwise");
    return 0;
}
