#include "fuzz/fuzzinput.h"
#include "protocol/hostframe.h"

// A host frame taken apart, and written back into a buffer of its size.

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QByteArray input = inputOf(data, size);
    HostFrame record;
    parseHostFrame(input, record);
    QByteArray buffer(input.size(), '\0');
    require(packHostFrame(record, buffer) == record.length, "another length comes back");
    require(buffer.size() == input.size(), "the buffer's size changes");
    return 0;
}
