#include "tools/wire/record.h"

#include "protocol/codec.h"
#include "protocol/gcuframe.h"
#include "protocol/hostframe.h"

namespace wire {

namespace {

constexpr const char *kDirections[] = {"", "tx", "rx"};
constexpr const char *kKinds[] = {"unknown", "host", "gcu"};
constexpr const char *kVerdicts[] = {"ok", "bad", "none"};

bool begins(const char *bytes, const std::array<quint8, 2> &header)
{
    return quint8(bytes[0]) == header[0] && quint8(bytes[1]) == header[1];
}

} // namespace

FrameKind kindOf(const char *bytes, int size)
{
    if (size < 2)
        return FrameKind::Unknown;
    if (begins(bytes, kHostRows.front().field.constant))
        return FrameKind::Host;
    return begins(bytes, kGcuRows.front().field.constant) ? FrameKind::Gcu : FrameKind::Unknown;
}

FrameKind kindOf(const QByteArray &bytes)
{
    return kindOf(bytes.constData(), bytes.size());
}

int lengthOf(const char *bytes, int size)
{
    return size < 4 ? 0 : readI16(bytes + 2);
}

Verdict verdictOf(const char *bytes, int size)
{
    const int length = lengthOf(bytes, size);
    if (length < kCrcSize || length > size)
        return Verdict::None;
    const quint16 crc = crc16(bytes, quint8(length - kCrcSize));
    const bool matches =
        quint8(bytes[length - 2]) == (crc >> 8) && quint8(bytes[length - 1]) == (crc & 0xFF);
    return matches ? Verdict::Ok : Verdict::Bad;
}

Verdict verdictOf(const QByteArray &bytes)
{
    return verdictOf(bytes.constData(), bytes.size());
}

const char *wordOf(Direction direction)
{
    return kDirections[int(direction)];
}

Direction directionOf(const QByteArray &word)
{
    return word == "tx" ? Direction::Tx : word == "rx" ? Direction::Rx : Direction::Unknown;
}

const char *wordOf(FrameKind kind)
{
    return kKinds[int(kind)];
}

const char *wordOf(Verdict verdict)
{
    return kVerdicts[int(verdict)];
}

Direction usualDirection(FrameKind kind)
{
    return kind == FrameKind::Host  ? Direction::Tx
           : kind == FrameKind::Gcu ? Direction::Rx
                                    : Direction::Unknown;
}

} // namespace wire
