#include "tests/support/pty.h"

#include <QtGlobal>

#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>

Pty::Pty() : m_fd(posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK))
{
    if (m_fd < 0 || grantpt(m_fd) != 0 || unlockpt(m_fd) != 0)
        qFatal("no pseudo-terminal");
    m_path = QString::fromLocal8Bit(ptsname(m_fd));
    m_near = ::open(ptsname(m_fd), O_RDWR | O_NOCTTY);
    m_notifier = std::make_unique<QSocketNotifier>(m_fd, QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, &Pty::read);
}

Pty::~Pty()
{
    m_notifier.reset();
    ::close(m_fd);
    ::close(m_near);
}

void Pty::write(const QByteArray &bytes)
{
    if (::write(m_fd, bytes.constData(), size_t(bytes.size())) != bytes.size())
        qFatal("the pseudo-terminal takes no bytes");
}

void Pty::read()
{
    char buffer[4096];
    const ssize_t size = ::read(m_fd, buffer, sizeof buffer);
    if (size > 0)
        emit received(QByteArray(buffer, int(size)));
}
