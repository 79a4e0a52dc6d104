#include "tools/podsim/podlinkpty.h"

#include "tools/podsim/podchannel.h"

#include <QFile>
#include <QFileInfo>
#include <QSocketNotifier>

#include <array>
#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <poll.h>
#include <stdlib.h>
#include <termios.h>
#include <unistd.h>

namespace podsim {

namespace {

constexpr int kLookMs = 100;

/// Whether the other end is open, or was and has left bytes to be read.
bool hasPeer(int master)
{
    pollfd entry{master, POLLIN, 0};
    if (poll(&entry, 1, 0) < 0)
        return false;
    return (entry.revents & POLLIN) != 0 || (entry.revents & (POLLHUP | POLLERR)) == 0;
}

void makeRaw(int descriptor)
{
    termios settings{};
    if (tcgetattr(descriptor, &settings) != 0)
        return;
    cfmakeraw(&settings);
    tcsetattr(descriptor, TCSANOW, &settings);
}

bool makeNonBlocking(int descriptor)
{
    const int flags = fcntl(descriptor, F_GETFL);
    return flags != -1 && fcntl(descriptor, F_SETFL, flags | O_NONBLOCK) == 0;
}

/// Opens and closes the other end: it comes to raw mode without unread bytes, and the terminal
/// counts as hung up from then on, which it doesn't before it was opened for the first time.
bool resetPeer(const QString &path)
{
    const int peer = ::open(QFile::encodeName(path).constData(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (peer == -1)
        return false;
    makeRaw(peer);
    tcflush(peer, TCIFLUSH);
    return close(peer) == 0;
}

} // namespace

/// The other end while somebody has it open.
class PodLinkPty::Channel : public PodChannel
{
public:
    Channel(int master, const QString &name, PodLinkPty *link)
        : PodChannel(link), m_link(link), m_master(master), m_name(name),
          m_readable(master, QSocketNotifier::Read), m_writable(master, QSocketNotifier::Write)
    {
        m_writable.setEnabled(false);
        connect(&m_readable, &QSocketNotifier::activated, this, [this] { readMore(); });
        connect(&m_writable, &QSocketNotifier::activated, this, [this] { writeMore(); });
    }

    QString name() const override { return m_name; }

    void send(const QByteArray &bytes) override
    {
        if (!m_isOpen)
            return;
        m_unsent += bytes;
        writeMore();
    }

    qint64 unsent() const override { return m_unsent.size(); }

    /// Stops listening to the descriptor.
    void shut()
    {
        m_isOpen = false;
        m_readable.setEnabled(false);
        m_writable.setEnabled(false);
    }

private:
    void readMore()
    {
        std::array<char, 4096> buffer{};
        const ssize_t size = read(m_master, buffer.data(), buffer.size());
        if (size > 0)
            emit received(QByteArray(buffer.data(), int(size)));
        else if (size == 0 || (errno != EAGAIN && errno != EINTR))
            m_link->closePeer();
    }

    void writeMore()
    {
        const ssize_t size = write(m_master, m_unsent.constData(), std::size_t(m_unsent.size()));
        if (size > 0)
            m_unsent.remove(0, int(size));
        else if (size < 0 && errno != EAGAIN && errno != EINTR)
            m_unsent.clear();
        m_writable.setEnabled(!m_unsent.isEmpty());
    }

    PodLinkPty *m_link;
    int m_master;
    QString m_name;
    bool m_isOpen = true;
    QByteArray m_unsent;
    QSocketNotifier m_readable;
    QSocketNotifier m_writable;
};

PodLinkPty::PodLinkPty(const QString &link, QObject *parent) : PodLink(parent), m_link(link)
{
    m_look.setInterval(kLookMs);
    connect(&m_look, &QTimer::timeout, this, &PodLinkPty::lookForPeer);
}

PodLinkPty::~PodLinkPty()
{
    removeLink();
    delete m_channel;
    if (m_master != -1)
        close(m_master);
}

QString PodLinkPty::open()
{
    QString reason;
    if (!openMaster())
        reason = QString::fromLocal8Bit(std::strerror(errno));
    else if (placeLink(&reason))
        m_look.start();
    return reason.isEmpty() ? reason : QStringLiteral("cannot open pty %1: %2").arg(m_link, reason);
}

QString PodLinkPty::where() const
{
    return QStringLiteral("pty %1 at %2").arg(m_link, m_path);
}

bool PodLinkPty::openMaster()
{
    m_master = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (m_master == -1 || grantpt(m_master) != 0 || unlockpt(m_master) != 0)
        return false;
    const char *path = ptsname(m_master);
    if (!path || !makeNonBlocking(m_master))
        return false;
    m_path = QFile::decodeName(path);
    return resetPeer(m_path);
}

/// Puts the link in place; one that an earlier run left behind gives way, anything else doesn't.
bool PodLinkPty::placeLink(QString *reason)
{
    const QFileInfo old(m_link);
    const QString directory = QFileInfo(m_path).path() + QLatin1Char('/');
    if (old.isSymLink() && old.symLinkTarget().startsWith(directory))
        QFile::remove(m_link);
    m_hasLink =
        symlink(QFile::encodeName(m_path).constData(), QFile::encodeName(m_link).constData()) == 0;
    if (!m_hasLink)
        *reason = QString::fromLocal8Bit(std::strerror(errno));
    return m_hasLink;
}

void PodLinkPty::removeLink()
{
    if (m_hasLink && QFileInfo(m_link).symLinkTarget() == m_path)
        QFile::remove(m_link);
}

void PodLinkPty::lookForPeer()
{
    if (!hasPeer(m_master))
        return;
    m_look.stop();
    m_channel = new Channel(m_master, QStringLiteral("pty %1").arg(m_link), this);
    emit opened(m_channel);
}

/// The last host may have left its own settings and unread answers behind.
void PodLinkPty::closePeer()
{
    Channel *channel = m_channel;
    m_channel = nullptr;
    channel->shut();
    resetPeer(m_path);
    emit channel->closed();
    channel->deleteLater();
    m_look.start();
}

} // namespace podsim
