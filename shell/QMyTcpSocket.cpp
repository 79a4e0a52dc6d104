#include "shell/QMyTcpSocket.h"

#include "foundation/poolsleep.h"

#include "foundation/QGlobal.h"

#include <QHostAddress>
#include <QNetworkConfigurationManager>
#include <QNetworkSession>
#include <QSharedPointer>
#include <QTcpSocket>
#include <QtConcurrent>

namespace {

constexpr int kConnectTimeoutMs = 3000;
// The socket tries every address twice under the session's limit, and a machine without an active
// network configuration has no limit at all. The notice must come within three seconds all the
// same, so this is a little less than that.
constexpr int kConnectGuardMs = 2900;
constexpr unsigned long kRetryDelayMs = 2000;
// Read at a time: what waits is one chunk, up to the size of the largest datagram, which holds any
// frame whose length fits the field. A chunk may become a frame as it is, to be shown at once:
// without a bound a peer that floods the link makes chunks of megabytes, and the window stands
// still over each.
constexpr qint64 kReadSize = 64 * 1024;
// After a chunk that only a flood makes, the window has its turn: for longer than the log's view
// waits before it lays a long entry out, else that and the next chunk would hold it together.
constexpr int kFloodChunk = 8 * 1024;
constexpr int kFloodRestMs = 40;

} // namespace

void QMyTcpSocket::createSocket(const QString &ip, int port, bool isFrist)
{
    m_ip = ip;
    m_port = port;
    m_isFrist = isFrist;
    m_rest.setSingleShot(true);
    m_rest.setInterval(kFloodRestMs);
    connect(&m_rest, &QTimer::timeout, this, &QMyTcpSocket::endRest);
    m_socket = new QTcpSocket(this);
    m_socket->setReadBufferSize(kReadSize);
    limitConnectTime();
    connect(m_socket, &QTcpSocket::errorOccurred, this, &QMyTcpSocket::onError);
    connect(m_socket, &QTcpSocket::readyRead, this, &QMyTcpSocket::onReadyRead);
    connect(m_socket, &QTcpSocket::connected, this, &QMyTcpSocket::onConnected);
    connect(m_socket, &QTcpSocket::disconnected, this, &QMyTcpSocket::onDisconnected);
    QTimer::singleShot(kConnectGuardMs, Qt::PreciseTimer, this, &QMyTcpSocket::onConnectTimeout);
    m_socket->connectToHost(ip, quint16(port), QIODevice::ReadWrite,
                            QAbstractSocket::AnyIPProtocol);
}

void QMyTcpSocket::limitConnectTime()
{
    QT_WARNING_PUSH
    QT_WARNING_DISABLE_DEPRECATED
    QNetworkConfiguration configuration = QNetworkConfigurationManager().defaultConfiguration();
    configuration.setConnectTimeout(kConnectTimeoutMs);
    const QSharedPointer<QNetworkSession> session(new QNetworkSession(configuration));
    m_socket->setProperty("_q_networksession", QVariant::fromValue(session));
    QT_WARNING_POP
}

void QMyTcpSocket::onConnected()
{
    // Else a frame waits until the one before it is acknowledged, which some pods put off by 40 ms.
    m_socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
    emit signals_ConnectSuccess(m_socket);
    m_isFrist = false;
}

void QMyTcpSocket::onReadyRead()
{
    if (m_rest.isActive())
        return;
    const QString address = m_socket->peerAddress().toString();
    const QByteArray chunk = m_socket->readAll();
    emit signals_ReceiveTcpData(chunk, address, 1);
    // After it, so that other timers that have become due come first.
    if (chunk.size() > kFloodChunk)
        m_rest.start();
}

/// Takes what came in the meantime, of which the socket won't speak again.
void QMyTcpSocket::endRest()
{
    m_rest.stop();
    if (m_socket->bytesAvailable() > 0)
        onReadyRead();
}

void QMyTcpSocket::onError()
{
    if (m_isFrist) {
        emit signals_ConnectFail(m_ip);
        return;
    }
    if (m_handled)
        return;
    m_handled = true;
    endRest(); // what came before the loss
    m_socket->close();
    QtConcurrent::run([this, ip = m_ip, port = m_port] {
        sleepInPool(kRetryDelayMs);
        emit signals_CreateMyTcpSocket(ip, port, false);
    });
}

void QMyTcpSocket::onDisconnected()
{
    if (m_handled)
        return;
    m_handled = true;
    if (QGlobal::instance()->reconnectAddresses.contains(m_ip)) {
        m_socket->close();
        emit signals_CreateMyTcpSocket(m_ip, m_port, false);
    }
}

void QMyTcpSocket::onConnectTimeout()
{
    const auto state = m_socket->state();
    if (state != QAbstractSocket::HostLookupState && state != QAbstractSocket::ConnectingState)
        return;
    m_socket->abort();
    onError();
}
