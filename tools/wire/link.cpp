#include "tools/wire/link.h"

#include <QDeadlineTimer>
#include <QHostInfo>
#include <QNetworkProxy>
#include <QSerialPort>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>
#include <QUdpSocket>

namespace wire {

namespace {

constexpr int kConnectLimitMs = 3000;
constexpr int kPartingLimitMs = 3000; // who is stopped isn't to hang on a peer that doesn't read
constexpr qint64 kReadSize = 64 * 1024;
const QString kNoSuchHost = QStringLiteral("no such host");

void makeQuick(QTcpSocket *socket)
{
    // Else a frame waits until the one before it is acknowledged.
    socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
    socket->setReadBufferSize(kReadSize);
}

/// Disconnects once all has gone out: the bytes that haven't.
qint64 part(QTcpSocket &socket)
{
    qint64 left = socket.bytesToWrite();
    // Counted: of a connection that breaks the buffer is empty too.
    const auto counted = QObject::connect(&socket, &QTcpSocket::bytesWritten, &socket,
                                          [&left](qint64 count) { left -= count; });
    socket.disconnectFromHost();
    if (socket.state() == QAbstractSocket::ClosingState)
        socket.waitForDisconnected(kPartingLimitMs);
    QObject::disconnect(counted);
    return left;
}

QHostAddress resolved(const QString &host)
{
    const QHostAddress address(host);
    if (!address.isNull())
        return address;
    for (const QHostAddress &each : QHostInfo::fromName(host).addresses())
        if (each.protocol() == QAbstractSocket::IPv4Protocol)
            return each;
    return {};
}

/// A connection to a pod that listens.
class TcpLink : public Link
{
public:
    explicit TcpLink(const LinkAddress &address) : Link(address)
    {
        m_limit.setSingleShot(true);
        m_socket.setProxy(QNetworkProxy::NoProxy);
        connect(&m_limit, &QTimer::timeout, this, [this] {
            fail(QStringLiteral("can't be connected, no answer within %1 s")
                     .arg(kConnectLimitMs / 1000));
        });
        connect(&m_socket, &QTcpSocket::connected, this, [this] {
            m_limit.stop();
            makeQuick(&m_socket);
            emit opened();
        });
        connect(&m_socket, &QTcpSocket::readyRead, this, &TcpLink::readUnlessHeld);
        connect(&m_socket, &QTcpSocket::bytesWritten, this, &Link::written);
        connect(&m_socket, &QTcpSocket::errorOccurred, this,
                [this] { fail(m_socket.errorString()); });
    }

    void open() override
    {
        m_isGone = false;
        m_limit.start(kConnectLimitMs);
        m_socket.connectToHost(m_address.host, m_address.port);
    }

    bool send(const QByteArray &bytes) override
    {
        return m_socket.state() == QAbstractSocket::ConnectedState &&
               m_socket.write(bytes) == bytes.size() && (m_socket.flush() || true);
    }

    qint64 unsent() const override { return m_socket.bytesToWrite(); }

    qint64 close() override
    {
        m_isGone = true;
        return part(m_socket);
    }

private:
    void read() override
    {
        const QByteArray bytes = m_socket.readAll();
        if (!bytes.isEmpty())
            emit received(bytes);
    }

    void fail(const QString &reason)
    {
        if (m_isGone)
            return;
        m_isGone = true;
        m_limit.stop();
        read(); // what came last
        m_socket.abort();
        emit closed(failure(reason));
    }

    QTcpSocket m_socket;
    QTimer m_limit;
    bool m_isGone = false;
};

/// The pod's side of TCP. It serves one bench at a time, as a pod's line does: answers would reach
/// the wrong one, and two streams make no frames together.
class TcpListenLink : public Link
{
public:
    explicit TcpListenLink(const LinkAddress &address) : Link(address)
    {
        m_server.setProxy(QNetworkProxy::NoProxy);
        connect(&m_server, &QTcpServer::newConnection, this, [this] {
            while (QTcpSocket *socket = m_server.nextPendingConnection())
                take(socket);
        });
    }

    void open() override
    {
        const QHostAddress address = resolved(m_address.host);
        if (address.isNull()) // the server would listen on all interfaces
            emit closed(failure(kNoSuchHost));
        else if (!m_server.listen(address, m_address.port))
            emit closed(failure(m_server.errorString()));
        else
            emit ready();
    }

    bool send(const QByteArray &bytes) override
    {
        return m_client && m_client->write(bytes) == bytes.size() && (m_client->flush() || true);
    }

    qint64 unsent() const override { return m_client ? m_client->bytesToWrite() : 0; }

    qint64 close() override
    {
        m_server.close();
        return m_client ? part(*m_client) : 0;
    }

private:
    void read() override
    {
        if (!m_client || !m_client->isOpen())
            return;
        const QByteArray bytes = m_client->readAll();
        if (!bytes.isEmpty())
            emit received(bytes);
    }

    void take(QTcpSocket *socket)
    {
        if (m_client) {
            emit noticed(failure(QStringLiteral("refused %1, another one is connected")
                                     .arg(socket->peerAddress().toString())));
            socket->abort();
            socket->deleteLater();
            return;
        }
        makeQuick(socket);
        m_client = socket;
        connect(socket, &QTcpSocket::readyRead, this, &TcpListenLink::readUnlessHeld);
        connect(socket, &QTcpSocket::bytesWritten, this, &Link::written);
        connect(socket, &QTcpSocket::disconnected, this, [this, socket] {
            read(); // what came last
            m_client = nullptr;
            socket->deleteLater();
            emit left();
            emit written(); // what waited for it is gone
        });
        emit opened();
    }

