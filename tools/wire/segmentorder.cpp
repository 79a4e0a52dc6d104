#include "tools/wire/segmentorder.h"

#include <algorithm>

namespace wire {

namespace {

constexpr int kMostWaiting = 64;
constexpr int kMostBytes = 128 * 1024;
/// Further away is another connection of the same ports, whose beginning wasn't captured.
constexpr qint32 kFar = 1 << 20;

} // namespace

void SegmentOrder::push(quint32 sequence, const char *bytes, int size, int missing,
                        const Take &take)
{
    const bool isFar = m_isBegun && (ahead(sequence) > kFar || ahead(sequence) < -kFar);
    if (isFar)
        finish(take);
    if (isFar || !m_isBegun)
        m_next = sequence;
    m_isBegun = true;
    m_gaps += isFar;
    insert({sequence, QByteArray(bytes, size), missing});
    drain(take);
    while (m_waiting.size() > kMostWaiting || m_waitingBytes > kMostBytes)
        skipGap(take);
}

void SegmentOrder::insert(const Segment &segment)
{
    const auto after = std::upper_bound(m_waiting.begin(), m_waiting.end(), segment,
                                        [this](const Segment &one, const Segment &other) {
                                            return ahead(one.sequence) < ahead(other.sequence);
                                        });
    m_waiting.insert(after, segment);
    m_waitingBytes += segment.bytes.size();
}

void SegmentOrder::hand(const Segment &segment, const Take &take)
{
    m_waitingBytes -= segment.bytes.size();
    const int known = -ahead(segment.sequence);
    const quint32 end = segment.sequence + quint32(segment.bytes.size()) + quint32(segment.missing);
    if (known < segment.bytes.size())
        take(segment.bytes.constData() + known, segment.bytes.size() - known);
    if (ahead(end) > 0)
        m_next = end;
}

void SegmentOrder::drain(const Take &take)
{
    while (!m_waiting.isEmpty() && ahead(m_waiting.first().sequence) <= 0)
        hand(m_waiting.takeFirst(), take);
}

void SegmentOrder::skipGap(const Take &take)
{
    m_next = m_waiting.first().sequence;
    ++m_gaps;
    drain(take);
}

void SegmentOrder::finish(const Take &take)
{
    while (!m_waiting.isEmpty())
        skipGap(take);
}

} // namespace wire
