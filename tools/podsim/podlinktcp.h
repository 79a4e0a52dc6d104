#pragma once

#include "tools/podsim/podlink.h"

#include <QHostAddress>
#include <QTcpServer>

namespace podsim {

/// Listens for TCP clients, any number of them at once.
class PodLinkTcp : public PodLink
{
    Q_OBJECT

public:
    PodLinkTcp(const QHostAddress &address, quint16 port, QObject *parent);

    QString open() override;
    QString where() const override;

private:
    void takeClients();

    QHostAddress m_address;
    quint16 m_port;
    QTcpServer m_server;
};

} // namespace podsim
