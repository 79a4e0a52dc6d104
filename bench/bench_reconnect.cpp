// What reconnections of the video stream leave behind: resident memory, threads and open files
// after 20 and after 200 of them with FFmpeg; the same 10 and 150 seconds after libVLC has lost its
// stream for good, with its attempts; and after 200,000 openings of a picture as a stream. Usage:
// bench_reconnect [ffmpeg|libvlc|picture]

#include "bench/streamplayer.h"
#include "tests/support/clipserver.h"
#include "tests/support/countingcodec.h"

#include <QSet>
#include <QTemporaryDir>

#include <cstdio>

namespace {

constexpr int kEarly = 20;
constexpr int kLate = 200;
constexpr int kEarlyLossSeconds = 10;
constexpr int kLateLossSeconds = 150;
constexpr int kOpenings = 200000;

QStringList entriesOf(const char *folder)
{
    return QDir(QString::fromLatin1(folder))
        .entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot);
}

/// The sockets of this process by the system's own names for them, which it doesn't use again.
QSet<QString> sockets()
{
    QSet<QString> names;
    for (const QString &entry : entriesOf("/proc/self/fd")) {
        const QString name = QFile::symLinkTarget(QStringLiteral("/proc/self/fd/") + entry);
        if (name.contains(QLatin1String("socket:")))
            names.insert(name);
    }
    return names;
}

/// Has the server leave its client, and waits for a picture of the next connection.
void reconnect(PodProcess &pod, StreamPlayer &player)
{
    const QSet<QString> before = sockets();
    pod.write(QStringLiteral("drop"));
    while (before.contains(sockets()))
        turnEventLoop(5);
    player.watch().awaitPicture(podsim::stampClock());
}

qint64 report(int count, const char *what)
{
    const qint64 resident = residentBytes();
    std::printf("after %3d %s: %.1f MB resident, %d threads, %d open files\n", count, what,
                double(resident) * 1e-6, entriesOf("/proc/self/task").size(),
                entriesOf("/proc/self/fd").size());
    return resident;
}

void reconnectAgainAndAgain()
{
    PodProcess pod({"--rtsp", "0", "--rtsp-stamp", "--control"});
    StreamPlayer player(pod);
    player.play();
    player.watch().awaitPicture();
    report(0, "reconnections");
    qint64 early = 0;
    for (int count = 1; count <= kLate; ++count) {
        reconnect(pod, player);
        if (count == kEarly)
            early = report(count, "reconnections");
    }
    const qint64 late = report(kLate, "reconnections");
    std::printf("growth from %d to %d: %.1f %% (limit 10)\n", kEarly, kLate,
                100.0 * double(late - early) / double(early));
}

/// Two rows that must not differ in threads and files.
void loseLibVlcStream(const QString &folder)
{
    ClipServer server(makeClip(folder + QStringLiteral("/clip.ts"), 1));
    QGlobal::instance()->ffmpegEngine = false;
    VideoBench bench;
    bench.part<QLineEdit>("lineEdit")->setText(server.url());
    bench.press("pushButton_Refresh");
    while (!server.requests)
        turnEventLoop(5);
    server.gone = true;
    int attempts = 0;
    QObject::connect(bench.surface(), &VLCWidget::refresh, qApp, [&] { ++attempts; });
    int passed = 0;
    for (const int second : {kEarlyLossSeconds, kLateLossSeconds}) {
        turnEventLoop((second - passed) * 1000);
        passed = second;
        report(second, "s without libVLC's stream");
        std::printf("    %d attempts (at most one a second)\n", attempts);
    }
    delete bench.surface();
}

void openPicture(const QString &folder)
{
    const QString picture = folder + QStringLiteral("/picture.png");
    QImage(16, 16, QImage::Format_RGB32).save(picture);
    CountingCodec codec(picture, QStringLiteral("tcp"), true);
    codec.startDecoding();
    for (const int count : {kOpenings / 10, kOpenings}) {
        while (codec.openings < count)
            turnEventLoop(5);
        report(count, "openings of a picture");
    }
    codec.requestStop();
    codec.wait();
}

} // namespace

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    const QTemporaryDir folder;
    const QByteArray wanted = argc > 1 ? argv[1] : "";
    if (wanted.isEmpty() || wanted == "ffmpeg")
        reconnectAgainAndAgain();
    if (wanted.isEmpty() || wanted == "libvlc")
        loseLibVlcStream(folder.path());
    if (wanted.isEmpty() || wanted == "picture")
        openPicture(folder.path());
}
