#include "tools/wire/player.h"

namespace wire {

namespace {

constexpr double kLateStep = 100; // microseconds
/// So many frames at once; then the loop has its turn, for what is received and for a stop.
constexpr int kBurst = 256;

} // namespace

Player::Player(const Pace &pace, std::function<Next(Record &)> next,
               std::function<void(const Record &)> send, std::function<bool()> isReady)
    : m_pace(pace), m_next(std::move(next)), m_send(std::move(send)), m_isReady(std::move(isReady))
{
    m_timer.setTimerType(Qt::PreciseTimer);
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, &Player::play);
}

void Player::start()
{
    m_clock.start();
    play();
}

void Player::resume()
{
    if (!m_timer.isActive() && m_clock.isValid() && !m_isFinished)
        m_timer.start(0);
}

/// The next record and when it is due, once for each.
Player::Next Player::prepare()
{
    if (m_isPrepared)
        return Next::Here;
    const Next next = m_next(m_record);
    if (next != Next::Here)
        return next;
    const bool isFirst = m_last == kNoTime;
    if (m_pace.gap > 0)
        m_due += isFirst ? 0 : double(m_pace.gap);
    else if (!isFirst && m_record.time > m_last)
        m_due += double(m_record.time - m_last) / m_pace.speed;
    m_last = m_record.time == kNoTime ? 0 : m_record.time;
    m_isPrepared = true;
    return Next::Here;
}

void Player::play()
{
    for (int i = 0; i < kBurst; ++i) {
        const Next next = m_isReady() ? prepare() : Next::Later;
        if (next == Next::Later)
            return;
        if (next == Next::End) {
            m_isFinished = true;
            m_timer.stop(); // what was sent last may have called for more
            emit finished();
            return;
        }
        const double wait = m_pace.isAtOnce ? 0 : m_due - double(m_clock.nsecsElapsed()) / 1000;
        if (wait > 0) {
            m_timer.start(int(qMin(wait / 1000 + 1, 60000.0)));
            return;
        }
        const int step = int(qMin(-wait / kLateStep, double(m_late.size() - 1)));
        ++m_late[std::size_t(step)];
        ++m_count;
        m_isPrepared = false;
        m_send(m_record);
    }
    m_timer.start(0);
}

qint64 Player::lateness(double share) const
{
    qint64 seen = 0;
    std::size_t step = 0;
    for (; step + 1 < m_late.size(); ++step) {
        seen += m_late[step];
        if (double(seen) >= share * double(m_count))
            break;
    }
    return qint64(double(step + 1) * kLateStep);
}

} // namespace wire
