#include "tests/podsim/testhost.h"

#include <QFile>
#include <QNetworkDatagram>

#include <array>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace {

constexpr int kLimitMs = 20000;

} // namespace

QByteArray TestHost::receive(int size)
{
    while (m_received.size() < size) {
        const QByteArray bytes = more();
        if (bytes.isEmpty())
            break;
        m_received += bytes;
    }
    const QByteArray result = m_received.left(size);
    m_received.remove(0, size);
    return result;
}

TcpHost::TcpHost(quint16 port)
{
    m_socket.connectToHost(QHostAddress(QHostAddress::LocalHost), port);
    m_socket.waitForConnected(kLimitMs);
}

void TcpHost::send(const QByteArray &bytes)
{
    m_socket.write(bytes);
    m_socket.waitForBytesWritten(kLimitMs);
}

QByteArray TcpHost::more()
{
    m_socket.waitForReadyRead(kLimitMs);
    return m_socket.readAll();
}

QByteArray TcpHost::receiveAll()
{
    if (m_socket.state() == QAbstractSocket::ConnectedState)
        m_socket.waitForDisconnected(kLimitMs);
    return m_socket.readAll();
}

UdpHost::UdpHost(int machine)
{
    m_socket.bind(QHostAddress(QStringLiteral("127.0.0.%1").arg(machine)), 0);
}

void UdpHost::send(const QByteArray &bytes)
{
    m_socket.writeDatagram(bytes, QHostAddress(QHostAddress::LocalHost), m_port);
}

QByteArray UdpHost::more()
{
    if (!m_socket.hasPendingDatagrams())
        m_socket.waitForReadyRead(kLimitMs);
    return m_socket.receiveDatagram().data();
}

PtyHost::PtyHost(const QString &path)
    : m_descriptor(::open(QFile::encodeName(path).constData(), O_RDWR | O_NOCTTY | O_CLOEXEC))
{
}

PtyHost::~PtyHost()
{
    if (isOpen())
        ::close(m_descriptor);
}

void PtyHost::send(const QByteArray &bytes)
{
    const ssize_t size =
        ::write(m_descriptor, bytes.constData(), static_cast<std::size_t>(bytes.size()));
    Q_ASSERT(size == bytes.size());
    Q_UNUSED(size);
}

QByteArray PtyHost::more()
{
    pollfd entry{m_descriptor, POLLIN, 0};
    if (::poll(&entry, 1, kLimitMs) != 1)
        return {};
    std::array<char, 4096> buffer{};
    const ssize_t size = ::read(m_descriptor, buffer.data(), buffer.size());
    return size > 0 ? QByteArray(buffer.data(), static_cast<int>(size)) : QByteArray();
}
