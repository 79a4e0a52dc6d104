#pragma once

#include <QElapsedTimer>
#include <QTimer>

namespace wire {

/// A timer for times of any length; the toolkit's counts milliseconds up to 24 days. Moments that
/// repeat are counted from the first, so that a late one doesn't make the next one late.
class FarTimer : public QObject
{
    Q_OBJECT

public:
    FarTimer();

    /// `timeout` follows once after so many microseconds, or each time that they have passed.
    void start(qint64 microseconds);
    void repeat(qint64 microseconds);
    void stop() { m_timer.stop(); }

signals:
    void timeout();

private:
    void arm();
    void look();

    QTimer m_timer;
    QElapsedTimer m_clock;
    qint64 m_due = 0;   ///< microseconds of the clock
    qint64 m_pause = 0; ///< from one to the next, 0 for once
};

} // namespace wire
