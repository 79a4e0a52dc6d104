// Time from the start of the process to the first painted window, and resident memory there, of
// the program beside an empty main window. Runs itself once for each measurement.

#include "shell/NacelleBench.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <vector>

namespace {

constexpr int kRounds = 15;

/// Ends the program at the first paint of a window, telling its memory in kilobytes.
class FirstPaint : public QObject
{
protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::Paint && qobject_cast<QMainWindow *>(watched))
            QTimer::singleShot(0, qApp, [] {
                QFile statm(QStringLiteral("/proc/self/statm"));
                if (statm.open(QIODevice::ReadOnly))
                    std::printf("%lld\n", statm.readAll().split(' ').value(1).toLongLong() * 4);
                std::fflush(stdout);
                QCoreApplication::quit();
            });
        return false;
    }
};

struct Figures
{
    std::vector<double> milliseconds;
    std::vector<double> kilobytes;
};

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

void runOnce(const QString &what, Figures &figures)
{
    QProcess process;
    QElapsedTimer timer;
    timer.start();
    process.start(QCoreApplication::applicationFilePath(), {what});
    process.waitForReadyRead();
    figures.milliseconds.push_back(double(timer.nsecsElapsed()) * 1e-6);
    process.waitForFinished();
    figures.kilobytes.push_back(process.readAll().toDouble());
}

template <typename Window>
int showWindow(int argc, char **argv)
{
    QApplication application(argc, argv);
    FirstPaint filter;
    application.installEventFilter(&filter);
    Window window;
    window.showMaximized();
    return QApplication::exec();
}

} // namespace

int main(int argc, char *argv[])
{
    const QByteArray what = argc > 1 ? argv[1] : "";
    if (what == "bench")
        return showWindow<NacelleBench>(argc, argv);
    if (what == "empty")
        return showWindow<QMainWindow>(argc, argv);

    const QCoreApplication application(argc, argv);
    Figures empty, bench;
    for (int round = 0; round < kRounds; ++round) {
        runOnce(QStringLiteral("empty"), empty);
        runOnce(QStringLiteral("bench"), bench);
    }
    const double time = median(bench.milliseconds) / median(empty.milliseconds);
    const double memory = median(bench.kilobytes) / median(empty.kilobytes);
    std::printf("first painted window: empty %.0f ms, bench %.0f ms, %.2f x (limit 2)\n",
                median(empty.milliseconds), median(bench.milliseconds), time);
    std::printf("resident memory:      empty %.0f kB, bench %.0f kB, %.2f x (limit 1.5)\n",
                median(empty.kilobytes), median(bench.kilobytes), memory);
}
