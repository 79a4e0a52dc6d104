// What nacelle-wire does in bulk: a recording of a million frames as JSON lines, beside tshark on
// the same file where it is installed; one frame taken apart and put together, beside
// parseGcuFrame; and how late the frames of a replay are. bench_wire [FRAMES [SECONDS]]

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

#include <sys/resource.h>

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

void measureDecode(int frames)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("frames.pcapng"));
    const QString program =
        QCoreApplication::applicationDirPath() + QStringLiteral("/nacelle-wire");
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
    const QVector<Field> &fields = wire::fieldsOf(wire::FrameKind::Gcu);
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
            return left-- > 0;
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
}
