#pragma once

#include "bench/paintwatch.h"
#include "foundation/QGlobal.h"
#include "tests/podsim/podprocess.h"
#include "tests/support/videobench.h"

#include <QDir>

/// The program's video window, playing the stream of a simulated pod with FFmpeg.
class StreamPlayer
{
public:
    explicit StreamPlayer(PodProcess &pod)
        : m_url(QStringLiteral("rtsp://127.0.0.1:%1/pod").arg(pod.port(QStringLiteral("rtsp"))))
    {
        QGlobal::instance()->ffmpegEngine = true;
        m_bench.part<QLineEdit>("lineEdit")->setText(m_url);
    }

    const QString &url() const { return m_url; }
    PaintWatch &watch() { return m_watch; }
    QWidget *surface() { return m_bench.surface(); }

    /// Presses the play button. There must be no surface yet.
    void play()
    {
        m_bench.press("pushButton_Refresh");
        m_watch.follow(surface());
    }

    /// Takes the surface away, and waits until its thread has ended.
    void stop()
    {
        delete surface();
        while (isDecoding())
            turnEventLoop(5);
        awaitServer();
    }

    /// Gives the server time to put its last client's stream away: the next one is to get a new.
    static void awaitServer() { turnEventLoop(500); }

private:
    static bool isDecoding()
    {
        const QDir tasks(QStringLiteral("/proc/self/task"));
        for (const QString &task : tasks.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
            QFile name(tasks.filePath(task) + QStringLiteral("/comm"));
            if (name.open(QIODevice::ReadOnly) && name.readAll() == "VideoCodec\n")
                return true;
        }
        return false;
    }

    VideoBench m_bench;
    PaintWatch m_watch;
    const QString m_url;
};
