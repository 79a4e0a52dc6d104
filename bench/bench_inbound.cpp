// Frames a second through receiveData, all the way to log, history and form, beside a bare loop
// that appends an equal two-line text to an equal display; and the memory of a stored frame.

#include "bench/measure.h"
#include "protocol/dataPacketAnalysis.h"
#include "shell/NacelleBench.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QPlainTextEdit>

#include <cstdio>
#include <functional>
#include <malloc.h>
#include <vector>

namespace {

constexpr int kFrames = 4000;
/// Fewer than turn the plain display over once: from there on the toolkit measures all 50,000
/// blocks for each that it lays out, some 25 ms an entry, and would flatter whatever stands beside
/// it.
constexpr int kRounds = 5;
constexpr int kFramesPerTurn = 100; ///< between two turns of the event loop
constexpr int kHourOfFrames = 120000;

const QByteArray kFrame =
    QByteArray::fromHex("8A5E49000111") + QByteArray(63, '\x12') + QByteArray::fromHex("20001234");

/// Seconds for `kFrames` calls, the event loop turning in between as it does on a link.
double measure(const std::function<void()> &oneFrame)
{
    QElapsedTimer timer;
    timer.start();
    for (int i = 1; i <= kFrames; ++i) {
        oneFrame();
        if (i % kFramesPerTurn == 0)
            QCoreApplication::processEvents();
    }
    return double(timer.nsecsElapsed()) * 1e-9;
}

void fillDisplay(QPlainTextEdit *display, const QString &entry)
{
    display->setUpdatesEnabled(false);
    for (int i = 0; i < 25000; ++i)
        display->appendPlainText(entry);
    display->setUpdatesEnabled(true);
    display->moveCursor(QTextCursor::End); // where an operator's display stands
    QCoreApplication::processEvents();
}

/// Bytes that the program holds, spare room of the allocator not counted.
qint64 heldBytes()
{
    const struct mallinfo2 info = mallinfo2();
    return qint64(info.uordblks) + qint64(info.hblkhd);
}

void report(const char *name, double seconds, double baseline)
{
    std::printf("%-34s %9.0f frames/s   %.2f x baseline\n", name, kFrames / seconds,
                seconds / baseline);
}

/// What an hour of frames both ways adds to the history. The display is kept at one entry, so that
/// its text, which is bounded, doesn't count.
void reportMemory(NacelleBench &window, QPlainTextEdit *log)
{
    const QByteArray sent = kFrame.left(72);
    window.setUpdatesEnabled(false);
    log->setMaximumBlockCount(2);
    const qint64 before = heldBytes();
    for (int i = 0; i < kHourOfFrames; ++i) {
        window.sendData(sent);
        window.receiveData(kFrame, QString());
        if (i % kFramesPerTurn == 0)
            QCoreApplication::processEvents();
    }
    const double perFrame = double(heldBytes() - before) / (2.0 * kHourOfFrames);
    std::printf("%-34s %9.1f bytes      limit %.1f (2 x bytes + 64)\n", "memory of a stored frame",
                perFrame, 2 * 72.5 + 64);
}

} // namespace

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    const QString entry =
        QStringLiteral("[12:34:56:789]收->\n") + QString::fromLatin1(kFrame.toHex().toUpper());

    NacelleBench window;
    window.resize(1920, 1080);
    window.show();
    auto *log = window.findChild<QPlainTextEdit *>(QStringLiteral("textEdit"));
    QWidget *page = window.findChild<dataPacketAnalysis *>(QStringLiteral("CurrentPage"));

    QPlainTextEdit plain;
    plain.setMaximumBlockCount(50000);
    plain.setFont(log->font());
    plain.resize(log->size());
    plain.show();
    QCoreApplication::processEvents();
    fillDisplay(log, entry);
    fillDisplay(&plain, entry);

    std::vector<double> baseline, logOnly, withForm;
    for (int round = 0; round < kRounds; ++round) {
        baseline.push_back(measure([&] { plain.appendPlainText(entry); }));
        window.currentPageIndex = -1; // no page in front
        page->setVisible(false);
        logOnly.push_back(measure([&] { window.receiveData(kFrame, QString()); }));
        window.currentPageIndex = 0;
        page->setVisible(true);
        withForm.push_back(measure([&] { window.receiveData(kFrame, QString()); }));
    }
    report("baseline: append to a display", median(baseline), median(baseline));
    report("log and history (limit 1.25)", median(logOnly), median(baseline));
    report("log, history and form (limit 3)", median(withForm), median(baseline));
    reportMemory(window, log);
}
