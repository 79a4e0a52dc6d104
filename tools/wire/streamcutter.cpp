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
                 [this](const QByteArray &frame, quint8) { m_queue.append(frame); });
}

bool StreamCutter::takeQueued(QByteArray &bytes)
{
    if (m_taken == m_queue.size()) {
        m_queue.clear();
        m_taken = 0;
        return false;
    }
    bytes = m_queue.at(m_taken++);
    return true;
}

bool StreamCutter::take(Record &record, bool ends)
{
    if (m_cut == Cut::Searching ? !m_scanner.take(record.bytes, ends) : !takeQueued(record.bytes))
        return false;
    record.time = m_time;
    record.direction =
        m_direction == Direction::Unknown ? usualDirection(kindOf(record.bytes)) : m_direction;
    return true;
}

} // namespace wire
