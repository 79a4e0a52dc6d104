#pragma once

#include <QElapsedTimer>

namespace wire {

class RecordReader;

/// The share of a file that is read, on a line of the terminal that standard error is; nothing
/// where it is none, or where it doesn't take long.
class Progress
{
public:
    Progress();
    void advance(const RecordReader &reader);
    /// Takes the line away.
    void end();

private:
    QElapsedTimer m_clock;
    bool m_isTerminal = false;
    bool m_isShown = false;
    int m_count = 0;
    qint64 m_next = 1000; ///< milliseconds until it is shown again
};

} // namespace wire
