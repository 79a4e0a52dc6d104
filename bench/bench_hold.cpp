// How long a flood on a link holds the event loop: the largest gap between the beats of a timer in
// the window's thread, for each kind of flood and page. An operator's limit is 100 ms.
// Usage: bench_hold [ROW], with a part of the names of the rows to be run.

#include "tests/support/bench.h"

#include <QElapsedTimer>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>

#include <algorithm>
#include <arpa/inet.h>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <random>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

constexpr int kBeatMs = 5;
constexpr int kLimitMs = 100;
constexpr int kFloodSize = 20 * 1000 * 1000;
constexpr int kQuietMs = 500;
constexpr int kLargestDatagram = 65507;

using Pieces = std::vector<QByteArray>; ///< one write or datagram each

const QByteArray kFrame =
    QByteArray::fromHex("8A5E49000111") + QByteArray(63, '\x12') + QByteArray::fromHex("20001234");

QByteArray noise(int size)
{
    std::minstd_rand random(1);
    QByteArray bytes(size, '\0');
    for (char &byte : bytes)
        byte = char(random() >> 8);
    return bytes;
}

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

/// A chunk whose length field is negative, so that all of it is a frame.
QByteArray wholeChunk(int size)
{
    return QByteArray::fromHex("8A5E00FF") + noise(size - 4);
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

enum Kind { kTcp, kUdp, kSerial };

struct Row
{
    const char *name;
    Kind kind;
    bool console;
    Pieces (*pieces)();
    int pauseMs = 0; ///< behind each piece
};

constexpr Row kRows[] = {
    {"TCP, 20 MB of frames, packet page", kTcp, false, frames},
    {"TCP, 20 MB of frames, console", kTcp, true, frames},
    {"TCP, 20 MB of garbage, packet page", kTcp, false, garbage},
    {"TCP, 20 MB of garbage, console", kTcp, true, garbage},
    {"TCP, frames of 32,767 bytes, packet page", kTcp, false, longestFrames, 300},
    {"TCP, frames of 32,767 bytes, console", kTcp, true, longestFrames, 300},
    {"TCP, negative lengths, packet page", kTcp, false, negativeLengths},
    {"UDP, 100,000 frames, packet page", kUdp, false, datagrams},
    {"UDP, 100,000 frames, console", kUdp, true, datagrams},
    {"UDP, 0 and 65,507 bytes, packet page", kUdp, false, oddDatagrams},
    {"serial, 20 MB of frames, packet page", kSerial, false, frames},
    {"serial, 20 MB of garbage, console", kSerial, true, garbage},
};

/// The far end of a link as a descriptor that blocks. The program's end is opened as an operator
/// does it.
class FarEnd
{
public:
    FarEnd(Bench &bench, Kind kind)
    {
        const bool isUp = kind == kTcp   ? plugTcp(bench)
                          : kind == kUdp ? plugUdp(bench)
                                         : plugSerial(bench);
        if (!isUp || m_fd < 0)
            qFatal("no link");
        ::fcntl(m_fd, F_SETFL, 0);
    }
    ~FarEnd() { hangUp(); }

    void hangUp()
    {
        if (m_fd >= 0)
            ::close(m_fd);
        m_fd = -1;
        m_server.close();
    }

    /// Returns when the piece is on its way; false if the link is gone.
    bool write(const QByteArray &piece) const
    {
        if (m_isDatagram)
            return ::send(m_fd, piece.constData(), size_t(piece.size()), 0) >= 0;
        for (ssize_t done = 0; done < piece.size();) {
            const ssize_t size =
                ::write(m_fd, piece.constData() + done, size_t(piece.size() - done));
            if (size <= 0)
                return false;
            done += size;
        }
        return true;
    }

private:
    bool plugTcp(Bench &bench)
    {
        m_server.listen(QHostAddress::LocalHost);
        if (!bench.plug(QStringLiteral("TCP Client"), QString::number(m_server.serverPort())) ||
            !QTest::qWaitFor([this] { return m_server.hasPendingConnections(); }))
            return false;
        const std::unique_ptr<QTcpSocket> socket(m_server.nextPendingConnection());
        m_fd = ::dup(int(socket->socketDescriptor()));
        // Only this descriptor is left, and the connection with it.
        return true;
    }

    bool plugUdp(Bench &bench)
    {
        sockaddr_in address = {};
        socklen_t size = sizeof address;
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        auto *generic = reinterpret_cast<sockaddr *>(&address);
        m_isDatagram = true;
        m_fd = ::socket(AF_INET, SOCK_DGRAM, 0);
        const int free = ::socket(AF_INET, SOCK_DGRAM, 0);
        if (::bind(free, generic, size) != 0 || ::getsockname(free, generic, &size) != 0 ||
            ::connect(m_fd, generic, size) != 0)
            return false;
        ::close(free);
        return bench.plug(QStringLiteral("UDP"), QStringLiteral("9"),
                          QString::number(ntohs(address.sin_port)));
    }

    bool plugSerial(Bench &bench)
    {
        m_fd = ::posix_openpt(O_RDWR | O_NOCTTY);
        return ::grantpt(m_fd) == 0 && ::unlockpt(m_fd) == 0 &&
               bench.plug(QString::fromLocal8Bit(::ptsname(m_fd)));
    }

    QTcpServer m_server;
    int m_fd = -1;
    bool m_isDatagram = false;
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
    std::printf("%-42s held %6.1f ms, busy %6.1f ms (limit %d)%s   %d frames in %.1f s\n", row.name,
                heartbeat.largestMs(), heartbeat.largestBusyMs(), kLimitMs,
                heartbeat.largestMs() > kLimitMs ? " OVER" : "", bench->receivedFrames.size(),
                double(clock.elapsed() - kQuietMs) * 1e-3);
    bench.click("pushButton_Conn");
}

/// A far end that is gone must leave the program idle.
void measureGone(const char *name, Kind kind)
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
    measureGone("TCP, far end gone", kTcp);
    measureGone("serial, far end gone", kSerial);
}
