// What nacelle-wire does in bulk: a recording of a million frames as JSON lines, beside tshark on
// the same file where it is installed; one frame taken apart and put together, beside
// parseGcuFrame; how late the frames of a replay are; what a bridge adds to a round trip; and a
// flood that is recorded. bench_wire [FRAMES [SECONDS]]

#include "bench/measure.h"
#include "protocol/codec.h"
#include "protocol/gcuframe.h"
#include "tools/wire/decode.h"
#include "tools/wire/framefields.h"
#include "tools/wire/output.h"
#include "tools/wire/player.h"
#include "tools/wire/recordwriter.h"

#include <QCoreApplication>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <cstdio>
#include <cstdlib>

#include <thread>

#include <arpa/inet.h>
#include <csignal>
#include <netinet/tcp.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

constexpr int kRounds = 200000;

QByteArray frame(int number)
{
    QByteArray bytes = QByteArray::fromHex("8A5E49000111");
    for (int i = bytes.size(); i < 69; ++i)
        bytes.append(char(number * 7 + i * 31));
    bytes.append(QByteArray::fromHex("2000"));
    appendCrc(bytes);
    return bytes;
}

void writeRecording(const QString &path, int frames)
{
    wire::Output output;
    output.open(path);
    const auto format = wire::pcapngFormat({});
    format->begin(output.buffer());
    for (int i = 0; i < frames; ++i) {
        format->add({1732190000000000 + i * 30000LL, wire::Direction::Rx, frame(i)},
                    output.buffer());
        output.settle();
    }
    output.close();
}

double secondsOf(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.setStandardOutputFile(QProcess::nullDevice());
    const qint64 begin = now();
    process.start(program, arguments);
    process.waitForFinished(-1);
    return process.exitCode() == 0 ? double(now() - begin) * 1e-9 : 0;
}

/// Kilobytes of the largest program that has ended.
long largestChild()
{
    rusage usage = {};
    getrusage(RUSAGE_CHILDREN, &usage);
    return usage.ru_maxrss;
}

QString wireProgram()
{
    return QCoreApplication::applicationDirPath() + QStringLiteral("/nacelle-wire");
}

void measureDecode(int frames)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("frames.pcapng"));
    const QString program = wireProgram();
    for (const int count : {frames / 10, frames}) {
        writeRecording(path, count);
        const double time = secondsOf(program, {"decode", "--json", path});
        std::printf("decode --json of %d frames: %.2f s, %ld kB\n", count, time, largestChild());
    }
    if (QStandardPaths::findExecutable(QStringLiteral("tshark")).isEmpty()) {
        std::printf("tshark isn't installed\n");
        return;
    }
    const double ours = secondsOf(program, {"decode", "--json", path});
    const double theirs = secondsOf(QStringLiteral("tshark"), {"-r", path, "-T", "json"});
    std::printf("tshark -T json: %.2f s, %.1f x (limit 5)\n", theirs, theirs / ours);
}

/// Nanoseconds of a call, the median of five runs.
template <typename Call>
double nanoseconds(Call call)
{
    std::vector<double> runs;
    for (int run = 0; run < 5; ++run) {
        const qint64 begin = now();
        for (int i = 0; i < kRounds; ++i)
            call();
        runs.push_back(double(now() - begin) / kRounds);
    }
    return median(runs);
}

void measureOneFrame()
{
    const QByteArray bytes = frame(1);
    const QVector<protocol::Field> &fields = wire::fieldsOf(wire::FrameKind::Gcu);
    std::vector<qint64> values(std::size_t(fields.size()));
    GcuFrame record;
    QByteArray made = bytes;
    volatile qint64 kept = 0;
    const double baseline = nanoseconds([&] { parseGcuFrame(bytes, record); });
    const double apart = nanoseconds([&] {
        for (int i = 0; i < fields.size(); ++i)
            if (wire::isNumber(fields[i].kind))
                values[std::size_t(i)] =
                    wire::rawNumber(fields[i].kind, bytes.constData() + fields[i].offset);
        kept = kept + int(wire::verdictOf(bytes)) + wire::commandIn(bytes.constData() + 69, 2).code;
    });
    const double together = nanoseconds([&] {
        for (int i = 0; i < fields.size(); ++i)
            if (wire::isNumber(fields[i].kind))
                wire::storeNumber(fields[i].kind, values[std::size_t(i)],
                                  made.data() + fields[i].offset);
        made.resize(71);
        appendCrc(made);
    });
    wire::TextBuffer text;
    const auto json = wire::jsonFormat();
    const wire::Record whole{0, wire::Direction::Rx, bytes};
    const double shown = nanoseconds([&] {
        text.clear();
        json->add(whole, text);
    });
    std::printf("one frame: parseGcuFrame %.0f ns; taken apart %.0f ns, %.2f x; put together %.0f "
                "ns, %.2f x "
                "(limit 1.5 both); as JSON %.0f ns\n",
                baseline, apart, apart / baseline, together, together / baseline, shown);
}

void measureReplay(int rate, int seconds, double speed)
{
    int left = rate * seconds;
    const qint64 gap = 1000000 / rate;
    QEventLoop loop;
    wire::Player player(
        {speed, 0, false},
        [&](wire::Record &record) {
            record.time = record.time == wire::kNoTime ? 0 : record.time + gap;
            return left-- > 0 ? wire::Player::Next::Here : wire::Player::Next::End;
        },
        [](const wire::Record &) {}, [] { return true; });
    QObject::connect(&player, &wire::Player::finished, &loop, &QEventLoop::quit,
                     Qt::QueuedConnection);
    player.start();
    loop.exec();
    const double wanted = double(qint64(rate) * seconds - 1) * double(gap) / 1e6 / speed;
    std::printf("replay of %d s at %d/s, %g times as fast: %.3f s instead of %.3f (%+.2f %%), late "
                "by %.1f ms in the "
                "median (limit 2), %.1f ms at the 99th percentile (limit 20)\n",
                seconds, rate, speed, double(player.elapsed()) / 1e6, wanted,
                (double(player.elapsed()) / 1e6 / wanted - 1) * 100,
                double(player.lateness(0.5)) / 1e3, double(player.lateness(0.99)) / 1e3);
}

