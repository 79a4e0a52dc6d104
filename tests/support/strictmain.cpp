#include "tests/support/strictmain.h"

#include <QTemporaryFile>

#include <cstdio>

namespace {

/// What the offscreen platform says of what it lacks.
constexpr char kOffscreenGap[] = "This plugin does not support ";

/// QtTest reports each warning that wasn't announced as a "QWARN" line of its log.
int unannouncedWarnings(QFile &log)
{
    int count = 0;
    while (!log.atEnd()) {
        const QByteArray line = log.readLine();
        std::fputs(line.constData(), stdout);
        const bool warning = line.startsWith("QWARN") || line.startsWith("QCRITICAL");
        if (warning && !line.contains(kOffscreenGap))
            ++count;
    }
    return count;
}

} // namespace

int runStrictly(QObject *test, int argc, char **argv)
{
    QTemporaryFile log;
    if (!log.open())
        return 1;
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments << QString::fromLocal8Bit(argv[i]);
    arguments << QStringLiteral("-o") << log.fileName() + QStringLiteral(",txt");
    const int failures = QTest::qExec(test, arguments);
    QFile written(log.fileName());
    if (!written.open(QIODevice::ReadOnly))
        return 1;
    const int warnings = unannouncedWarnings(written);
    if (warnings > 0)
        std::printf("%d warning(s) that no test announced\n", warnings);
    return failures + warnings;
}
