#include "tools/wire/packets.h"

#include <QtEndian>

namespace wire {

namespace {

constexpr quint16 kIpv4 = 0x0800;
constexpr quint16 kIpv6 = 0x86DD;
constexpr int kTcp = 6;
constexpr int kUdp = 17;
constexpr quint8 kSynFlag = 2;

/// A stretch of the packet that is cut from the front, never beyond what is there.
struct Rest
{
    const char *bytes;
    int size;

    bool has(int count) const { return size >= count; }
    quint8 byte(int at) const { return at < size ? quint8(bytes[at]) : quint8(0); }
    quint16 word(int at) const
    {
        return at + 2 <= size ? qFromBigEndian<quint16>(bytes + at) : quint16(0);
    }
    void drop(int count)
    {
        count = qBound(0, count, size);
        bytes += count;
        size -= count;
    }
    void limit(int count) { size = qBound(0, count, size); }
};

/// `size` as IP says it.
Payload transportOf(int protocol, Rest rest, int size, const QByteArray &addresses)
{
    Payload payload;
    const int head = protocol == kUdp ? 8 : 4 * (rest.byte(12) >> 4);
    if ((protocol != kUdp && protocol != kTcp) || head < 8 || !rest.has(head))
        return payload;
    payload.kind = protocol == kUdp ? Payload::Datagram : Payload::Stream;
    payload.flow = addresses + QByteArray(rest.bytes, 4);
    if (protocol == kUdp)
        rest.limit(rest.word(4));
    payload.sequence = quint32(rest.word(4)) << 16 | rest.word(6);
    payload.isFirst = protocol == kTcp && (rest.byte(13) & kSynFlag);
    payload.missing = qMax(0, size - rest.size);
    rest.drop(head);
    payload.bytes = rest.bytes;
    payload.size = rest.size;
    return payload;
}

Payload ipv4Of(Rest rest)
{
    const int head = 4 * (rest.byte(0) & 0x0F);
    const bool isLaterFragment = rest.word(6) & 0x1FFF;
    if (head < 20 || !rest.has(head) || isLaterFragment)
        return {};
    // An adapter that cuts segments itself captures them with a length of 0.
    const int said = rest.word(2);
    if (said != 0)
        rest.limit(said);
    const QByteArray addresses(rest.bytes + 12, 8);
    const int protocol = rest.byte(9);
    rest.drop(head);
    return transportOf(protocol, rest, said - head, addresses);
}

Payload ipv6Of(Rest rest)
{
    if (!rest.has(40))
        return {};
    const QByteArray addresses(rest.bytes + 8, 32);
    const int protocol = rest.byte(6);
    const int size = rest.word(4);
    rest.drop(40);
    if (size != 0)
        rest.limit(size);
    return transportOf(protocol, rest, size, addresses);
}

Payload ipOf(Rest rest)
{
    const int version = rest.byte(0) >> 4;
    return version == 4 ? ipv4Of(rest) : version == 6 ? ipv6Of(rest) : Payload();
}

/// What stands between the beginning of a packet and IP: bytes, and where its type is; -1 for none.
struct LinkRow
{
    quint16 linkType;
    int headSize;
    int typeOffset;
};

constexpr LinkRow kLinks[] = {
    {1, 14, 12},   // Ethernet
    {0, 4, -1},    // loopback of BSD
    {108, 4, -1},  // loopback of OpenBSD
    {101, 0, -1},  // raw IP
    {228, 0, -1},  // raw IPv4
    {229, 0, -1},  // raw IPv6
    {113, 16, 14}, // Linux, all interfaces
    {276, 20, 0},  // the same, second version
};

const LinkRow *rowOf(quint16 linkType)
{
    for (const LinkRow &row : kLinks) {
        if (row.linkType == linkType)
            return &row;
    }
    return nullptr;
}

} // namespace

bool isKnownLinkType(quint16 linkType)
{
    return rowOf(linkType) != nullptr;
}

Payload payloadOf(quint16 linkType, const char *bytes, int size)
{
    const LinkRow *row = rowOf(linkType);
    Rest rest{bytes, size};
    if (!row || !rest.has(row->headSize))
        return {};
    int type = row->typeOffset < 0 ? 0 : rest.word(row->typeOffset);
    rest.drop(row->headSize);
    constexpr int kVlan = 0x8100;
    if (type == kVlan) {
        type = rest.word(2);
        rest.drop(4);
    }
    return type == 0 || type == kIpv4 || type == kIpv6 ? ipOf(rest) : Payload();
}

} // namespace wire
