// The console's run as its peer sees it: period of the frames on the wire, processor share, and
// what an hour's run leaves in memory, each beside a baseline of the same program run.
// Usage: bench_cycle PODSIM [SECONDS]

#include "bench/measure.h"
#include "bench/plainlog.h"
#include "protocol/fields.h"
#include "shell/NacelleBench.h"

#include <QApplication>
#include <QPlainTextEdit>
#include <QProcess>
#include <QPushButton>
#include <QRegularExpression>
#include <QTcpServer>
#include <QTcpSocket>
#include <QThread>
#include <QUdpSocket>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <functional>
#include <malloc.h>
#include <vector>

namespace {

constexpr unsigned long kPeriodMs = 30;
constexpr int kHourOfFrames = 120000;

using Times = std::vector<qint64>; ///< nanoseconds of a steady clock

struct Period
{
    double median = 0;
    double high = 0; ///< 99th percentile
};

Period periodOf(const Times &times)
{
    std::vector<double> gaps;
    for (std::size_t i = 1; i < times.size(); ++i)
        gaps.push_back(double(times[i] - times[i - 1]) * 1e-6);
    std::sort(gaps.begin(), gaps.end());
    return {gaps[gaps.size() / 2], gaps[gaps.size() * 99 / 100]};
}

/// A peer on loopback that notes when each datagram came, and hands it on to a pod.
class Wire : public QThread
{
public:
    explicit Wire(quint16 podPort) : m_podPort(podPort)
    {
        start();
        while (port == 0)
            QThread::yieldCurrentThread();
    }
    ~Wire() override
    {
        m_quit = true;
        wait();
    }

    std::atomic<quint16> port{0};
    std::atomic<double> processor{0}; ///< seconds that this thread, which isn't the program's, took
    Times times;                      ///< read when the thread has ended or nothing arrives

protected:
    void run() override
    {
        QUdpSocket socket;
        socket.bind(QHostAddress(QHostAddress::LocalHost), 0);
        port = socket.localPort();
        while (!m_quit) {
            if (!socket.waitForReadyRead(100))
                continue;
            processor = seconds(CLOCK_THREAD_CPUTIME_ID);
            while (socket.hasPendingDatagrams()) {
                QByteArray frame(int(socket.pendingDatagramSize()), '\0');
                socket.readDatagram(frame.data(), frame.size());
                times.push_back(now());
                if (m_podPort)
                    socket.writeDatagram(frame, QHostAddress::LocalHost, m_podPort);
            }
        }
    }

private:
    const quint16 m_podPort;
    std::atomic<bool> m_quit{false};
};

/// The pod's place on loopback for one TCP link, which is handed on to the pod both ways. Notes
/// when each frame came.
class TcpWire : public QThread
{
public:
    explicit TcpWire(quint16 podPort) : m_podPort(podPort)
    {
        start();
        while (port == 0)
            QThread::yieldCurrentThread();
    }
    ~TcpWire() override
    {
        quit();
        wait();
    }

    std::atomic<quint16> port{0};
    Times times; ///< read when nothing arrives

protected:
    void run() override
    {
        QTcpServer server;
        QTcpSocket pod;
        pod.connectToHost(QHostAddress::LocalHost, m_podPort);
        pod.setSocketOption(QAbstractSocket::LowDelayOption, 1);
        QObject::connect(&server, &QTcpServer::newConnection, &server, [&] {
            QTcpSocket *near = server.nextPendingConnection();
            near->setSocketOption(QAbstractSocket::LowDelayOption, 1);
            QObject::connect(near, &QTcpSocket::readyRead, near, [this, near, &pod] {
                const QByteArray bytes = near->readAll();
                note(bytes);
                pod.write(bytes);
            });
            QObject::connect(&pod, &QTcpSocket::readyRead, near,
                             [near, &pod] { near->write(pod.readAll()); });
        });
        server.listen(QHostAddress::LocalHost);
        port = server.serverPort();
        exec();
    }

private:
    void note(const QByteArray &bytes)
    {
        m_begun += bytes;
        while (m_begun.size() >= kFrameOverhead && m_begun.size() >= saidLength(m_begun)) {
            times.push_back(now());
            m_begun.remove(0, qMax(kFrameOverhead, saidLength(m_begun)));
        }
    }

