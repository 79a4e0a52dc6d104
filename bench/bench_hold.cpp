// How long a flood on a link holds the event loop: the largest gap between the beats of a timer in
// the window's thread, for each kind of flood and page. An operator's limit is 100 ms. Beside it
// the memory that the frames take then.
// Usage: bench_hold [ROW], with a part of the names of the rows to be run.

#include "bench/measure.h"
#include "tests/support/farend.h"

#include <QClipboard>
#include <QElapsedTimer>
#include <QTextEdit>
#include <QTimer>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <numeric>
#include <thread>
#include <vector>

namespace {

constexpr int kBeatMs = 5;
constexpr int kLimitMs = 100;
constexpr int kPasteLimitMs = 300;
// Of each byte stay the frame and two digits of two bytes in the log; a long line's layout on top.
constexpr double kMemoryFactor = 8;
constexpr double kMemoryGround = 60e6;
constexpr int kFloodSize = 20 * 1000 * 1000;
constexpr int kQuietMs = 500;

using Pieces = std::vector<QByteArray>; ///< one write or datagram each

const QByteArray kFrame =
    QByteArray::fromHex("8A5E49000111") + QByteArray(63, '\x12') + QByteArray::fromHex("20001234");

Pieces frames()
{
    return Pieces(kFloodSize / 7300, kFrame.repeated(100));
}

Pieces garbage()
{
    return Pieces(kFloodSize / 100000, noise(100000));
}

/// A frame whose length field says the most that it can.
Pieces longestFrames()
{
    return Pieces(10, QByteArray::fromHex("8A5EFF7F") + noise(32763));
}

Pieces negativeLengths()
{
    return Pieces(kFloodSize / 100000, wholeChunk(100000));
}

Pieces datagrams()
{
    return Pieces(100000, kFrame);
}

Pieces oddDatagrams()
{
    Pieces pieces;
    for (int i = 0; i < 300; ++i)
        pieces.insert(pieces.end(), {QByteArray(), wholeChunk(kLargestDatagram), kFrame});
    return pieces;
}

/// With a negative length a datagram stays in the cache as well, and the next one without a header
/// makes a frame of both: the longest there is.
Pieces joinedDatagrams()
{
    QByteArray second = noise(kLargestDatagram);
    second.replace(0, 4, QByteArray(4, '\xFF'));
    Pieces pieces(6, second);
    pieces.front() = wholeChunk(kLargestDatagram);
    return pieces;
}

struct Row
{
    const char *name;
    LinkType kind;
    bool console;
    Pieces (*pieces)();
    int pauseMs = 0; ///< after each piece
};

constexpr Row kRows[] = {
    {"TCP, 20 MB of frames, packet page", kTcpLink, false, frames},
    {"TCP, 20 MB of frames, console", kTcpLink, true, frames},
    {"TCP, 20 MB of garbage, packet page", kTcpLink, false, garbage},
    {"TCP, 20 MB of garbage, console", kTcpLink, true, garbage},
    {"TCP, frames of 32,767 bytes, packet page", kTcpLink, false, longestFrames, 300},
    {"TCP, frames of 32,767 bytes, console", kTcpLink, true, longestFrames, 300},
    {"TCP, negative lengths, packet page", kTcpLink, false, negativeLengths},
    {"UDP, 100,000 frames, packet page", kUdpLink, false, datagrams},
    {"UDP, 100,000 frames, console", kUdpLink, true, datagrams},
    {"UDP, 0 and 65,507 bytes, packet page", kUdpLink, false, oddDatagrams},
    {"UDP, frames of 131,014 bytes, packet page", kUdpLink, false, joinedDatagrams, 500},
    {"serial, 20 MB of frames, packet page", kSerialLink, false, frames},
    {"serial, 20 MB of garbage, console", kSerialLink, true, garbage},
};

double milliseconds(clockid_t clock)
{
    timespec time = {};
    clock_gettime(clock, &time);
    return double(time.tv_sec) * 1e3 + double(time.tv_nsec) * 1e-6;
}

/// Gaps between the beats of a timer, while one lives: the largest by the clock, and the largest
/// share of the processor that the thread had in one, which other work on the machine doesn't
/// swell.
class Heartbeat
{
public:
    Heartbeat()
    {
        m_timer.setTimerType(Qt::PreciseTimer);
        QObject::connect(&m_timer, &QTimer::timeout, [this] { beat(); });
        m_timer.start(kBeatMs);
    }
    double largestMs() const { return m_largest; }
    double largestBusyMs() const { return m_largestBusy; }

private:
    void beat()
    {
        const double now = milliseconds(CLOCK_MONOTONIC);
        const double busy = milliseconds(CLOCK_THREAD_CPUTIME_ID);
        m_largest = std::max(m_largest, now - m_now - kBeatMs);
        m_largestBusy = std::max(m_largestBusy, busy - m_busy);
        m_now = now;
        m_busy = busy;
    }

