// The picture of a simulated pod on the program's video window: what a press of the play button,
// a second of pictures and a single picture take, beside the ffmpeg command (the press) and a bare
// thread with a plain widget on the same stream.
// Usage: bench_video [SECONDS [PRESSES]]

#include "bench/baredecoder.h"
#include "bench/barescreen.h"
#include "bench/streamplayer.h"

#include <QProcess>

#include <cstdio>

namespace {

constexpr int kDelayRounds = 3;
constexpr int kShareRounds = 5;
constexpr int kSettlingMs = 1000; ///< what was sent during the opening is decoded in a burst

double millisecondsSince(qint64 start, qint64 end)
{
    return double(end - start) * 1e-6;
}

/// Milliseconds from the press to the first picture.
double pressOnce(StreamPlayer &player)
{
    const qint64 start = now();
    player.play();
    const double time = millisecondsSince(start, player.watch().awaitPicture());
    player.stop();
    return time;
}

/// Milliseconds from the command's start to the first bytes of its first picture.
double commandOnce(const QString &url)
{
    const QString arguments =
        QStringLiteral("-v quiet -nostdin -filter_threads 1 -threads 1 -rtsp_transport tcp "
                       "-fflags nobuffer -probesize 512000 -analyzeduration 5000000 "
                       "-fpsprobesize 0 -i %1 -sws_flags bicubic -pix_fmt bgra -frames:v 1 "
                       "-f rawvideo -");
    QProcess command;
    const qint64 start = now();
    command.start("ffmpeg", arguments.arg(url).split(QLatin1Char(' ')));
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

/// What a plain program takes for the same pictures: a bare thread, and a plain widget.
class BarePlayer
{
public:
    BarePlayer(const QString &url, const QSize &size) : m_decoder(url)
    {
        m_screen.setFixedSize(size);
        m_screen.show();
        m_watch.follow(&m_screen);
        QObject::connect(&m_decoder, &BareDecoder::decoded, &m_screen, &BareScreen::take);
        m_decoder.start();
    }

    PaintWatch &watch() { return m_watch; }

private:
    PaintWatch m_watch;
    BareDecoder m_decoder;
    BareScreen m_screen; // goes first: it shows pixels of the decoder
};

/// What playing has taken.
struct Share
{
    std::vector<double> perPicture; ///< milliseconds of the processor in each round
    double seconds = 0;             ///< of the processor in all rounds
    quint32 pictures = 0;
    int paints = 0;
    int most = 0; ///< paints in a second
};

void addRound(Share &share, PaintWatch &watch, int duration)
{
    watch.awaitPicture();
    turnEventLoop(kSettlingMs);
    const auto from = watch.stamp();
    const int paintsStart = watch.paints();
    const double start = seconds(CLOCK_PROCESS_CPUTIME_ID);
    for (int second = 0; second < duration; ++second) {
        const int before = watch.paints();
        turnEventLoop(1000);
        share.most = qMax(share.most, watch.paints() - before);
    }
    const double time = seconds(CLOCK_PROCESS_CPUTIME_ID) - start;
    const auto to = watch.stamp();
    if (!from || !to || to->number == from->number)
        qFatal("the stream has ended");
    const quint32 pictures = to->number - from->number;
    share.perPicture.push_back(1000 * time / pictures);
    share.seconds += time;
    share.pictures += pictures;
    share.paints += watch.paints() - paintsStart;
}

void printShare(const char *who, const Share &share)
{
    std::printf("    %s: %.2f s, %u pictures, %d paints; %.3f ms a picture, rounds", who,
                share.seconds, share.pictures, share.paints, median(share.perPicture));
    for (const double round : share.perPicture)
        std::printf(" %.3f", round);
    std::printf("\n");
}

/// In turn, so that neither disturbs the other.
void reportProcessor(StreamPlayer &player, int duration)
{
    const int roundSeconds = qMax(1, duration / kShareRounds);
    Share own, bare;
    QSize size;
    for (int round = 0; round < kShareRounds; ++round) {
        player.play();
        size = player.surface()->size();
        addRound(own, player.watch(), roundSeconds);
        player.stop();
        addRound(bare, BarePlayer(player.url(), size).watch(), roundSeconds);
        StreamPlayer::awaitServer();
    }
    const double ratio = median(own.perPicture) / median(bare.perPicture);
    std::printf("processor: %.2f x a bare thread (limit 1.1), %d x %d pixels\n", ratio,
                size.width(), size.height());
    printShare("program", own);
    printShare("bare thread", bare);
    std::printf("paints: %.1f in a second, in the busiest %d (limit 20)\n",
                double(own.paints) / (kShareRounds * roundSeconds), own.most);
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

void reportDelay(StreamPlayer &player, int duration)
{
    const int milliseconds = duration * 1000 / (2 * kDelayRounds);
    std::vector<double> own, bare;
    for (int round = 0; round < kDelayRounds; ++round) {
        player.play();
        const QSize size = player.surface()->size();
        collectDelays(player.watch(), milliseconds, own);
        player.stop();
        collectDelays(BarePlayer(player.url(), size).watch(), milliseconds, bare);
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
    const int presses = qMax(1, argc > 2 ? QByteArray(argv[2]).toInt() : 15);

    PodProcess pod({"--rtsp", "0", "--rtsp-stamp"});
    StreamPlayer player(pod);
    reportFirstPicture(player, presses);
    reportProcessor(player, duration);
    reportDelay(player, duration);
}
