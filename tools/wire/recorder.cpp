#include "tools/wire/recorder.h"

#include <QFile>
#include <QFileInfo>

namespace wire {

bool Recorder::isDue() const
{
    return (m_rotation.bytes > 0 && m_output.written() >= m_rotation.bytes) ||
           (m_rotation.microseconds > 0 &&
            m_since.nsecsElapsed() / 1000 >= m_rotation.microseconds);
}

QString Recorder::nextPath()
{
    if (m_rotation.bytes == 0 && m_rotation.microseconds == 0)
        return m_path;
    const QFileInfo info(m_path);
    const QString end = info.suffix().isEmpty() ? QString() : QLatin1Char('.') + info.suffix();
    return QStringLiteral("%1-%2%3")
        .arg(m_path.chopped(end.size()))
        .arg(++m_number, 5, 10, QLatin1Char('0'))
        .arg(end);
}

bool Recorder::open()
{
    const QString path = nextPath();
    m_files.append(path);
    // The oldest goes before the next one comes, so that a full disk gets room.
    while (m_rotation.keep > 0 && m_files.size() > m_rotation.keep)
        QFile::remove(m_files.takeFirst());
    m_since.start();
    if (!m_output.open(path))
        return false;
    m_format.begin(m_output.buffer());
    return m_output.flush();
}

bool Recorder::take(const Record &record)
{
    m_format.add(record, m_output.buffer());
    ++m_count;
    return m_output.settle();
}

bool Recorder::flush()
{
    if (!m_output.flush())
        return false;
    return !isDue() || (m_output.close() && open());
}

} // namespace wire
