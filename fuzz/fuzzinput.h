#pragma once

#include <QByteArray>
#include <QtGlobal>

#include <cstddef>
#include <cstdint>
#include <vector>

/// What a fuzzer is: libFuzzer calls it with each of its inputs.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);

/// The input without a copy, and without the zero that follows the bytes of an ordinary byte array:
/// a read beyond its end is seen.
inline QByteArray inputOf(const std::uint8_t *data, std::size_t size)
{
    return QByteArray::fromRawData(reinterpret_cast<const char *>(data), int(size));
}

/// The input as the chunks of a link: a byte with a chunk's size stands before each.
inline std::vector<QByteArray> chunksOf(const std::uint8_t *data, std::size_t size)
{
    const QByteArray input = inputOf(data, size);
    std::vector<QByteArray> chunks;
    for (int at = 0; at < input.size(); at += 1 + quint8(input.at(at)))
        chunks.push_back(input.mid(at + 1, quint8(input.at(at))));
    return chunks;
}

/// Ends the run with a report when what must hold doesn't.
inline void require(bool holds, const char *what)
{
    if (!holds)
        qFatal("%s", what);
}
