// What reconnections of the video stream leave behind: resident memory, threads and open files
// after 20 and after 200 of them.

#include "bench/streamplayer.h"

#include <QSet>

#include <cstdio>

namespace {

constexpr int kEarly = 20;
constexpr int kLate = 200;

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
    player.awaitPicture(podsim::stampClock());
}

qint64 report(int reconnections)
{
    const qint64 resident = residentBytes();
    std::printf("after %3d reconnections: %.1f MB resident, %d threads, %d open files\n",
                reconnections, double(resident) * 1e-6, entriesOf("/proc/self/task").size(),
                entriesOf("/proc/self/fd").size());
    return resident;
}

} // namespace

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    PodProcess pod({"--rtsp", "0", "--rtsp-stamp", "--control"});
    StreamPlayer player(pod);
    player.play();
    player.awaitPicture();
    report(0);
    qint64 early = 0;
    for (int count = 1; count <= kLate; ++count) {
        reconnect(pod, player);
        if (count == kEarly)
            early = report(count);
    }
    const qint64 late = report(kLate);
    std::printf("growth from %d to %d: %.1f %% (limit 10)\n", kEarly, kLate,
                100.0 * double(late - early) / double(early));
}
