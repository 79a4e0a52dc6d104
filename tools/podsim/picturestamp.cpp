#include "tools/podsim/picturestamp.h"

#include <QPainter>
#include <QtEndian>

#include <array>
#include <chrono>

namespace podsim {

namespace {

constexpr int kColumns = 40;
constexpr int kRows = 2;
constexpr int kHeights = 45; // block heights from the top to the lower edge
constexpr int kBytes = kColumns * kRows / 8;
constexpr int kCheckedBytes = 8;
constexpr int kGreyLimit = 128;

using Bytes = std::array<char, kBytes>;

quint16 checkOf(const Bytes &bytes)
{
    return qChecksum(bytes.data(), kCheckedBytes);
}

/// Bits count from the highest of the first byte.
void setBit(Bytes &bytes, int bit)
{
    char &byte = bytes[std::size_t(bit / 8)];
    byte = char(byte | 0x80 >> bit % 8);
}

/// The place of a bit in a picture, in pixels.
QRect blockOf(int bit, const QSize &size)
{
    const int column = bit % kColumns;
    const int row = kHeights - kRows + bit / kColumns;
    const int left = size.width() * column / kColumns;
    const int top = size.height() * row / kHeights;
    const int right = size.width() * (column + 1) / kColumns;
    const int bottom = size.height() * (row + 1) / kHeights;
    return {left, top, right - left, bottom - top};
}

} // namespace

quint32 stampClock()
{
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return quint32(std::chrono::duration_cast<std::chrono::milliseconds>(now).count());
}

void writeStamp(QImage &picture, const PictureStamp &stamp)
{
    Bytes bytes{};
    qToBigEndian(stamp.milliseconds, bytes.data());
    qToBigEndian(stamp.number, bytes.data() + 4);
    qToBigEndian(checkOf(bytes), bytes.data() + kCheckedBytes);
    QPainter painter(&picture);
    for (int bit = 0; bit < kBytes * 8; ++bit) {
        const bool isSet = (bytes[std::size_t(bit / 8)] >> (7 - bit % 8) & 1) != 0;
        painter.fillRect(blockOf(bit, picture.size()), isSet ? Qt::white : Qt::black);
    }
}

std::optional<PictureStamp> readStamp(const QImage &picture)
{
    if (picture.width() < kColumns || picture.height() < kHeights)
        return {};
    Bytes bytes{};
    for (int bit = 0; bit < kBytes * 8; ++bit)
        if (qGray(picture.pixel(blockOf(bit, picture.size()).center())) >= kGreyLimit)
            setBit(bytes, bit);
    if (qFromBigEndian<quint16>(bytes.data() + kCheckedBytes) != checkOf(bytes))
        return {};
    return PictureStamp{qFromBigEndian<quint32>(bytes.data()),
                        qFromBigEndian<quint32>(bytes.data() + 4)};
}

} // namespace podsim
