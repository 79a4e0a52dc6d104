#pragma once

#include "tests/podsim/podprocess.h"

#include <QDeadlineTimer>
#include <QTcpServer>
#include <QTcpSocket>
#include <QUdpSocket>

#include <csignal>

// The real nacelle-wire, run by a test, and what its tests have in common.

constexpr int kLimitMs = 20000;

/// Windows has no pseudo-terminals to stand for a serial line.
#ifdef Q_OS_WIN
constexpr bool kHasSerial = false;
#else
constexpr bool kHasSerial = true;
#endif

struct Run
{
    int code = -1;
    QByteArray out;
    QByteArray error;
};

/// The real program, under way.
class Wire
{
public:
    explicit Wire(const QStringList &arguments, const QByteArray &input = {}, bool isOpen = false)
    {
        m_process.start(QStringLiteral(WIRE_PATH), arguments);
        m_process.write(input);
        m_process.waitForStarted(kLimitMs);
        while (m_process.bytesToWrite() > 0 && m_process.waitForBytesWritten(kLimitMs)) {
        }
        if (!isOpen)
            m_process.closeWriteChannel();
    }

    Run end()
    {
        if (m_process.state() != QProcess::NotRunning && !m_process.waitForFinished(kLimitMs))
            m_process.kill();
        const int code = m_process.exitStatus() == QProcess::NormalExit ? m_process.exitCode() : -1;
        return {code, m_process.readAllStandardOutput(), m_process.readAllStandardError()};
    }

    Run stop(int signal = SIGTERM)
    {
        sendSignal(m_process, signal);
        return end();
    }

    /// Without a chance to write anything more.
    Run kill()
    {
        m_process.kill();
        return end();
    }

    /// True once standard error has the text.
    bool says(const char *text)
    {
        const QDeadlineTimer limit(kLimitMs);
        m_process.setReadChannel(QProcess::StandardError);
        while (!m_said.contains(text) && !limit.hasExpired()) {
            m_process.waitForReadyRead(100);
            m_said += m_process.readAllStandardError();
        }
        return m_said.contains(text);
    }

    bool hasEnded(int limitMs)
    {
        return m_process.state() == QProcess::NotRunning || m_process.waitForFinished(limitMs);
    }

private:
    QProcess m_process;
    QByteArray m_said;
};

inline Run run(const QStringList &arguments, const QByteArray &input = {})
{
    return Wire(arguments, input).end();
}

/// Tries again as long as the link isn't there yet.
inline bool succeeds(const QStringList &arguments, const QByteArray &input = {})
{
    const QDeadlineTimer limit(kLimitMs);
    while (run(arguments, input).code != 0) {
        if (limit.hasExpired())
            return false;
    }
    return true;
}

inline quint16 freePort(bool isUdp = false)
{
    QTcpServer server;
    QUdpSocket socket;
    if (isUdp)
        return socket.bind(QHostAddress::LocalHost) ? socket.localPort() : quint16(0);
    return server.listen(QHostAddress::LocalHost) ? server.serverPort() : quint16(0);
}

inline QString tcpTo(quint16 port)
{
    return QStringLiteral("tcp://127.0.0.1:%1").arg(port);
}

/// Connected to a program that may only just begin to listen.
inline bool joins(QTcpSocket &socket, quint16 port)
{
    const QDeadlineTimer limit(kLimitMs);
    do {
        socket.abort();
        socket.connectToHost(QStringLiteral("127.0.0.1"), port);
    } while (!socket.waitForConnected(1000) && !limit.hasExpired());
    return socket.state() == QAbstractSocket::ConnectedState;
}

inline QByteArray command(const char *word)
{
    return run({"compose", QStringLiteral("command=") + word}).out;
}

/// Third words of the line form, which are the frames, of one side.
inline QByteArray framesOf(const QByteArray &lines, const char *direction)
{
    QByteArray frames;
    for (const QByteArray &line : lines.split('\n'))
        if (line.split(' ').value(1) == direction)
            frames += line.split(' ').value(2) + '\n';
    return frames;
}
