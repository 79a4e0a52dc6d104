// The picture of a simulated pod on the program's video window: what a press of the play button,
// a second of pictures and a single picture take, beside the ffmpeg command and a bare thread with
// a plain widget on the same stream.
// Usage: bench_video [SECONDS [PRESSES]]

#include "bench/baredecoder.h"
#include "bench/barescreen.h"
#include "bench/streamplayer.h"

#include <QProcess>

#include <cstdio>

namespace {

constexpr int kDelayRounds = 3;
constexpr int kSettlingMs = 5000; ///< of the command, which looks at a stream before it decodes

/// The command on a stream: its own decoder in one thread, pictures as the program makes them.
QStringList ffmpegArguments(const QStringList &input, const QString &url, const QStringList &output)
{
    return QStringList{"-v", "quiet",           "-nostdin", "-filter_threads", "1", "-threads",
                       "1",  "-rtsp_transport", "tcp"} +
           input + QStringList{"-i", url, "-sws_flags", "bicubic", "-pix_fmt", "bgra"} + output;
}

double millisecondsSince(qint64 start, qint64 end)
{
    return double(end - start) * 1e-6;
}

/// Milliseconds from the press to the first picture.
double pressOnce(StreamPlayer &player)
{
    const qint64 start = now();
    player.play();
    const double time = millisecondsSince(start, player.awaitPicture());
    player.stop();
    return time;
}

/// Milliseconds from the command's start to the first bytes of its first picture.
double commandOnce(const QString &url)
{
    const QStringList options = {"-fflags",          "nobuffer", "-probesize",    "512000",
                                 "-analyzeduration", "5000000",  "-fpsprobesize", "0"};
    QProcess command;
    const qint64 start = now();
    command.start("ffmpeg",
                  ffmpegArguments(options, url, {"-frames:v", "1", "-f", "rawvideo", "-"}));
    if (!command.waitForReadyRead())
        qFatal("the ffmpeg command gives no picture");
    const double time = millisecondsSince(start, now());
    command.waitForFinished();
    StreamPlayer::awaitServer();
    return time;
}

void reportFirstPicture(StreamPlayer &player, int rounds)
{
    const double first = pressOnce(player);
    std::vector<double> presses, commands;
    for (int round = 0; round < rounds; ++round) {
        commands.push_back(commandOnce(player.url()));
        presses.push_back(pressOnce(player));
    }
    std::printf("press to first picture: %.0f ms, ffmpeg %.0f ms, %.2f x (limit 1.25); the first "
                "press %.0f ms\n",
                median(presses), median(commands), median(presses) / median(commands), first);
}

/// Both play the stream at once, so that they have the same pictures under the same load.
void reportProcessor(StreamPlayer &player, int duration)
{
    player.play();
    player.awaitPicture();
    QProcess command;
    command.start("ffmpeg", ffmpegArguments({}, player.url(), {"-f", "null", "-"}));
    clockid_t commandClock = 0;
    if (!command.waitForStarted() || clock_getcpuclockid(pid_t(command.processId()), &commandClock))
        qFatal("the ffmpeg command doesn't start");
    turnEventLoop(kSettlingMs);

    const auto from = player.watch().stamp();
    const double ownStart = seconds(CLOCK_PROCESS_CPUTIME_ID);
    const double commandStart = seconds(commandClock);
    const int paintsStart = player.watch().paints();
    int most = 0;
    for (int second = 0; second < duration; ++second) {
        const int before = player.watch().paints();
        turnEventLoop(1000);
        most = qMax(most, player.watch().paints() - before);
    }
    const double own = seconds(CLOCK_PROCESS_CPUTIME_ID) - ownStart;
    const double other = seconds(commandClock) - commandStart;
    const int paints = player.watch().paints() - paintsStart;
    const auto to = player.watch().stamp();
    if (command.state() != QProcess::Running || !from || !to)
        qFatal("the stream has ended");
    std::printf(
        "processor: %.2f s in %d s, ffmpeg %.2f s, %.2f x (limit 1.35); %u pictures on %d x "
        "%d pixels\n",
        own, duration, other, own / other, to->number - from->number, player.surface()->width(),
        player.surface()->height());
    std::printf("paints: %.1f in a second, in the busiest %d (limit 20)\n",
                double(paints) / duration, most);
    player.stop();
    command.kill();
    command.waitForFinished();
}

/// Adds the milliseconds from each picture's sending to its painting. Reading a picture back costs
/// time, after the moment that counts, and the same for whoever is watched.
void collectDelays(PaintWatch &watch, int milliseconds, std::vector<double> &delays)
{
    watch.painted = [&] {
        const quint32 moment = podsim::stampClock();
        if (const auto stamp = watch.stamp())
            delays.push_back(moment - stamp->milliseconds);
    };
    turnEventLoop(milliseconds);
    watch.painted = nullptr;
}

void collectBareDelays(const QString &url, const QSize &size, int milliseconds,
                       std::vector<double> &delays)
{
    BareScreen screen;
    PaintWatch watch;
    BareDecoder decoder(url);
    screen.setFixedSize(size);
    screen.show();
    watch.follow(&screen);
    QObject::connect(&decoder, &BareDecoder::decoded, &screen, &BareScreen::take);
    decoder.start();
    collectDelays(watch, milliseconds, delays);
}

void reportDelay(StreamPlayer &player, int duration)
{
    const int milliseconds = duration * 1000 / (2 * kDelayRounds);
    std::vector<double> own, bare;
    for (int round = 0; round < kDelayRounds; ++round) {
        player.play();
        const QSize size = player.surface()->size();
        collectDelays(player.watch(), milliseconds, own);
        player.stop();
        collectBareDelays(player.url(), size, milliseconds, bare);
        StreamPlayer::awaitServer();
    }
    if (own.empty() || bare.empty())
        qFatal("no picture came");
    std::printf("sending to painting: %.0f ms of %d pictures, bare thread %.0f ms of %d, %.2f x "
                "(limit 1.3)\n",
                median(own), int(own.size()), median(bare), int(bare.size()),
                median(own) / median(bare));
}

} // namespace

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    const int duration = argc > 1 ? QByteArray(argv[1]).toInt() : 60;
    const int presses = argc > 2 ? QByteArray(argv[2]).toInt() : 15;

    PodProcess pod({"--rtsp", "0", "--rtsp-stamp"});
    StreamPlayer player(pod);
    reportFirstPicture(player, presses);
    reportProcessor(player, duration);
    reportDelay(player, duration);
}
