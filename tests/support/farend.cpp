#include "tests/support/farend.h"

#include <arpa/inet.h>
#include <cstdlib>
#include <fcntl.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <random>
#include <sys/socket.h>
#include <unistd.h>

namespace {

constexpr int kStuckMs = 20000;
constexpr int kDescriptors = 1024;

sockaddr_in loopback(quint16 port)
{
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

quint16 portOf(int fd)
{
    sockaddr_in address = {};
    socklen_t size = sizeof address;
    const bool isNamed = ::getsockname(fd, reinterpret_cast<sockaddr *>(&address), &size) == 0;
    return isNamed && address.sin_family == AF_INET ? ntohs(address.sin_port) : 0;
}

/// The descriptor of this process that has the port, or -1.
int descriptorAt(quint16 port)
{
    for (int fd = 0; fd < kDescriptors; ++fd) {
        if (portOf(fd) == port)
            return fd;
    }
    return -1;
}

} // namespace

QByteArray noise(int size)
{
    std::minstd_rand random(1);
    QByteArray bytes(size, '\0');
    for (char &byte : bytes)
        byte = char(random() >> 8);
    return bytes;
}

QByteArray wholeChunk(int size)
{
    return QByteArray::fromHex("8A5E00FF") + noise(size - 4);
}

int boundSocket(int type, quint16 &port)
{
    const int fd = ::socket(AF_INET, type, 0);
    const sockaddr_in any = loopback(0);
    if (::bind(fd, reinterpret_cast<const sockaddr *>(&any), sizeof any) != 0)
        qFatal("no socket");
    port = portOf(fd);
    return fd;
}

FarEnd::FarEnd(Bench &bench, LinkType kind) : m_kind(kind)
{
    const bool isUp = kind == kTcpLink   ? plugTcp(bench)
                      : kind == kUdpLink ? plugUdp(bench)
                                         : plugSerial(bench);
    if (!isUp || ::fcntl(m_fd, F_SETFL, O_NONBLOCK) != 0)
        qFatal("no link");
}

FarEnd::~FarEnd()
{
    hangUp();
}

bool FarEnd::plugTcp(Bench &bench)
{
    quint16 port = 0;
    const int listener = boundSocket(SOCK_STREAM, port);
    if (::listen(listener, 1) != 0 ||
        !bench.plug(QStringLiteral("TCP Client"), QString::number(port)))
        return false;
    sockaddr_in peer = {};
    socklen_t size = sizeof peer;
    m_fd = ::accept(listener, reinterpret_cast<sockaddr *>(&peer), &size);
    ::close(listener);
    m_near = descriptorAt(ntohs(peer.sin_port));
    const int atOnce = 1;
    return ::setsockopt(m_fd, IPPROTO_TCP, TCP_NODELAY, &atOnce, sizeof atOnce) == 0;
}

bool FarEnd::plugUdp(Bench &bench)
{
    quint16 port = 0;
    m_fd = boundSocket(SOCK_DGRAM, port);
    ::close(boundSocket(SOCK_DGRAM, m_nearPort));
    return bench.plug(QStringLiteral("UDP"), QString::number(port), QString::number(m_nearPort));
}

bool FarEnd::plugSerial(Bench &bench)
{
    m_fd = ::posix_openpt(O_RDWR | O_NOCTTY);
    return ::grantpt(m_fd) == 0 && ::unlockpt(m_fd) == 0 &&
           bench.plug(QString::fromLocal8Bit(::ptsname(m_fd)));
}

/// Takes a pseudo-terminal, a connection and, as a whole even if it is empty, a datagram.
qint64 FarEnd::writeSome(const QByteArray &piece, qint64 from) const
{
    const char *data = piece.constData() + from;
    const auto size = size_t(piece.size() - from);
    if (m_kind == kSerialLink)
        return ::write(m_fd, data, size);
    if (m_kind == kTcpLink)
        return ::send(m_fd, data, size, MSG_NOSIGNAL);
    const sockaddr_in near = loopback(m_nearPort);
    return ::sendto(m_fd, data, size, 0, reinterpret_cast<const sockaddr *>(&near), sizeof near);
}

bool FarEnd::write(const QByteArray &piece) const
{
    qint64 done = 0;
    do {
        pollfd link = {m_fd, POLLOUT, 0};
        const qint64 size = ::poll(&link, 1, kStuckMs) == 1 ? writeSome(piece, done) : -1;
        if (size < 0)
            return false;
        done += size;
    } while (done < piece.size());
    return true;
}

void FarEnd::offer(const QByteArray &piece) const
{
    writeSome(piece, 0);
}

QByteArray FarEnd::read() const
{
    char buffer[4096];
    const ssize_t size = ::read(m_fd, buffer, sizeof buffer);
    return QByteArray(buffer, int(qMax<ssize_t>(0, size)));
}

void FarEnd::hangUp()
{
    if (m_fd >= 0)
        ::close(m_fd);
    m_fd = -1;
}

void FarEnd::reset()
{
    const linger none = {1, 0};
    ::setsockopt(m_fd, SOL_SOCKET, SO_LINGER, &none, sizeof none);
    hangUp();
}

void FarEnd::halfClose()
{
    ::shutdown(m_fd, SHUT_WR);
}

bool FarEnd::isHeld() const
{
    return ::fcntl(m_near, F_GETFD) != -1;
}
