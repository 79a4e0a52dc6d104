#pragma once

#include "tools/wire/framealign.h"
#include "tools/wire/record.h"

#include <QString>

#include <deque>
#include <functional>
#include <optional>

namespace wire {

/// What two frames that stand in each other's place differ in, in the order of the rows.
struct FieldChange
{
    QByteArray id;
    QByteArray before, after; ///< as the JSON form shows them, "-" where there is none
};
QVector<FieldChange> changesOf(const QByteArray &before, const QByteArray &after);

/// When the frames of a recording came. A clock that was set back counts as no pause, so that the
/// recording is as long as its gaps together.
struct Timing
{
    bool hasTimes = false;
    qint64 length = 0; ///< microseconds, as all below
    qint64 frames = 0;
    qint64 longestGap = 0; ///< between two frames of the recording
    qint64 answers = 0;    ///< received right after one that was sent
    qint64 answerTime = 0; ///< all together
    qint64 longestAnswer = 0;

    void take(const Record &record);

private:
    qint64 m_last = kNoTime;
    bool m_isSent = false;
};

/// Lays two recordings side by side, frame by frame: frames of equal bytes pair, and what has no
/// equal is changed, lost or added as `placesOf` finds it, some thousand frames ahead. Its memory
/// doesn't grow.
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
    struct Ahead
    {
        Record record;
        std::optional<FrameMarks> marks; ///< made where frames differ
    };
    struct Side
    {
        Source source;
        std::deque<Ahead> ahead;
        Timing timing;

        void fill();
        Record take();
        QVector<FrameMarks> marks();
    };

    bool isEqualNext() const;
    Place nextPlace();

    Side m_before, m_after;
    QVector<Place> m_places; ///< of the next frames, the last first
};

} // namespace wire
