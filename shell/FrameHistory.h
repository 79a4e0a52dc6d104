#pragma once

#include <QByteArray>
#include <QList>

/// Every frame sent and received since the last start of a run, and where its entry stands in the
/// log's text: three parallel lists a side, newest at index 0. Starts and ends are positions in
/// that text as if nothing had ever left the display. The i-th newest sent frame and the i-th
/// newest received one are a group, which is what the history view shows.
class FrameHistory
{
public:
    /// A stretch of the log's text: from the first position up to, but without, the second.
    struct Range
    {
        int start = 0;
        int end = 0;
    };

    /// Stores a frame whose log entry has `entrySize` characters.
    void recordSent(const QByteArray &frame, int entrySize);
    void recordReceived(const QByteArray &frame, int entrySize);

    /// Position in the log's text where the newest entry ends.
    int logEnd() const;

    /// The text of a group that has a sent frame: its entry, together with that of the received
    /// frame where the one follows the other at once.
    Range groupRange(int index) const;

    /// The group after the shown one on a walk towards newer or older frames. Past the oldest it
    /// jumps back to the newest.
    int nextGroup(bool newer) const;

    void emptyHistory();

    QList<QByteArray> sentFrames;
    QList<int> sentStarts;
    QList<int> sentEnds;
    QList<QByteArray> receivedFrames;
    QList<int> receivedStarts;
    QList<int> receivedEnds;
    int historyIndex = 0; ///< group shown by the history view
};
