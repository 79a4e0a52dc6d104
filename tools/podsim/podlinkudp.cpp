#include "tools/podsim/podlinkudp.h"

#include "tools/podsim/podchannel.h"

#include <QNetworkDatagram>

#include <algorithm>

namespace podsim {

namespace {

constexpr int kMostPeers = 16;

/// The datagrams of one host, whatever port they come from: a bench may take a new one each time.
class UdpChannel : public PodChannel
{
public:
    UdpChannel(QUdpSocket *socket, const QHostAddress &address, quint16 replyPort)
        : PodChannel(socket), m_socket(socket), m_address(address), m_replyPort(replyPort),
          m_name(QStringLiteral("udp ") + address.toString())
    {
    }

    QString name() const override { return m_name; }

    void send(const QByteArray &bytes) override
    {
        m_socket->writeDatagram(bytes, m_address, m_replyPort);
    }

    qint64 unsent() const override { return 0; }

private:
    QUdpSocket *m_socket;
    QHostAddress m_address;
    quint16 m_replyPort;
    QString m_name;
};

} // namespace

QString endpoint(const QHostAddress &address, quint16 port)
{
    const QString form = address.protocol() == QAbstractSocket::IPv6Protocol
                             ? QStringLiteral("[%1]:%2")
                             : QStringLiteral("%1:%2");
    return form.arg(address.toString()).arg(port);
}

PodLinkUdp::PodLinkUdp(const QHostAddress &address, quint16 port, quint16 replyPort,
                       QObject *parent)
    : PodLink(parent), m_address(address), m_port(port), m_replyPort(replyPort)
{
    connect(&m_socket, &QUdpSocket::readyRead, this, &PodLinkUdp::readDatagrams);
}

QString PodLinkUdp::open()
{
    if (m_socket.bind(m_address, m_port, QAbstractSocket::DontShareAddress))
        return {};
    return QStringLiteral("cannot listen on udp %1: %2")
        .arg(endpoint(m_address, m_port), m_socket.errorString());
}

QString PodLinkUdp::where() const
{
    return QStringLiteral("udp %1, answering to port %2")
        .arg(endpoint(m_socket.localAddress(), m_socket.localPort()))
        .arg(m_replyPort);
}

void PodLinkUdp::readDatagrams()
{
    while (m_socket.hasPendingDatagrams()) {
        const QNetworkDatagram datagram = m_socket.receiveDatagram();
        if (!datagram.isValid())
            continue;
        emit channelOf(datagram.senderAddress())->received(datagram.data());
    }
}

PodChannel *PodLinkUdp::channelOf(const QHostAddress &address)
{
    const QString name = QStringLiteral("udp ") + address.toString();
    const auto known = std::find_if(m_channels.begin(), m_channels.end(),
                                    [&name](PodChannel *c) { return c->name() == name; });
    if (known != m_channels.end()) {
        std::rotate(known, known + 1, m_channels.end());
        return m_channels.last();
    }
    if (m_channels.size() == kMostPeers) {
        PodChannel *oldest = m_channels.takeFirst();
        emit oldest->closed();
        oldest->deleteLater();
    }
    m_channels.append(new UdpChannel(&m_socket, address, m_replyPort));
    emit opened(m_channels.last());
    return m_channels.last();
}

} // namespace podsim