    const quint16 m_podPort;
    QByteArray m_begun; ///< of a frame that isn't all here yet
};

/// A bare thread that sleeps and emits to a slot of the main thread.
class BareCycle : public QObject
{
    Q_OBJECT

public:
    /// Runs for so long, sleeping `period` ms each time; the slot does `step`. Returns when each
    /// emission was made.
    Times run(int milliseconds, unsigned long period, const std::function<void()> &step)
    {
        m_step = step;
        Times times;
        std::atomic<bool> running{true};
        connect(this, &BareCycle::tick, this, &BareCycle::serve, Qt::QueuedConnection);
        QThread *thread = QThread::create([&] {
            while (running) {
                QThread::msleep(period);
                times.push_back(now());
                emit tick();
            }
        });
        thread->start();
        turnEventLoop(milliseconds);
        running = false;
        thread->wait();
        delete thread;
        disconnect(this, &BareCycle::tick, this, &BareCycle::serve);
        return times;
    }

signals:
    void tick();

private:
    void serve() { m_step(); }

    std::function<void()> m_step;
};

template <typename T>
T *find(QWidget &window, const char *name)
{
    return window.findChild<T *>(QLatin1String(name));
}

/// Waits for the message about the link, and closes it.
void closeMessage()
{
    while (true) {
        for (QWidget *widget : QApplication::topLevelWidgets()) {
            if (widget->isVisible() && widget->inherits("PopFrame")) {
                widget->close();
                return;
            }
        }
        turnEventLoop(10);
    }
}

void connectTo(NacelleBench &window, quint16 port, quint16 localPort)
{
    window.CreateUDP(QStringLiteral("127.0.0.1"), port, localPort, true);
    closeMessage();
}

void connectTcp(NacelleBench &window, quint16 port)
{
    window.CreateTCP(QStringLiteral("127.0.0.1"), port, 0, true);
    closeMessage();
}

template <typename Peer>
Times runConsole(NacelleBench &window, Peer &wire, int milliseconds)
{
    wire.times.clear();
    find<QPushButton>(window, "pushButton_start")->click();
    turnEventLoop(milliseconds);
    find<QPushButton>(window, "pushButton_start")->click();
    turnEventLoop(200);
    return wire.times;
}

void reportPeriod(const char *name, const Period &period, const Period &baseline)
{
    std::printf("%-30s median %.3f ms (%.3f x, limit 1.01)   99th percentile %.3f ms "
                "(%.3f x, limit 1.1)\n",
                name, period.median, period.median / baseline.median, period.high,
                period.high / baseline.high);
}

/// Resident memory without what the allocator keeps spare.
qint64 trimmedBytes()
{
    malloc_trim(0);
    return residentBytes();
}

/// Bytes of a display on screen that is as full as the log may become.
qint64 fullDisplayBytes(const QSize &size, const QString &entry)
{
    const qint64 before = trimmedBytes();
    QPlainTextEdit plain;
    plain.setMaximumBlockCount(50000);
    plain.resize(size);
    plain.show();
    for (int i = 0; i < 25000; ++i) {
        plain.appendPlainText(entry);
        if (i % 100 == 0)
            QCoreApplication::processEvents();
    }
    return trimmedBytes() - before;
}

void reportHour(NacelleBench &window)
{
    const QByteArray answer = QByteArray::fromHex("8A5E47000112") + QByteArray(65, '\0');
    const QByteArray sent = QByteArray(72, '\1');
    window.Disconnect();
    window.clearLog();
    const qint64 before = trimmedBytes();
    for (int i = 0; i < kHourOfFrames; ++i) {
        window.sendData(sent);
        window.receiveData(answer, QString());
        if (i % 100 == 0)
            QCoreApplication::processEvents();
    }
    const qint64 grown = trimmedBytes() - before;
    const qint64 frames = qint64(kHourOfFrames) * (sent.size() + answer.size());
    const qint64 display =
        fullDisplayBytes(find<QPlainTextEdit>(window, "textEdit")->size(),
                         QStringLiteral("[12:34:56:789]TX->\n") + QString(144, QLatin1Char('0')));
    std::printf("%-30s grew by %.1f MB (limit %.1f: twice %.1f of frames and a full display of "
                "%.1f)\n",
                "an hour's run", double(grown) * 1e-6, double(2 * frames + display) * 1e-6,
                double(frames) * 1e-6, double(display) * 1e-6);
}

/// The ports of a pod that has just been started, by the names of the links.
QMap<QString, quint16> podPorts(QProcess &pod)
{
    static const QRegularExpression link(QStringLiteral("(tcp|udp) [0-9.]+:([0-9]+)"));
    QMap<QString, quint16> ports;
    QString output;
    while (ports.size() < 2 && pod.waitForReadyRead(5000)) {
        output += QString::fromLocal8Bit(pod.readAllStandardOutput());
        for (auto found = link.globalMatch(output); found.hasNext();) {
            const QRegularExpressionMatch match = found.next();
            ports.insert(match.captured(1), match.captured(2).toUShort());
        }
    }
    return ports;
}

/// Processor share of this program, less that of the wire, over a run with answers; beside a thread
/// that appends equal entries to a plain display at the same rate.
void reportShare(NacelleBench &window, double share, int milliseconds)
{
    const QString entry = QStringLiteral("[12:34:56:789]TX->\n") + QString(144, QLatin1Char('0'));
    PlainLog plain(find<QPlainTextEdit>(window, "textEdit"));
    plain.show();
    turnEventLoop(200);
    const double before = seconds(CLOCK_PROCESS_CPUTIME_ID);
    // A frame and its answer come one after the other: twice as many entries as frames, one each
    // time.
    BareCycle().run(milliseconds, kPeriodMs / 2, [&] { plain.append(entry); });
    const double loop = (seconds(CLOCK_PROCESS_CPUTIME_ID) - before) / (milliseconds * 1e-3);
    std::printf("%-30s %.2f %% with %d answers, bare loop of equal entries %.2f %% (%.2f x, limit "
                "1.5)\n",
                "processor share", share * 100, window.receivedFrames.size(), loop * 100,
                share / loop);
}

/// Frames and answers over TCP.
void reportTcp(NacelleBench &window, quint16 podPort, int milliseconds)
{
    TcpWire wire(podPort);
    connectTcp(window, wire.port);
    const Period period = periodOf(runConsole(window, wire, milliseconds));
    std::printf("%-30s median %.3f ms   99th percentile %.3f ms (limit 31.5)   %d answers\n",
                "run over TCP, podsim answering", period.median, period.high,
                window.receivedFrames.size());
    window.Disconnect();
}

} // namespace

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    if (argc < 2) {
        std::fprintf(stderr, "usage: bench_cycle PODSIM [SECONDS]\n");
        return 2;
    }
    const int milliseconds = (argc > 2 ? QByteArray(argv[2]).toInt() : 60) * 1000;
    constexpr quint16 kLocalPort = 28338;

    QProcess pod;
    pod.start(QString::fromLocal8Bit(argv[1]),
              {"--tcp", "0", "--udp", "0", "--udp-reply", QString::number(kLocalPort)});
    const QMap<QString, quint16> ports = podPorts(pod);
    Wire silent(0);
    Wire answering(ports[QStringLiteral("udp")]);

    NacelleBench window;
    window.resize(1920, 1080);
    window.show();
    find<QPushButton>(window, "pushButton_2")->click();
    BareCycle bare;

    const Period baseline = periodOf(bare.run(milliseconds, kPeriodMs, [] {}));
    std::printf("%-30s median %.3f ms   99th percentile %.3f ms\n", "bare thread", baseline.median,
                baseline.high);
    connectTo(window, silent.port, kLocalPort);
    reportPeriod("run, idle peer", periodOf(runConsole(window, silent, milliseconds)), baseline);
    window.Disconnect();

    window.clearLog();
    connectTo(window, answering.port, kLocalPort);
    const double before = seconds(CLOCK_PROCESS_CPUTIME_ID) - answering.processor;
    reportPeriod("run, podsim answering", periodOf(runConsole(window, answering, milliseconds)),
                 baseline);
    const double share =
        (seconds(CLOCK_PROCESS_CPUTIME_ID) - answering.processor - before) / (milliseconds * 1e-3);
    reportShare(window, share, milliseconds);
    window.Disconnect();
    reportTcp(window, ports[QStringLiteral("tcp")], milliseconds);
    pod.terminate();
    pod.waitForFinished();
    reportHour(window);
}

#include "bench_cycle.moc"