sockaddr_in loopback(quint16 port)
{
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

/// A socket that listens on a free port, which goes into `port`.
int listener(quint16 &port)
{
    const int fd = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address = loopback(0);
    socklen_t size = sizeof address;
    if (::bind(fd, reinterpret_cast<sockaddr *>(&address), size) != 0)
        qFatal("no socket");
    ::listen(fd, 8);
    ::getsockname(fd, reinterpret_cast<sockaddr *>(&address), &size);
    port = ntohs(address.sin_port);
    return fd;
}

void sendAtOnce(int fd)
{
    const int on = 1;
    ::setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
}

/// Gives back what each client sends.
void echo(int server)
{
    char buffer[4096];
    for (int client = ::accept(server, nullptr, nullptr); client >= 0;
         client = ::accept(server, nullptr, nullptr)) {
        sendAtOnce(client);
        for (ssize_t size; (size = ::read(client, buffer, sizeof buffer)) > 0;)
            if (::write(client, buffer, std::size_t(size)) != size)
                break;
        ::close(client);
    }
}

/// Milliseconds of 2,000 round trips of a frame, in order.
std::vector<double> roundTrips(quint16 port)
{
    const QByteArray bytes = frame(1);
    const sockaddr_in address = loopback(port);
    int fd = ::socket(AF_INET, SOCK_STREAM, 0);
    while (::connect(fd, reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0) {
        ::close(fd);
        ::usleep(20000);
        fd = ::socket(AF_INET, SOCK_STREAM, 0);
    }
    sendAtOnce(fd);
    std::vector<double> times;
    char buffer[4096];
    for (int i = 0; i < 2000; ++i) {
        const qint64 begin = now();
        ssize_t left = ::write(fd, bytes.constData(), std::size_t(bytes.size()));
        for (ssize_t size = 1; left > 0 && size > 0; left -= size)
            size = ::read(fd, buffer, sizeof buffer);
        times.push_back(double(now() - begin) * 1e-6);
        ::usleep(2000);
    }
    ::close(fd);
    std::sort(times.begin(), times.end());
    return times;
}

void stop(QProcess &process)
{
    ::kill(pid_t(process.processId()), SIGINT);
    process.waitForFinished();
}

void measureBridge()
{
    quint16 podPort = 0, benchPort = 0;
    std::thread(echo, listener(podPort)).detach();
    ::close(listener(benchPort));
    const std::vector<double> direct = roundTrips(podPort);
    QProcess bridge;
    bridge.start(wireProgram(), {"record", "-o", "/dev/null", "--bridge",
                                 QStringLiteral("tcp-listen://127.0.0.1:%1").arg(benchPort),
                                 QStringLiteral("tcp://127.0.0.1:%1").arg(podPort)});
    const std::vector<double> bridged = roundTrips(benchPort);
    stop(bridge);
    std::printf("bridge: adds %.2f ms to a round trip in the median (limit 2: both ways), %.2f ms "
                "at the 99th "
                "percentile (limit 6)\n",
                bridged[1000] - direct[1000], bridged[1980] - direct[1980]);
}

void measureRecord(int seconds)
{
    constexpr int kBurst = 10, kRate = 10000;
    quint16 port = 0;
    const int server = listener(port);
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("flood.hex"));
    QProcess recorder;
    recorder.start(wireProgram(),
                   {"record", "-o", path, QStringLiteral("tcp://127.0.0.1:%1").arg(port)});
    const int client = ::accept(server, nullptr, nullptr);
    sendAtOnce(client);
    const QByteArray burst = frame(1).repeated(kBurst);
    const qint64 begin = now();
    for (int sent = 0; sent < seconds * kRate; sent += kBurst) {
        if (::write(client, burst.constData(), std::size_t(burst.size())) != burst.size())
            break;
        const qint64 early = begin + qint64(sent) * (1000000000LL / kRate) - now();
        if (early > 0)
            ::usleep(useconds_t(early / 1000));
    }
    rusage before = {}, after = {};
    getrusage(RUSAGE_CHILDREN, &before);
    ::close(client);
    recorder.waitForFinished();
    getrusage(RUSAGE_CHILDREN, &after);
    const auto busy = [](const rusage &usage) {
        return double(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
               double(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) * 1e-6;
    };
    QFile file(path);
    const qint64 written =
        file.open(QIODevice::ReadOnly) ? file.size() / (2 * frame(1).size() + 1) : 0;
    std::printf("record of %d frames at %d/s: %lld written, %.2f of a core (limit 0.5)\n",
                seconds * kRate, kRate, static_cast<long long>(written),
                (busy(after) - busy(before)) / seconds);
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    const QStringList words = application.arguments();
    const int frames = words.size() > 1 ? words.at(1).toInt() : 1000000;
    const int seconds = words.size() > 2 ? words.at(2).toInt() : 60;
    measureOneFrame();
    measureDecode(frames);
    measureReplay(33, seconds, 1);
    measureReplay(1000, seconds, 1);
    measureReplay(33, seconds, 10);
    measureBridge();
    measureRecord(seconds);
}
