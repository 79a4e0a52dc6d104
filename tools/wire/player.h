#pragma once

#include "tools/wire/recordfeed.h"

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

#include <functional>
#include <vector>

namespace wire {

/// How the frames of a recording follow one another.
struct Pace
{
    double speed = 1;
    qint64 gap = 0; ///< microseconds from frame to frame in place of the recording's times
    bool isAtOnce = false;
};

/// Sends records at the pace of their times, each at a moment counted from the beginning: a frame
/// that is late doesn't make the next one late. Times that go back count as no pause.
class Player : public QObject
{
    Q_OBJECT

public:
    using Next = RecordFeed::Next;

    /// `next` gives the records in turn, `send` takes each, `isReady` says whether more is taken
    /// now.
    Player(const Pace &pace, std::function<Next(Record &)> next,
           std::function<void(const Record &)> send, std::function<bool()> isReady);

    void start();
    /// Goes on after `isReady` had said no, or `next` that there is none yet.
    void resume();

    qint64 count() const { return m_count; }
    /// Microseconds by which that share of the frames, from 0 to 1, was late at most.
    qint64 lateness(double share) const;
    qint64 elapsed() const { return m_clock.nsecsElapsed() / 1000; }

signals:
    void finished();

private:
    Next prepare();
    void play();

    const Pace m_pace;
    std::function<Next(Record &)> m_next;
    std::function<void(const Record &)> m_send;
    std::function<bool()> m_isReady;
    QElapsedTimer m_clock;
    QTimer m_timer;
    Record m_record;
    bool m_isPrepared = false;
    bool m_isFinished = false;
    qint64 m_last = kNoTime;
    double m_due = 0; ///< microseconds after the start
    qint64 m_count = 0;
    std::vector<qint64> m_late = std::vector<qint64>(10001); ///< frames by tenths of milliseconds
};

} // namespace wire
