#pragma once

#include "tools/podsim/podlink.h"

#include <QHostAddress>
#include <QUdpSocket>
#include <QVector>

namespace podsim {

/// Address and port as one text.
QString endpoint(const QHostAddress &address, quint16 port);

/// Takes datagrams; each sender, by address and port, is a separate host. Of more than 16 the
/// one that has been quiet the longest is forgotten. Answers go to one port of the sender's
/// address, whatever port it sent from.
class PodLinkUdp : public PodLink
{
    Q_OBJECT

public:
    PodLinkUdp(const QHostAddress &address, quint16 port, quint16 replyPort, QObject *parent);

    QString open() override;
    QString where() const override;

private:
    void readDatagrams();
    PodChannel *channelOf(const QHostAddress &address);

    QHostAddress m_address;
    quint16 m_port;
    quint16 m_replyPort;
    QUdpSocket m_socket;
    QVector<PodChannel *> m_channels; ///< the one last heard from comes last
};

} // namespace podsim
