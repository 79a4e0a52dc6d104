#pragma once

#include "tools/wire/framescanner.h"
#include "tools/wire/record.h"
#include "tools/wire/recordqueue.h"

namespace wire {

/// How frames are made of the chunks of a link: with headers searched, or by the bench's own rules,
/// for what its operator would have seen.
enum class Cut : quint8 { Searching, AsBench };

/// Makes records of one direction's chunks. A record's time is that of the chunk that ended it. An
/// unknown direction becomes the one that the frame has on every link.
class StreamCutter
{
public:
    explicit StreamCutter(Cut cut, Direction direction = Direction::Unknown)
        : m_cut(cut), m_direction(direction)
    {
    }

    void push(const char *bytes, int size, qint64 time = kNoTime);
    void finish() { m_scanner.finish(); }
    /// The next record; `ends` as `FrameScanner::take` has it.
    bool take(Record &record, bool ends);

private:
    Cut m_cut;
    Direction m_direction;
    qint64 m_time = kNoTime;
    FrameScanner m_scanner;
    QByteArray m_cache; ///< of the bench's cut
    RecordQueue<QByteArray> m_queue;
};

} // namespace wire
