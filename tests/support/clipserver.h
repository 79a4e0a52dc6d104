#pragma once

#include <QFile>
#include <QProcess>
#include <QTcpServer>
#include <QTcpSocket>
#include <QThread>

#include <atomic>

/// Makes a clip of so many seconds that every build of libVLC can play, its picture after a sound
/// track or alone.
inline QByteArray makeClip(const QString &path, int seconds, bool hasSound = false)
{
    const QString picture = QStringLiteral("testsrc=size=320x180:rate=25:duration=%1").arg(seconds);
    const QString silence = QStringLiteral("anullsrc=duration=%1").arg(seconds);
    QStringList arguments = {"-v", "error", "-f", "lavfi", "-i", picture};
    if (hasSound)
        arguments << QStringList{"-f", "lavfi", "-i", silence, "-map", "1", "-map", "0"};
    if (QProcess::execute("ffmpeg", arguments + QStringList{"-c:v", "mpeg2video", path}) != 0)
        qFatal("no clip could be made");
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// A web server with one file for every request, in a separate thread: libVLC may hold the other
/// one up while it waits for an answer.
class ClipServer : public QThread
{
public:
    explicit ClipServer(const QByteArray &clip) : m_clip(clip)
    {
        start();
        while (!port)
            yieldCurrentThread();
    }
    ~ClipServer() override
    {
        quit();
        wait();
    }
    QString url() const { return QStringLiteral("http://127.0.0.1:%1/clip.ts").arg(port); }

    std::atomic<quint16> port{0};
    std::atomic<int> requests{0};
    std::atomic<bool> gone{false}; ///< closes every connection

protected:
    void run() override
    {
        QTcpServer server;
        if (!server.listen(QHostAddress(QHostAddress::LocalHost)))
            qFatal("no port for the web server");
        connect(&server, &QTcpServer::newConnection, &server, [&] {
            QTcpSocket *socket = server.nextPendingConnection();
            connect(socket, &QTcpSocket::readyRead, socket, [this, socket] { answer(socket); });
        });
        port = server.serverPort();
        exec();
    }

private:
    void answer(QTcpSocket *socket)
    {
        if (!socket->readAll().startsWith("GET"))
            return;
        ++requests;
        if (gone) {
            socket->disconnectFromHost();
            return;
        }
        socket->write("HTTP/1.0 200 OK\r\nContent-Type: video/mpeg\r\nContent-Length: " +
                      QByteArray::number(m_clip.size()) + "\r\n\r\n" + m_clip);
        socket->disconnectFromHost();
    }

    const QByteArray m_clip;
};
