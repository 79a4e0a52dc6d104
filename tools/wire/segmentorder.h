#pragma once

#include <QByteArray>
#include <QVector>

#include <functional>

namespace wire {

/// Brings the segments of one direction of a TCP connection into the order of their bytes: what was
/// captured twice is taken once, what came early waits for what it overtook. Its memory has a
/// bound: bytes that aren't there after 64 further segments, or 128 KB, are taken for lost.
class SegmentOrder
{
public:
    using Take = std::function<void(const char *bytes, int size)>;

    /// `missing` bytes follow those that were captured, on the wire. `take` gets what is in order.
    void push(quint32 sequence, const char *bytes, int size, int missing, const Take &take);
    /// Hands on what still waits.
    void finish(const Take &take);
    /// How often bytes were lost.
    int gaps() const { return m_gaps; }

private:
    struct Segment
    {
        quint32 sequence = 0;
        QByteArray bytes;
        int missing = 0;
    };

    /// Bytes between what was handed on and the segment, negative where it repeats some.
    qint32 ahead(quint32 sequence) const { return qint32(sequence - m_next); }
    void insert(const Segment &segment);
    void hand(const Segment &segment, const Take &take);
    void drain(const Take &take);
    void skipGap(const Take &take);

    QVector<Segment> m_waiting; ///< by their place in the stream
    int m_waitingBytes = 0;
    quint32 m_next = 0;
    bool m_isBegun = false;
    int m_gaps = 0;
};

} // namespace wire
