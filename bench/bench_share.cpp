// Processor time of a frame that comes at a working rate, with the console and the log on the
// screen, beside a plain window that appends an equal text to an equal display at the same rate;
// with some minutes in the log, and with all that it keeps. Usage: bench_share [SECONDS], of each
// of the rounds.

#include "bench/measure.h"
#include "bench/plainlog.h"
#include "shell/NacelleBench.h"

#include <QApplication>
#include <QPlainTextEdit>
#include <QPushButton>

#include <cstdio>
#include <functional>

namespace {

constexpr int kRounds = 5;
constexpr int kSomeEntries = 10000;
constexpr int kFullDisplay = 25000;

const QByteArray kFrame =
    QByteArray::fromHex("8A5E49000111") + QByteArray(63, '\x12') + QByteArray::fromHex("20001234");

/// Microseconds of processor time a step, one each `periodMs` with the window shown alone.
double costOf(QWidget &window, int periodMs, int runSeconds, const std::function<void()> &step)
{
    window.show();
    turnEventLoop(300);
    int steps = 0;
    QTimer timer;
    timer.setTimerType(Qt::PreciseTimer);
    QObject::connect(&timer, &QTimer::timeout, [&] {
        step();
        ++steps;
    });
    timer.start(periodMs);
    const double before = seconds(CLOCK_PROCESS_CPUTIME_ID);
    turnEventLoop(runSeconds * 1000);
    const double cost = (seconds(CLOCK_PROCESS_CPUTIME_ID) - before) * 1e6 / steps;
    window.hide();
    return cost;
}

} // namespace

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    const int runSeconds = argc > 1 ? QByteArray(argv[1]).toInt() : 5;

    NacelleBench window;
    window.resize(1920, 1080);
    window.show();
    window.findChild<QPushButton *>(QStringLiteral("pushButton_2"))->click();
    turnEventLoop(300);
    auto *log = window.findChild<QPlainTextEdit *>(QStringLiteral("textEdit"));
    PlainLog plain(log);
    const auto receive = [&] { window.receiveData(kFrame, QString()); };
    const auto append = [&] {
        plain.append(QStringLiteral("[12:34:56:789]收->\n") +
                     QString::fromLatin1(kFrame.toHex().toUpper()));
    };

    struct Row
    {
        const char *name;
        int entries;
        int periodMs;
        double limit;
    };
    for (const Row &row :
         {Row{"67 frames/s", kSomeEntries, 15, 0.5}, Row{"1,000 frames/s", kSomeEntries, 1, 0.25},
          Row{"67 frames/s, full display", kFullDisplay, 15, 0.5},
          Row{"1,000 frames/s, full display", kFullDisplay, 1, 0.25}}) {
        while (log->blockCount() < 2 * row.entries) {
            receive();
            append();
        }
        std::vector<double> own, baseline;
        for (int round = 0; round < kRounds; ++round) {
            own.push_back(costOf(window, row.periodMs, runSeconds, receive));
            baseline.push_back(costOf(plain, row.periodMs, runSeconds, append));
        }
        const double ratio = median(own) / median(baseline);
        std::printf(
            "%-30s %6.0f us of processor a frame, naive appends %6.0f   %.2f x (limit %.2f)%s\n",
            row.name, median(own), median(baseline), ratio, row.limit,
            ratio > row.limit ? " OVER" : "");
    }
}
