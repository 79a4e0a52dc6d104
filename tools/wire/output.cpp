#include "tools/wire/output.h"

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

bool Output::fail()
{
    m_error = m_name + QStringLiteral(": ") + m_file.errorString();
    return false;
}

bool Output::flush()
{
    if (!m_error.isEmpty())
        return false;
    if (m_buffer.size() > 0 && m_file.write(m_buffer.data(), m_buffer.size()) != m_buffer.size())
        return fail();
    m_written += m_buffer.size();
    m_buffer.clear();
    return true;
}

bool Output::close()
{
    const bool isWhole = flush();
    m_file.close();
    return isWhole;
}

} // namespace wire
