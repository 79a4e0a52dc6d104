#include "shell/FrameHistory.h"

namespace {

/// The line break between two entries counts to the first. A run of days passes the largest
/// position and begins anew.
int endOf(int start, int entrySize)
{
    return int(uint(start) + uint(entrySize) + 1u);
}

/// A copy without the spare room that a link's buffer brings along: stored frames are many.
QByteArray tightCopy(const QByteArray &bytes)
{
    return QByteArray(bytes.constData(), bytes.size());
}

} // namespace

void FrameHistory::recordSent(const QByteArray &frame, int entrySize)
{
    const int start = logEnd();
    sentFrames.prepend(tightCopy(frame));
    sentStarts.prepend(start);
    sentEnds.prepend(endOf(start, entrySize));
}

void FrameHistory::recordReceived(const QByteArray &frame, int entrySize)
{
    const int start = logEnd();
    receivedFrames.prepend(tightCopy(frame));
    receivedStarts.prepend(start);
    receivedEnds.prepend(endOf(start, entrySize));
}

int FrameHistory::logEnd() const
{
    return qMax(sentEnds.value(0), receivedEnds.value(0));
}

FrameHistory::Range FrameHistory::groupRange(int index) const
{
    const bool isAnswered =
        index < receivedFrames.size() && sentEnds.at(index) == receivedStarts.at(index);
    // Positions count a line break after the newest entry, which the display doesn't have.
    return {sentStarts.at(index) + 1, isAnswered ? receivedEnds.at(index) : sentEnds.at(index)};
}

int FrameHistory::nextGroup(bool newer) const
{
    if (newer)
        return qMax(0, historyIndex - 1);
    const int groups = qMax(sentFrames.size(), receivedFrames.size());
    return historyIndex + 1 < groups ? historyIndex + 1 : 0;
}

void FrameHistory::emptyHistory()
{
    *this = FrameHistory();
}
