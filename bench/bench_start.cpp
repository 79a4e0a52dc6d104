// Time from the start of the process to the first painted window, and resident memory there, of
// the program's window beside an empty main window. Runs a program of each once a round.

#include "bench/measure.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QProcess>

#include <cstdio>
#include <vector>

namespace {

constexpr int kRounds = 15;

struct Figures
{
    std::vector<double> milliseconds;
    std::vector<double> kilobytes;
};

void runOnce(const QString &program, Figures &figures)
{
    QProcess process;
    QElapsedTimer timer;
    timer.start();
    process.start(QCoreApplication::applicationDirPath() + program, QStringList());
    process.waitForReadyRead();
    figures.milliseconds.push_back(double(timer.nsecsElapsed()) * 1e-6);
    process.waitForFinished();
    figures.kilobytes.push_back(process.readAll().toDouble());
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    Figures empty, bench;
    for (int round = 0; round < kRounds; ++round) {
        runOnce(QStringLiteral("/start_empty"), empty);
        runOnce(QStringLiteral("/start_bench"), bench);
    }
    const double time = median(bench.milliseconds) / median(empty.milliseconds);
    const double memory = median(bench.kilobytes) / median(empty.kilobytes);
    std::printf("first painted window: empty %.0f ms, bench %.0f ms, %.2f x (limit 1.4)\n",
                median(empty.milliseconds), median(bench.milliseconds), time);
    std::printf("resident memory:      empty %.0f kB, bench %.0f kB, %.2f x (limit 0.7)\n",
                median(empty.kilobytes), median(bench.kilobytes), memory);
}
