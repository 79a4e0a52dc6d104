#pragma once

#include <QElapsedTimer>
#include <QtGlobal>

#include <chrono>

namespace wire {

/// Times of a recording: the wall's when it was made, and from then on a clock that nobody sets, so
/// that no frame of a recording is older than the one before it.
class WireClock
{
public:
    WireClock() { m_since.start(); }
    /// Microseconds since 1970 began in UTC.
    qint64 now() const { return m_begin + m_since.nsecsElapsed() / 1000; }

private:
    qint64 m_begin = std::chrono::duration_cast<std::chrono::microseconds>(
                         std::chrono::system_clock::now().time_since_epoch())
                         .count();
    QElapsedTimer m_since;
};

} // namespace wire
