#include "tools/wire/streamcutter.h"

#include "shell/framecut.h"

namespace wire {

void StreamCutter::push(const char *bytes, int size, qint64 time)
{
    m_time = time;
    if (m_cut == Cut::Searching)
        m_scanner.push(bytes, size);
    else
        cutChunk(m_cache, QByteArray(bytes, size),
                 [this](const QByteArray &frame, quint8) { m_queue.put(frame); });
}

bool StreamCutter::take(Record &record, bool ends)
{
    if (m_cut == Cut::Searching ? !m_scanner.take(record.bytes, ends) : !m_queue.take(record.bytes))
        return false;
    record.time = m_time;
    record.direction =
        m_direction == Direction::Unknown ? usualDirection(kindOf(record.bytes)) : m_direction;
    return true;
}

} // namespace wire
