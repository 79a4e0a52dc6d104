#pragma once

#include <QString>

namespace podsim {

/// Counts of a whole run.
struct PodCounts
{
    qint64 idleFrames = 0;
    qint64 commandFrames = 0;
    qint64 repeatedFrames = 0;
    qint64 brokenFrames = 0;
    qint64 noiseBytes = 0;
    qint64 answers = 0;
};

/// Writes one line per event to standard output, each flushed at once and led by the local time in
/// the bench's own form, so that both logs can be laid side by side.
class PodLog
{
public:
    explicit PodLog(bool isVerbose) : m_isVerbose(isVerbose) {}

    void line(const QString &text) const;
    /// A line that only a verbose run shows.
    void detail(const QString &text) const;
    bool isVerbose() const { return m_isVerbose; }

private:
    bool m_isVerbose;
};

/// The counts in one line.
QString summary(const PodCounts &counts);

} // namespace podsim
