#include "tools/podsim/podfaults.h"

#include "tools/podsim/framefaults.h"

#include <utility>

namespace podsim {

PodFaults::PodFaults(const FaultOptions &options) : m_options(options), m_random(options.seed) {}

PodWrite PodFaults::take(const QByteArray &answer)
{
    ++m_count;
    PodWrite write;
    if (isTurn(m_options.drop))
        return write;
    QByteArray frame = answer;
    if (isTurn(m_options.badLength))
        spoilLength(frame);
    if (isTurn(m_options.badCrc))
        spoilChecksum(frame);
    for (const QByteArray &next : ordered(frame))
        collect(next, write);
    write.late = lateness();
    return write;
}

/// The frames that go out now, in their order.
QVector<QByteArray> PodFaults::ordered(const QByteArray &frame)
{
    QVector<QByteArray> frames(isTurn(m_options.twice) ? 2 : 1, frame);
    if (!m_swapped.isEmpty())
        frames.append(std::exchange(m_swapped, {}));
    else if (isTurn(m_options.swap))
        m_swapped = frames.takeFirst();
    return frames;
}

void PodFaults::collect(const QByteArray &frame, PodWrite &write)
{
    m_held += frame;
    if (++m_heldCount < m_options.coalesce)
        return;
    write.frames += std::exchange(m_heldCount, 0);
    const QByteArray bytes = std::exchange(m_held, {});
    if (m_options.noise > 0)
        write.pieces.append(noise());
    const int step = m_options.split > 0 ? m_options.split : bytes.size();
    for (int i = 0; i < bytes.size(); i += step)
        write.pieces.append(bytes.mid(i, step));
}

int PodFaults::lateness()
{
    const int late = isTurn(m_options.lateEvery) ? m_options.lateBy : 0;
    if (m_options.jitter == 0)
        return late;
    return late + int(m_random() % quint32(m_options.jitter + 1));
}

QByteArray PodFaults::noise()
{
    QByteArray bytes(m_options.noise, '\0');
    for (char &byte : bytes)
        byte = char(m_random() & 0xFF);
    return bytes;
}

} // namespace podsim