    QTcpServer m_server;
    QTcpSocket *m_client = nullptr;
};

/// Datagrams: each leaves from a fresh port, answers are received on the local one.
class UdpLink : public Link
{
public:
    explicit UdpLink(const LinkAddress &address) : Link(address)
    {
        connect(&m_socket, &QUdpSocket::readyRead, this, &UdpLink::readUnlessHeld);
    }

    void open() override
    {
        m_host = resolved(m_address.host);
        if (m_host.isNull())
            emit closed(failure(kNoSuchHost));
        else if (!m_socket.bind(QHostAddress::AnyIPv4, m_address.local))
            emit closed(
                failure(QStringLiteral("port %1: ").arg(m_address.local) + m_socket.errorString()));
        else
            emit opened();
    }

    bool send(const QByteArray &bytes) override
    {
        return QUdpSocket().writeDatagram(bytes, m_host, m_address.port) == bytes.size();
    }

    qint64 close() override
    {
        m_socket.close();
        return 0;
    }

private:
    void read() override
    {
        while (m_socket.hasPendingDatagrams()) {
            QByteArray bytes(int(qMax<qint64>(0, m_socket.pendingDatagramSize())), '\0');
            // A refusal of what was sent before comes as a datagram that can't be read.
            if (m_socket.readDatagram(bytes.data(), bytes.size()) < 0)
                return;
            emit received(bytes);
        }
    }

    QUdpSocket m_socket;
    QHostAddress m_host;
};

/// The system's words for what befell a port, with what they come to: alone they speak of locks and
/// of control calls.
QString serialFailure(QSerialPort::SerialPortError error, const QString &words)
{
    switch (error) {
    case QSerialPort::PermissionError:
        return QStringLiteral("in use by another program, or not permitted: ") + words;
    case QSerialPort::DeviceNotFoundError:
        return QStringLiteral("there is no such port: ") + words;
    case QSerialPort::ResourceError:
    case QSerialPort::ReadError:
    case QSerialPort::WriteError:
        return QStringLiteral("the port is gone: ") + words;
    default:
        return words;
    }
}

class SerialLink : public Link
{
public:
    explicit SerialLink(const LinkAddress &address) : Link(address)
    {
        m_port.setReadBufferSize(kReadSize);
        connect(&m_port, &QSerialPort::readyRead, this, &SerialLink::readUnlessHeld);
        connect(&m_port, &QSerialPort::bytesWritten, this, &Link::written);
        connect(&m_port, &QSerialPort::errorOccurred, this,
                [this](QSerialPort::SerialPortError error) {
                    // A port whose other end has gone reads as ready and empty, again and again.
                    const bool isLost = error == QSerialPort::ResourceError ||
                                        error == QSerialPort::ReadError ||
                                        error == QSerialPort::WriteError;
                    // Later: the port reports from within its own reading.
                    if (isLost && m_port.isOpen())
                        QTimer::singleShot(0, this, [this, reason = reason()] { lose(reason); });
                });
    }

    void open() override
    {
        m_port.setPortName(m_address.host);
        m_port.setBaudRate(m_address.baud);
        m_port.setDataBits(QSerialPort::DataBits(m_address.dataBits));
        m_port.setParity(m_address.parity == 'o'   ? QSerialPort::OddParity
                         : m_address.parity == 'e' ? QSerialPort::EvenParity
                                                   : QSerialPort::NoParity);
        m_port.setStopBits(QSerialPort::OneStop);
        if (m_port.open(QIODevice::ReadWrite))
            emit opened();
        else
            emit closed(reason());
    }

    bool send(const QByteArray &bytes) override
    {
        // No flush: it writes whether or not the line has room, and a full one counts as lost then.
        return m_port.isOpen() && m_port.write(bytes) == bytes.size();
    }

    // The buffer of a closed port keeps its bytes until the next opening.
    qint64 unsent() const override { return m_port.isOpen() ? m_port.bytesToWrite() : 0; }

    qint64 close() override
    {
        const QDeadlineTimer limit(kPartingLimitMs);
        while (unsent() > 0 && m_port.waitForBytesWritten(int(limit.remainingTime()))) {
        }
        const qint64 left = unsent();
        m_port.close();
        return left;
    }

private:
    void read() override
    {
        const QByteArray bytes = m_port.readAll();
        if (!bytes.isEmpty())
            emit received(bytes);
    }

    QString reason() const { return failure(serialFailure(m_port.error(), m_port.errorString())); }

    void lose(const QString &reason)
    {
        if (!m_port.isOpen())
            return;
        m_port.close();
        emit closed(reason);
    }

    QSerialPort m_port;
};

} // namespace

void Link::hold(bool isHeld)
{
    const bool wasHeld = m_isHeld;
    m_isHeld = isHeld;
    if (wasHeld && !isHeld)
        read();
}

void Link::readUnlessHeld()
{
    if (!m_isHeld)
        read();
}

std::unique_ptr<Link> Link::make(const LinkAddress &address)
{
    switch (address.kind) {
    case LinkAddress::TcpListen:
        return std::make_unique<TcpListenLink>(address);
    case LinkAddress::Udp:
        return std::make_unique<UdpLink>(address);
    case LinkAddress::Serial:
        return std::make_unique<SerialLink>(address);
    case LinkAddress::Tcp:
        break;
    }
    return std::make_unique<TcpLink>(address);
}

} // namespace wire
