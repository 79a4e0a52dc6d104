#include "bench/soak/stage.h"

#include "bench/soak/readtap.h"
#include "tests/podsim/podprocess.h"

#include <QDeadlineTimer>
#include <QUdpSocket>

#include <algorithm>
#include <csignal>

namespace {

constexpr int kActMs = 700;

/// The window's datagrams leave from a fresh port each, and podsim takes each port for a peer with
/// faults counted from 1: this socket in between makes one peer of them.
class UdpRelay
{
public:
    explicit UdpRelay(quint16 podPort)
    {
        m_socket.bind(QHostAddress(QHostAddress::LocalHost));
        QObject::connect(&m_socket, &QUdpSocket::readyRead, [this, podPort] {
            while (m_socket.hasPendingDatagrams()) {
                QByteArray frame(int(m_socket.pendingDatagramSize()), '\0');
                m_socket.readDatagram(frame.data(), frame.size());
                m_socket.writeDatagram(frame, QHostAddress::LocalHost, podPort);
            }
        });
    }
    quint16 port() const { return m_socket.localPort(); }

private:
    QUdpSocket m_socket;
};

QString freeUdpPort()
{
    QUdpSocket probe;
    probe.bind(QHostAddress(QHostAddress::LocalHost));
    return QString::number(probe.localPort());
}

/// Options of podsim for a link; the other end of it is what `plug` asks for.
struct Connection
{
    Connection(Link link, const Fault &fault, const QString &folder)
        : m_link(link), m_reply(freeUdpPort()), m_path(folder + QStringLiteral("/pod")),
          m_pod(options(fault))
    {
        if (m_link == kUdp)
            m_relay = std::make_unique<UdpRelay>(m_pod.port(QStringLiteral("udp")));
        else if (m_link == kSerial)
            m_pod.awaitLine(m_path);
    }

    PodProcess &pod() { return m_pod; }

    bool plug(Bench &bench)
    {
        if (m_link == kTcp)
            return bench.plug(QStringLiteral("TCP Client"),
                              QString::number(m_pod.port(QStringLiteral("tcp"))));
        if (m_link == kUdp)
            return bench.plug(QStringLiteral("UDP"), QString::number(m_relay->port()), m_reply);
        return bench.plug(m_path);
    }

private:
    QStringList options(const Fault &fault) const
    {
        const QStringList links[] = {
            {"--tcp", "0"}, {"--udp", "0", "--udp-reply", m_reply}, {"--pty", m_path}};
        QStringList all = links[m_link];
        for (const char *word : {fault.option, fault.value}) {
            if (*word)
                all << QLatin1String(word);
        }
        return all;
    }

    Link m_link;
    QString m_reply;
    QString m_path;
    PodProcess m_pod;
    std::unique_ptr<UdpRelay> m_relay;
};

void takeSummary(const QString &output, StageResult &result)
{
    const QRegularExpression line(
        QStringLiteral("(\\d+) frames: .* (\\d+) broken frames, .* (\\d+) answers"));
    const QRegularExpressionMatch match = line.match(output);
    result.podFrames = match.captured(1).toInt();
    result.podBroken = match.captured(2).toInt();
    result.podAnswers = match.captured(3).toInt();
}

int share(int count, int every)
{
    return every > 0 ? count / every : 0;
}

/// `lateCost`: answers that late reads may have taken.
Losses lossesOf(const StageResult &result, const Fault &fault, int lateCost)
{
    const int spoilt = share(result.podAnswers, fault.spoilsEvery);
    const int madeWrong = share(result.podAnswers, fault.wrongEvery);
    return {result.traffic.sent - result.podFrames + result.podBroken,
            std::max(0, result.podAnswers - spoilt - result.traffic.good - lateCost),
            std::max(0, result.traffic.wrong - madeWrong - lateCost)};
}

} // namespace

StageResult &StageResult::operator+=(const StageResult &other)
{
    traffic.sent += other.traffic.sent;
    traffic.good += other.traffic.good;
    traffic.wrong += other.traffic.wrong;
    podFrames += other.podFrames;
    podBroken += other.podBroken;
    podAnswers += other.podAnswers;
    lateReads += other.lateReads;
    losses.sent += other.losses.sent;
    losses.answers += other.losses.answers;
    losses.wrong += other.losses.wrong;
    return *this;
}

StageResult runStage(Operator &console, Link link, const Fault &fault, int milliseconds,
                     const QString &folder)
{
    Connection connection(link, fault, folder);
    if (!connection.plug(console.bench()))
        qFatal("no connection over %s", kLinks[link]);
    StageResult result;
    const ReadTap tap(fault.piece);
    console.begin();
    const QDeadlineTimer end(milliseconds);
    while (!end.hasExpired()) {
        QTest::qWait(kActMs);
        console.act();
    }
    result.traffic = console.end();
    result.lateReads = tap.lateReads();
    console.bench().click("pushButton_Conn");
    connection.pod().stop(SIGTERM);
    takeSummary(connection.pod().output(), result);
    result.losses = lossesOf(result, fault, tap.cost());
    return result;
}
