#pragma once

#include "tests/support/toolrun.h"

#include <QDeadlineTimer>
#include <QTcpServer>
#include <QTcpSocket>
#include <QUdpSocket>

// The real nacelle-wire, run by a test, and what its tests have in common.

/// Windows has no pseudo-terminals to stand for a serial line.
#ifdef Q_OS_WIN
constexpr bool kHasSerial = false;
#else
constexpr bool kHasSerial = true;
#endif

/// The real program, under way.
class Wire : public ToolRun
{
public:
    explicit Wire(const QStringList &arguments, const QByteArray &input = {}, bool isOpen = false)
        : ToolRun(QStringLiteral(WIRE_PATH), arguments, input, isOpen)
    {
    }
};

inline Ended run(const QStringList &arguments, const QByteArray &input = {})
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
