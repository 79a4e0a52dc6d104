#include "tools/wire/fartimer.h"

namespace wire {

namespace {

constexpr qint64 kLongestMs = 24 * 3600 * 1000;

} // namespace

FarTimer::FarTimer()
{
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, &FarTimer::look);
}

void FarTimer::start(qint64 microseconds)
{
    m_clock.start();
    m_due = microseconds;
    m_pause = 0;
    arm();
}

void FarTimer::repeat(qint64 microseconds)
{
    start(microseconds);
    m_pause = microseconds;
}

void FarTimer::arm()
{
    const qint64 left = (m_due - m_clock.nsecsElapsed() / 1000 + 999) / 1000;
    m_timer.start(int(qBound<qint64>(0, left, kLongestMs)));
}

void FarTimer::look()
{
    const qint64 now = m_clock.nsecsElapsed() / 1000;
    if (now < m_due)
        return arm();
    if (m_pause > 0) {
        m_due = qMax(m_due + m_pause, now);
        arm(); // before, so that who is told may stop it
    }
    emit timeout();
}

} // namespace wire
