#include "fuzz/fuzzinput.h"
#include "protocol/codec.h"

// Hexadecimal text that an operator typed, in UTF-8.

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QByteArray bytes = hexTextToBytes(QString::fromUtf8(inputOf(data, size)));
    require(hexTextToBytes(toHexText(bytes)) == bytes, "the text of bytes gives other bytes");
    require(hexTextToBytes(hexDigits(bytes)) == bytes, "the digits of bytes give other bytes");
    return 0;
}
