#include "tools/tour/podrun.h"

#include "tools/tour/operatorhand.h"

#include <QHostAddress>
#include <QRegularExpression>
#include <QTcpServer>
#include <QUdpSocket>

#ifdef Q_OS_LINUX
#include <sys/prctl.h>

#include <csignal>
#endif

namespace tour {

namespace {

constexpr quint16 kTcpPort = 2332;
constexpr quint16 kUdpPort = 2337;
constexpr quint16 kReplyPort = 2338;
constexpr quint16 kStreamPort = 8554;
constexpr int kEndMs = 10000;

/// The port if it is free, else 0, which stands for any.
quint16 ifFreeForTcp(quint16 port)
{
    QTcpServer probe;
    return probe.listen(QHostAddress::LocalHost, port) ? port : quint16(0);
}

quint16 ifFreeForUdp(quint16 port)
{
    QUdpSocket probe;
    return probe.bind(QHostAddress::Any, port) ? port : quint16(0);
}

quint16 freeUdpPort()
{
    QUdpSocket probe;
    probe.bind(QHostAddress::Any, ifFreeForUdp(kReplyPort));
    return probe.localPort();
}

} // namespace

void PodRun::Process::setupChildProcess()
{
#ifdef Q_OS_LINUX
    ::prctl(PR_SET_PDEATHSIG, SIGTERM);
#endif
}

PodRun::PodRun(const PodChoice &choice) : m_log(choice.log), m_replyPort(kReplyPort)
{
    if (choice.log.isEmpty())
        start(choice);
    else if (!m_log.open(QIODevice::ReadOnly))
        throw TourFailure(QStringLiteral("%1: %2").arg(choice.log, m_log.errorString()));
    m_tcpPort = listeningPort(QStringLiteral("tcp"));
    m_udpPort = listeningPort(QStringLiteral("udp"));
    if (choice.hasStream)
        m_streamPort = listeningPort(QStringLiteral("rtsp"));
}

void PodRun::start(const PodChoice &choice)
{
    m_replyPort = freeUdpPort();
    QStringList arguments{QStringLiteral("--tcp"),       QString::number(ifFreeForTcp(kTcpPort)),
                          QStringLiteral("--udp"),       QString::number(ifFreeForUdp(kUdpPort)),
                          QStringLiteral("--udp-reply"), QString::number(m_replyPort)};
    if (choice.hasStream)
        arguments << QStringLiteral("--rtsp") << QString::number(ifFreeForTcp(kStreamPort));
    m_process.setProcessChannelMode(QProcess::MergedChannels);
    m_process.start(choice.program, arguments);
    if (!m_process.waitForStarted())
        throw TourFailure(QStringLiteral("%1: %2").arg(choice.program, m_process.errorString()));
}

QString PodRun::streamAddress() const
{
    return QStringLiteral("rtsp://127.0.0.1:%1/pod").arg(m_streamPort);
}

PodRun::~PodRun()
{
    stop();
}

const QString &PodRun::output()
{
    m_output += QString::fromLocal8Bit(m_log.isOpen() ? m_log.readAll() : m_process.readAll());
    return m_output;
}

int PodRun::stop()
{
    m_process.terminate();
    if (m_process.state() != QProcess::NotRunning && !m_process.waitForFinished(kEndMs))
        m_process.kill();
    return m_process.exitStatus() == QProcess::NormalExit ? m_process.exitCode() : -1;
}

quint16 PodRun::listeningPort(const QString &kind)
{
    const QRegularExpression line(QStringLiteral("listening on %1 [0-9.]+:([0-9]+)").arg(kind));
    await(QStringLiteral("the pod listens on ") + kind, [&] {
        return output().contains(line) ||
               (!m_log.isOpen() && m_process.state() == QProcess::NotRunning);
    });
    const QRegularExpressionMatch match = line.match(output());
    if (!match.hasMatch())
        throw TourFailure(QStringLiteral("the pod doesn't run: ") + m_output.trimmed());
    return match.captured(1).toUShort();
}

} // namespace tour