    QTimer m_timer;
    double m_now = milliseconds(CLOCK_MONOTONIC);
    double m_busy = milliseconds(CLOCK_THREAD_CPUTIME_ID);
    double m_largest = 0;
    double m_largestBusy = 0;
};

void awaitQuiet(Bench &bench, const std::atomic<bool> &isDone)
{
    int received = -1;
    while (!isDone || received != bench->receivedFrames.size()) {
        received = bench->receivedFrames.size();
        QTest::qWait(kQuietMs);
    }
}

double sizeOf(const QList<QByteArray> &frames)
{
    return std::accumulate(frames.begin(), frames.end(), 0.0,
                           [](double sum, const QByteArray &frame) { return sum + frame.size(); });
}

void measure(const Row &row)
{
    Bench bench;
    bench->showNormal();
    bench->resize(1920, 1080);
    bench.click(row.console ? "pushButton_2" : "pushButton_1");
    const Pieces pieces = row.pieces();
    std::atomic<bool> isDone{false};
    const FarEnd end(bench, row.kind);
    QTest::qWait(kQuietMs);

    const Heartbeat heartbeat;
    const qint64 before = residentBytes();
    QElapsedTimer clock;
    clock.start();
    std::thread writer([&] {
        for (const QByteArray &piece : pieces) {
            if (!end.write(piece))
                break;
            std::this_thread::sleep_for(std::chrono::milliseconds(row.pauseMs));
        }
        isDone = true;
    });
    awaitQuiet(bench, isDone);
    writer.join();
    std::printf("%-42s held %6.1f ms, busy %6.1f ms (limit %d)%s   %d frames in %.1f s", row.name,
                heartbeat.largestMs(), heartbeat.largestBusyMs(), kLimitMs,
                heartbeat.largestMs() > kLimitMs ? " OVER" : "", bench->receivedFrames.size(),
                double(clock.elapsed() - kQuietMs) * 1e-3);
    const double bytes = sizeOf(bench->receivedFrames);
    const double grown = double(residentBytes() - before);
    std::printf(", %.0f MB of frames in %.0f MB%s\n", bytes * 1e-6, grown * 1e-6,
                grown > kMemoryFactor * bytes + kMemoryGround ? " OVER" : "");
    bench.click("pushButton_Conn");
}

double pasteInto(QTextEdit *box, const QString &text)
{
    box->setFocus();
    QGuiApplication::clipboard()->setText(text);
    QElapsedTimer clock;
    clock.start();
    box->paste();
    QCoreApplication::processEvents();
    return double(clock.elapsed());
}

/// A frame pasted into its box by an operator, of so many bytes, beside an equal plain box.
void measurePaste(const char *name, const char *byte, int bytes)
{
    Bench bench;
    bench->showNormal();
    bench->resize(1920, 1080);
    auto *box = bench.find<QTextEdit>("textEdit_Send");
    QTest::qWait(kQuietMs);
    QTextEdit plain;
    plain.resize(box->size());
    plain.show();
    const QString text = QString::fromLatin1(byte).repeated(bytes);
    const double own = pasteInto(box, text);
    std::printf("%-42s held %6.1f ms (limit %d), plain box %6.1f ms\n", name, own, kPasteLimitMs,
                pasteInto(&plain, text));
}

/// A far end that is gone must leave the program idle.
void measureGone(const char *name, LinkType kind)
{
    Bench bench;
    FarEnd end(bench, kind);
    end.hangUp();
    QTest::qWait(kQuietMs);
    const double before = milliseconds(CLOCK_PROCESS_CPUTIME_ID);
    QTest::qWait(1000);
    std::printf("%-42s busy %6.1f ms of a second\n", name,
                milliseconds(CLOCK_PROCESS_CPUTIME_ID) - before);
    bench.click("pushButton_Conn");
}

} // namespace

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    const QByteArray wanted = argc > 1 ? argv[1] : "";
    for (const Row &row : kRows) {
        if (QByteArray(row.name).contains(wanted))
            measure(row);
    }
    measurePaste("pasted: 200,000 bytes, digits alone", "A8", 200000);
    measurePaste("pasted: 200,000 bytes with blanks", "A8 ", 200000);
    measureGone("TCP, far end gone", kTcpLink);
    measureGone("serial, far end gone", kSerialLink);
}
