#include "tools/wire/progress.h"

#include "tools/wire/recordreader.h"

#include <cstdio>

#ifdef Q_OS_WIN
#include <io.h>
#else
#include <unistd.h>
#endif

namespace wire {

namespace {

constexpr int kRecordsALook = 4096;
constexpr qint64 kPauseMs = 500;

bool isTerminal()
{
#ifdef Q_OS_WIN
    return _isatty(2);
#else
    return isatty(2);
#endif
}

} // namespace

Progress::Progress() : m_isTerminal(isTerminal())
{
    m_clock.start();
}

void Progress::advance(const RecordReader &reader)
{
    if (!m_isTerminal || ++m_count % kRecordsALook != 0 || m_clock.elapsed() < m_next)
        return;
    const qint64 total = reader.total();
    if (total <= 0)
        return;
    std::fprintf(stderr, "\r%3d %%", int(100 * reader.position() / total));
    m_isShown = true;
    m_next = m_clock.elapsed() + kPauseMs;
}

void Progress::end()
{
    if (m_isShown)
        std::fputs("\r     \r", stderr);
    m_isShown = false;
}

} // namespace wire
