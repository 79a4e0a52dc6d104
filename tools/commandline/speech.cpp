#include "tools/commandline/speech.h"

#ifdef Q_OS_WIN
#include <io.h>
#include <windows.h>
#endif

void writeLine(std::FILE *stream, const QString &line)
{
    const QString whole = line + QLatin1Char('\n');
#ifdef Q_OS_WIN
    // Of bytes a console shows only the characters of its code page.
    const auto console = reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(stream)));
    DWORD count = 0;
    if (GetConsoleMode(console, &count)) {
        WriteConsoleW(console, whole.utf16(), DWORD(whole.size()), &count, nullptr);
        return;
    }
#endif
    std::fputs(whole.toUtf8().constData(), stream);
    // On Windows it would lie there until the program ends, where standard error is a pipe.
    if (stream == stderr)
        std::fflush(stream);
}
