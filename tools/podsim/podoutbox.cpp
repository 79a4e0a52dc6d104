#include "tools/podsim/podoutbox.h"

#include "tools/podsim/podchannel.h"

#include <algorithm>

namespace podsim {

namespace {

constexpr int kPauseMs = 5; // long enough for a peer to read each piece by itself

} // namespace

PodOutbox::PodOutbox(PodChannel *channel, int delay, QObject *parent)
    : QObject(parent), m_channel(channel), m_delay(delay)
{
    m_clock.start();
    m_lastDue = -kPauseMs;
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, &PodOutbox::writeDue);
}

void PodOutbox::add(const QVector<QByteArray> &pieces, int late)
{
    const int pause = pieces.size() > 1 ? kPauseMs : 0;
    qint64 due = std::max(m_clock.elapsed() + m_delay + late, m_lastDue + pause);
    for (const QByteArray &piece : pieces) {
        m_entries.enqueue({due, piece});
        m_bytes += piece.size();
        m_lastDue = due;
        due += pause;
    }
    if (!m_timer.isActive())
        writeDue();
}

void PodOutbox::writeDue()
{
    while (!m_entries.isEmpty() && m_entries.head().due <= m_clock.elapsed()) {
        const QByteArray piece = m_entries.dequeue().bytes;
        m_bytes -= piece.size();
        m_channel->send(piece);
    }
    if (m_entries.isEmpty())
        emit emptied();
    else
        m_timer.start(int(m_entries.head().due - m_clock.elapsed()));
}

} // namespace podsim
