#include "tests/support/strictmain.h"

#include <QTemporaryFile>

#include <algorithm>
#include <cstdio>
#include <iterator>

namespace {

/// What the platforms themselves say: the offscreen one of what it lacks; that of X when it asks
/// for the place of a frame that the window manager has just taken away from a closed window; that
/// of Windows of a size that the screen doesn't grant.
constexpr const char *kPlatformNoise[] = {
    "This plugin does not support ",
    "QXcbConnection: XCB error: 3 (BadWindow)",
    "setGeometry: Unable to set geometry ",
};

bool isPlatformNoise(const QByteArray &line)
{
    return std::any_of(std::begin(kPlatformNoise), std::end(kPlatformNoise),
                       [&line](const char *text) { return line.contains(text); });
}

/// QtTest reports each warning that wasn't announced as a "QWARN" line of its log.
int unannouncedWarnings(QFile &log)
{
    int count = 0;
    while (!log.atEnd()) {
        const QByteArray line = log.readLine();
        std::fputs(line.constData(), stdout);
        const bool warning = line.startsWith("QWARN") || line.startsWith("QCRITICAL");
        if (warning && !isPlatformNoise(line))
            ++count;
    }
    return count;
}

/// The cache of the style sheets knows every widget that has one, so that none of them would be
/// lost to the leak sanitizer.
void releaseWidgets()
{
#ifdef QT_WIDGETS_LIB
    for (QWidget *widget : QApplication::allWidgets())
        widget->setStyleSheet(QString());
#endif
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
    releaseWidgets();
    QFile written(log.fileName());
    if (!written.open(QIODevice::ReadOnly))
        return 1;
    const int warnings = unannouncedWarnings(written);
    if (warnings > 0)
        std::printf("%d warning(s) that no test announced\n", warnings);
    return failures + warnings;
}
