#include "tools/wire/output.h"

#include <QFileInfo>

#include <cerrno>

#ifdef Q_OS_WIN
#include <fcntl.h>
#include <io.h>
#endif

namespace wire {

bool Output::open(const QString &path)
{
    const bool isStdout = path.isEmpty() || path == QLatin1String("-");
    const auto mode = QIODevice::WriteOnly | QIODevice::Unbuffered;
    m_error.clear();
    m_written = 0;
    m_name = isStdout ? QStringLiteral("standard output") : path;
#ifdef Q_OS_WIN
    if (isStdout)
        _setmode(1, _O_BINARY);
#endif
    m_file.setFileName(isStdout ? QString() : path);
    return (isStdout ? m_file.open(1, mode) : m_file.open(mode)) || fail();
}

bool Output::hasFolder(const QString &path)
{
    if (!path.isEmpty() && !QFileInfo(QFileInfo(path).path()).isDir())
        m_error = path + QStringLiteral(": there is no such folder");
    return m_error.isEmpty();
}

bool Output::fail()
{
    m_error = m_name + QStringLiteral(": ") + m_file.errorString();
    return false;
}

/// A disk that has room for a part takes that and gives no reason; the rest is refused with one.
bool Output::flush()
{
    qint64 count = 0;
    for (int at = 0; m_error.isEmpty() && at < m_buffer.size(); at += int(count)) {
        count = m_file.write(m_buffer.data() + at, m_buffer.size() - at);
        if (count <= 0) {
            m_isUnread = errno == EPIPE;
            return fail();
        }
        m_written += count;
    }
    m_buffer.clear();
    return m_error.isEmpty();
}

bool Output::close()
{
    const bool isWhole = flush();
    m_file.close();
    return isWhole;
}

} // namespace wire
