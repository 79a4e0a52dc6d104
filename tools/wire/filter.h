#pragma once

#include "tools/wire/names.h"
#include "tools/wire/record.h"

#include <optional>

namespace wire {

/// What of a recording is taken; what isn't set lets everything through.
struct Filter
{
    std::optional<Direction> direction;
    std::optional<FrameKind> kind;
    std::optional<quint8> command; ///< of a host frame, or answered by a GCU frame
    std::optional<quint8> mode;    ///< of a GCU frame
    std::optional<Verdict> verdict;
    qint64 from = kNoTime; ///< microseconds, compared as `isRelative` says
    qint64 to = std::numeric_limits<qint64>::max();
    bool isRelative = true; ///< to the first record that has a time

    /// Whether the record passes; the first one with a time is the beginning of the others.
    bool takes(const Record &record);
    /// What an operator should know of what didn't pass, empty for nothing.
    QString remark() const;

private:
    bool isInTime(qint64 time);

    qint64 m_first = kNoTime;
    qint64 m_untimed = 0;
};

/// A moment for `from` and `to`: a length of time from the beginning, or a date and time as
/// 2025-11-21T10:30:00 in local time, or @ and the seconds of a recording. False for anything else.
bool readMoment(const QString &text, qint64 &microseconds, bool &isRelative);

/// A length of time: a number with ms, s, min or h, seconds without; in microseconds.
bool readDuration(const QString &text, qint64 &microseconds);

} // namespace wire
