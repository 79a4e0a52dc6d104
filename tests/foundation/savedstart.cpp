#include "foundation/QGlobal.h"

#include <QCoreApplication>

#include <cstdio>

/// A start of the program as far as its settings go: says what came of them in one line.
int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    const QGlobal *global = QGlobal::instance();
    std::printf("%s %s %d %d %s", global->languageChinese ? "zh" : "en",
                global->ffmpegEngine ? "ffmpeg" : "libvlc", global->controlRows.size(),
                global->keyRows.size(), qPrintable(global->dataFolder));
    return 0;
}
