#include "fuzz/fuzzinput.h"
#include "protocol/codec.h"
#include "shell/devicedatagram.h"

// The enciphered datagram; and the walk of its records, in the clear and with the checksum of the
// first one put right, which no fuzzer would come upon.

namespace {

QByteArray withChecksum(const QByteArray &plain)
{
    const int covered = decodeI16(plain.mid(2, 2)) + 8;
    QByteArray sealed = plain;
    if (covered >= 0 && covered + 4 <= sealed.size()) {
        const quint16 crc = crc16(sealed.constData() + 2, quint8(covered));
        sealed[covered + 2] = char(crc >> 8);
        sealed[covered + 3] = char(crc);
    }
    return sealed;
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QByteArray input = inputOf(data, size);
    QString name;
    readDeviceDatagram(input, name);
    readDeviceRecords(input, name);
    readDeviceRecords(withChecksum(input), name);
    return 0;
}
