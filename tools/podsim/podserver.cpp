#include "tools/podsim/podserver.h"

#include "tools/podsim/podchannel.h"
#include "tools/podsim/podlinkpty.h"
#include "tools/podsim/podlinktcp.h"
#include "tools/podsim/podlinkudp.h"

#include <QTimer>

#include <utility>

namespace podsim {

namespace {

constexpr quint16 kReplyPort = 2338;
constexpr int kLeaveMs = 100; // a terminal that hangs up takes unread answers with it

} // namespace

PodServer::PodServer(const PodOptions &options) : m_context(options)
{
    m_context.clock.start();
    if (options.startMode)
        m_context.state.enter(*options.startMode);
    m_context.state.events.clear();
    m_context.shown.put(m_context.state);
    addLinks();
}

PodServer::~PodServer()
{
    closeLinks();
}

void PodServer::addLinks()
{
    const PodOptions &options = m_context.options;
    if (options.tcpPort)
        m_links.append(new PodLinkTcp(options.address, *options.tcpPort, this));
    if (options.udpPort)
        m_links.append(new PodLinkUdp(options.address, *options.udpPort,
                                      options.udpReplyPort.value_or(kReplyPort), this));
#ifndef Q_OS_WIN
    if (options.ptyLink)
        m_links.append(new PodLinkPty(*options.ptyLink, this));
#endif
    for (PodLink *link : m_links)
        connect(link, &PodLink::opened, this, &PodServer::addSession);
}

void PodServer::addSession(PodChannel *channel)
{
    connect(new PodSession(channel, m_context), &PodSession::left, this,
            [this] { QTimer::singleShot(kLeaveMs, this, &PodServer::left); });
}

QString PodServer::open()
{
    for (PodLink *link : m_links) {
        const QString reason = link->open();
        if (!reason.isEmpty())
            return reason;
        m_context.log.line(QStringLiteral("listening on ") + link->where());
    }
    return {};
}

void PodServer::closeLinks()
{
    qDeleteAll(std::exchange(m_links, {}));
}

void PodServer::close()
{
    closeLinks();
    m_context.log.line(summary(m_context.counts));
    const int most = m_context.options.faults.leaveAfter;
    if (m_context.hasAnswered(most))
        m_context.log.line(QStringLiteral("gone, as --leave-after %1 asks").arg(most));
}

} // namespace podsim
