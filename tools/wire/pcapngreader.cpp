#include "tools/wire/pcapngreader.h"

#include "protocol/fields.h"

#include <QtEndian>

namespace wire {

namespace {

constexpr int kBlockHead = 8;
constexpr int kBlockTail = 4;
constexpr int kLargestBlock = 16 * 1024 * 1024;
constexpr int kMostInterfaces = 4096;
constexpr int kMostFlows = 256;
constexpr int kEnhancedHead = 20;
constexpr quint16 kNameOption = 2;
constexpr quint16 kDescriptionOption = 3;
constexpr quint16 kFlagsOption = 2;
constexpr quint16 kResolutionOption = 9;
constexpr quint16 kOffsetOption = 14;

/// Units of a second by the option's byte: powers of ten, or of two with the highest bit set.
quint64 unitsOf(quint8 resolution)
{
    const int power = resolution & 0x7F;
    if (resolution & 0x80)
        return power < 63 ? quint64(1) << power : 0;
    quint64 units = power <= 18 ? 1 : 0;
    for (int i = 0; i < power; ++i)
        units *= 10;
    return units;
}

qint64 microsecondsOf(quint64 stamp, quint64 units, qint64 offset)
{
    constexpr quint64 kMicro = 1000000;
    const quint64 seconds = stamp / units, rest = stamp % units;
    const quint64 micros =
        units <= kMicro * kMicro ? rest * kMicro / units : rest / (units / kMicro);
    // Far from any real time the sum would leave its type.
    constexpr qint64 kFar = qint64(1) << 40;
    if (seconds > quint64(kFar) || offset > kFar || offset < -kFar)
        return kNoTime;
    return (qint64(seconds) + offset) * qint64(kMicro) + qint64(micros);
}

} // namespace

PcapngReader::PcapngReader(std::unique_ptr<ByteSource> source, Cut cut)
    : RecordReader(std::move(source)), m_cut(cut), m_own(cut, Direction::Rx)
{
}

quint16 PcapngReader::u16(const char *at) const
{
    const auto value = qFromLittleEndian<quint16>(at);
    return m_isSwapped ? qbswap(value) : value;
}

quint32 PcapngReader::u32(const char *at) const
{
    const auto value = qFromLittleEndian<quint32>(at);
    return m_isSwapped ? qbswap(value) : value;
}

bool PcapngReader::next(Record &record)
{
    while (!m_queue.take(record)) {
        if (m_isEnded)
            return false;
        m_isEnded = !readBlock();
        if (m_isEnded)
            endAllFlows();
    }
    return true;
}

/// Says what is wrong with the block that begins here.
void PcapngReader::addBlockTrouble(const QString &text)
{
    addTrouble(text + QStringLiteral(" at byte %1").arg(source().position()));
}

/// One block, whatever it is; false at the end and where nothing can be read any more.
bool PcapngReader::readBlock()
{
    const int there = source().fill(kBlockHead + kBlockTail);
    if (there == 0)
        return false;
    const quint32 length = there < kBlockHead + kBlockTail ? quint32(there) + 1 : blockLength();
    if (length == 0)
        return false;
    if (source().fill(int(length)) < int(length)) {
        addBlockTrouble(QStringLiteral("the recording is cut in a block"));
        return false;
    }
    const quint32 again = u32(source().data() + length - kBlockTail);
    if (again != length)
        addBlockTrouble(QStringLiteral("a block of %1 bytes that ends with a length of %2")
                            .arg(length)
                            .arg(again));
    takeBlock(u32(source().data()), source().data() + kBlockHead,
              int(length) - kBlockHead - kBlockTail);
    source().drop(int(length));
    return true;
}

/// The length of the block whose head is there; 0 for one that no block has.
quint32 PcapngReader::blockLength()
{
    // A section may be of another byte order, so that its length can't be read before its magic.
    if (u32(source().data()) == kSectionBlock)
        m_isSwapped = qFromLittleEndian<quint32>(source().data() + kBlockHead) != kByteOrderMagic;
    const quint32 length = u32(source().data() + 4);
    if (length >= kBlockHead + kBlockTail && length % 4 == 0 && length <= kLargestBlock)
        return length;
    addBlockTrouble(QStringLiteral("what follows can't be found: a block of %1 bytes").arg(length));
    return 0;
}

void PcapngReader::takeBlock(quint32 type, const char *body, int size)
{
    if (type == kSectionBlock)
        takeSection(body, size);
    else if (type == kInterfaceBlock)
        takeInterface(body, size);
    else if (type == kEnhancedBlock)
        takeEnhanced(body, size);
    else if (type == kSimpleBlock)
        takeSimple(body, size);
}

void PcapngReader::takeSection(const char *body, int size)
{
    if (size < 4 || u32(body) != kByteOrderMagic)
        addTrouble(QStringLiteral("a section without its magic number"));
    m_interfaces.clear();
}

/// Calls `take(code, bytes, size)` for each option that lies within the body.
template <typename Take>
void PcapngReader::forEachOption(const char *body, int from, int size, Take take) const
{
    while (from + 4 <= size) {
        const quint16 code = u16(body + from);
        const int length = u16(body + from + 2);
        from += 4;
        if (code == 0 || length > size - from)
            return;
        take(code, body + from, length);
        from += (length + 3) / 4 * 4;
    }
}

void PcapngReader::takeInterface(const char *body, int size)
{
    if (size < 8 || m_interfaces.size() >= kMostInterfaces) {
        addTrouble(QStringLiteral("an interface that can't be read"));
        return;
    }
    Interface interface;
    interface.linkType = u16(body);
    forEachOption(body, 8, size, [&](quint16 code, const char *at, int length) {
        takeInterfaceOption(interface, code, at, length);
    });
    m_interfaces.append(interface);
    if (interface.linkType != kUser0Link && !isKnownLinkType(interface.linkType))
        addTrouble(QStringLiteral("packets of link type %1 aren't read").arg(interface.linkType));
}

void PcapngReader::takeInterfaceOption(Interface &interface, quint16 code, const char *at,
                                       int length)
{
    if (code == kResolutionOption && length >= 1)
        interface.unitsPerSecond = unitsOf(quint8(*at));
    if (code == kOffsetOption && length >= 8) {
        const auto value = qFromLittleEndian<qint64>(at);
        interface.offset = m_isSwapped ? qbswap(value) : value;
    }
    const bool isOwn = interface.linkType == kUser0Link && m_interfaces.isEmpty();
    if (isOwn && code == kNameOption)
        m_origin.link = QString::fromUtf8(at, length);
    if (isOwn && code == kDescriptionOption)
        m_origin.peer = QString::fromUtf8(at, length);
}

void PcapngReader::takeEnhanced(const char *body, int size)
{
    const quint32 index = size < kEnhancedHead ? quint32(kMostInterfaces) : u32(body);
    const quint32 captured = size < kEnhancedHead ? 0 : u32(body + 12);
    if (index >= quint32(m_interfaces.size()) || captured > quint32(size - kEnhancedHead)) {
        addTrouble(
            QStringLiteral("a packet that isn't of any interface, or longer than its block"));
        return;
    }
    const Interface &interface = m_interfaces.at(int(index));
    Packet packet;
    packet.bytes = body + kEnhancedHead;
    packet.size = int(captured);
    const quint64 stamp = quint64(u32(body + 4)) << 32 | u32(body + 8);
    if (interface.unitsPerSecond > 0)
        packet.time = microsecondsOf(stamp, interface.unitsPerSecond, interface.offset);
    forEachOption(body, kEnhancedHead + (packet.size + 3) / 4 * 4, size,
                  [&](quint16 code, const char *at, int length) {
                      const quint32 flags = code == kFlagsOption && length >= 4 ? u32(at) & 3 : 0;
                      if (flags == 1 || flags == 2)
                          packet.direction = flags == 1 ? Direction::Rx : Direction::Tx;
                  });
    takePacket(interface, packet);
}

void PcapngReader::takeSimple(const char *body, int size)
{
    if (size < 4 || m_interfaces.isEmpty()) {
        addTrouble(
            QStringLiteral("a packet that isn't of any interface, or longer than its block"));
        return;
    }
    Packet packet;
    packet.bytes = body + 4;
    packet.size = int(qMin(quint32(size - 4), u32(body)));
    takePacket(m_interfaces.front(), packet);
}

void PcapngReader::takePacket(const Interface &interface, const Packet &packet)
{
    if (interface.linkType != kUser0Link) {
        takeForeign(payloadOf(interface.linkType, packet.bytes, packet.size), packet);
        return;
    }
    if (m_cut == Cut::AsBench && packet.direction == Direction::Rx) {
        m_own.push(packet.bytes, packet.size, packet.time);
        for (Record record; m_own.take(record, true);)
            m_queue.put(record);
        return;
    }
    Record record{packet.time, packet.direction, QByteArray(packet.bytes, packet.size)};
    if (record.direction == Direction::Unknown)
        record.direction = usualDirection(kindOf(record.bytes));
    m_queue.put(record);
}

void PcapngReader::takeForeign(const Payload &payload, const Packet &packet)
{
    if (payload.kind == Payload::None || (payload.size == 0 && !payload.isFirst))
        return;
    if (payload.kind == Payload::Datagram) {
        const QByteArray bytes(payload.bytes, payload.size);
        if (kindOf(bytes) != FrameKind::Unknown)
            m_queue.put({packet.time, usualDirection(kindOf(bytes)), bytes});
        return;
    }
    if (payload.isFirst) {
        const auto former = m_flows.find(payload.flow);
        if (former != m_flows.end()) {
            endFlow(*former);
            m_flows.erase(former);
        }
        return;
    }
    // The bench cuts what it receives only.
    const bool isSent = kindOf(payload.bytes, payload.size) == FrameKind::Host;
    Flow &flow = flowOf(payload.flow, isSent ? Cut::Searching : m_cut);
    flow.time = packet.time;
    flow.order.push(payload.sequence, payload.bytes, payload.size, payload.missing, into(flow));
}

SegmentOrder::Take PcapngReader::into(Flow &flow)
{
    return [this, &flow](const char *bytes, int size) {
        flow.cutter.push(bytes, size, flow.time);
        queueForeign(flow);
    };
}

/// Of a capture that may hold anything only frames are taken, not the bytes between them.
void PcapngReader::queueForeign(Flow &flow)
{
    for (Record record; flow.cutter.take(record, true);) {
        if (kindOf(record.bytes) == FrameKind::Unknown || record.bytes.size() < kFrameOverhead)
            continue;
        m_queue.put(record);
        flow.hasFrames = true;
    }
}

/// What a stream that isn't the pod's has lost is nobody's trouble.
void PcapngReader::endFlow(Flow &flow)
{
    flow.order.finish(into(flow));
    flow.cutter.finish();
    queueForeign(flow);
    for (int i = 0; flow.hasFrames && i < flow.order.gaps(); ++i)
        addTrouble(QStringLiteral("bytes of a TCP stream aren't in the capture"));
}

void PcapngReader::endAllFlows()
{
    for (Flow &flow : m_flows)
        endFlow(flow);
    m_flows.clear();
}

/// A capture may have any number of streams. Beyond a few hundred all begin anew.
PcapngReader::Flow &PcapngReader::flowOf(const QByteArray &key, Cut cut)
{
    const auto flow = m_flows.find(key);
    if (flow != m_flows.end())
        return *flow;
    if (m_flows.size() >= kMostFlows)
        endAllFlows();
    return *m_flows.insert(key, {SegmentOrder(), StreamCutter(cut)});
}

} // namespace wire
