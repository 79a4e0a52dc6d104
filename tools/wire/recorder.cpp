#include "tools/wire/recorder.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QVector>

#include <algorithm>

namespace wire {

namespace {

constexpr int kDigits = 5;

} // namespace

Recorder::Recorder(const QString &path, const FrameFormat &format, const Rotation &rotation)
    : m_path(path), m_format(format), m_rotation(rotation)
{
    const QString suffix = QFileInfo(path).suffix();
    m_end = suffix.isEmpty() ? QString() : QLatin1Char('.') + suffix;
    m_stem = path.chopped(m_end.size()) + QLatin1Char('-');
    if (m_rotation.isWanted())
        findFormer();
}

bool Recorder::isDue() const
{
    return (m_rotation.bytes > 0 && m_output.written() >= m_rotation.bytes) ||
           (m_rotation.microseconds > 0 &&
            m_since.nsecsElapsed() / 1000 >= m_rotation.microseconds);
}

QString Recorder::pathOf(qint64 number) const
{
    return QStringLiteral("%1%2%3")
        .arg(m_stem)
        .arg(number, kDigits, 10, QLatin1Char('0'))
        .arg(m_end);
}

/// Files of earlier runs: to begin at 1 again would write over a night that is wanted yet.
void Recorder::findFormer()
{
    const QFileInfo stem(m_stem);
    const int more = stem.fileName().size() + m_end.size();
    QVector<qint64> numbers;
    for (const QString &name : stem.dir().entryList(QDir::Files | QDir::Hidden)) {
        const qint64 number = name.mid(stem.fileName().size(), name.size() - more).toLongLong();
        if (number > 0 && QFileInfo(pathOf(number)).fileName() == name)
            numbers.append(number);
    }
    std::sort(numbers.begin(), numbers.end());
    for (const qint64 number : qAsConst(numbers))
        m_files.append(pathOf(number));
    m_number = numbers.isEmpty() ? 0 : numbers.last();
}

QString Recorder::nextPath()
{
    return m_rotation.isWanted() ? pathOf(++m_number) : m_path;
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
