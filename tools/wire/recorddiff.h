#pragma once

#include "tools/wire/record.h"

#include <QMap>
#include <QString>

#include <deque>
#include <functional>

namespace wire {

/// What two frames that stand in each other's place differ in.
struct FieldChange
{
    QByteArray id;
    QByteArray before, after; ///< as the JSON form shows them, "" where there is none
};
QVector<FieldChange> changesOf(const QByteArray &before, const QByteArray &after);

/// When the frames of a recording came.
struct Timing
{
    qint64 first = kNoTime, last = kNoTime;
    qint64 frames = 0;
    qint64 longestGap = 0; ///< microseconds, between two frames of the recording
    qint64 answers = 0;    ///< received right after one that was sent
    qint64 answerTime = 0; ///< microseconds, all together
    qint64 longestAnswer = 0;

    void take(const Record &record);

private:
    qint64 m_sent = kNoTime;
};

/// Lays two recordings side by side, frame by frame, with a look ahead of so many frames: equal
/// bytes pair, and what has no equal there is changed, lost or added. Its memory doesn't grow.
class RecordDiff
{
public:
    using Source = std::function<bool(Record &)>;
    RecordDiff(Source before, Source after)
        : m_before{std::move(before), {}, {}}, m_after{std::move(after), {}, {}}
    {
    }

    /// One of them is null for a frame that the other recording hasn't.
    struct Step
    {
        bool hasBefore = false, hasAfter = false;
        Record before, after;
        bool isEqual() const { return hasBefore && hasAfter && before.bytes == after.bytes; }
    };
    /// False at the end of both.
    bool next(Step &step);

    const Timing &timingBefore() const { return m_before.timing; }
    const Timing &timingAfter() const { return m_after.timing; }

private:
    static constexpr int kLookAhead = 64;

    struct Side
    {
        Source source;
        std::deque<Record> ahead;
        Timing timing;

        void fill();
        Record take();
        int find(const QByteArray &bytes) const; ///< -1 for none
    };

    bool isChange(int added, int lost) const;

    Side m_before, m_after;
};

} // namespace wire
