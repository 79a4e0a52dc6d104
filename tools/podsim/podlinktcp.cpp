#include "tools/podsim/podlinktcp.h"

#include "tools/podsim/podchannel.h"
#include "tools/podsim/podlinkudp.h"

#include <QTcpSocket>

namespace podsim {

namespace {

constexpr qint64 kReadBufferSize = 64 * 1024;

/// A TCP client; goes with its socket.
class TcpChannel : public PodChannel
{
public:
    explicit TcpChannel(QTcpSocket *socket)
        : PodChannel(socket), m_socket(socket),
          m_name(QStringLiteral("tcp ") + endpoint(socket->peerAddress(), socket->peerPort()))
    {
        socket->setReadBufferSize(kReadBufferSize);
        socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
        connect(socket, &QTcpSocket::readyRead, this,
                [this] { emit received(m_socket->readAll()); });
        connect(socket, &QTcpSocket::disconnected, this, &TcpChannel::finish);
    }

    QString name() const override { return m_name; }

    void send(const QByteArray &bytes) override
    {
        if (m_socket->state() != QAbstractSocket::ConnectedState)
            return;
        m_socket->write(bytes);
        m_socket->flush();
    }

    qint64 unsent() const override { return m_socket->bytesToWrite(); }

private:
    void finish()
    {
        emit closed();
        m_socket->deleteLater();
    }

    QTcpSocket *m_socket;
    QString m_name;
};

} // namespace

PodLinkTcp::PodLinkTcp(const QHostAddress &address, quint16 port, QObject *parent)
    : PodLink(parent), m_address(address), m_port(port)
{
    connect(&m_server, &QTcpServer::newConnection, this, &PodLinkTcp::takeClients);
}

QString PodLinkTcp::open()
{
    if (m_server.listen(m_address, m_port))
        return {};
    return QStringLiteral("cannot listen on tcp %1: %2")
        .arg(endpoint(m_address, m_port), m_server.errorString());
}

QString PodLinkTcp::where() const
{
    return QStringLiteral("tcp ") + endpoint(m_server.serverAddress(), m_server.serverPort());
}

void PodLinkTcp::takeClients()
{
    while (QTcpSocket *socket = m_server.nextPendingConnection()) {
        auto *channel = new TcpChannel(socket);
        emit opened(channel);
        if (socket->bytesAvailable() > 0)
            emit channel->received(socket->readAll());
    }
}

} // namespace podsim
