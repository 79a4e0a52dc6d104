#include "fuzz/fuzzinput.h"
#include "shell/framecut.h"

// The cut of GCU frames on the way in, in chunks of 0 to 255 bytes.

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    constexpr int kLargestLength = 32767;
    QByteArray cache;
    for (const QByteArray &chunk : chunksOf(data, size)) {
        cutChunk(cache, chunk, [](const QByteArray &frame, quint8) { byteAt(frame, kFixedSize); });
        require(cache.size() <= qMax(kLargestLength, chunk.size()), "the cache grows");
    }
    return 0;
}
