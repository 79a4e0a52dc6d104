#pragma once

#include <QByteArray>
#include <QObject>
#include <QString>

namespace podsim {

/// One connection with a host, whatever it runs over: a TCP client, the datagrams of one UDP peer,
/// or the other end of a pseudo-terminal. Made and owned by its link, in the thread of its link.
class PodChannel : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    /// Kind and peer, for the log.
    virtual QString name() const = 0;
    /// Writes a piece by itself.
    virtual void send(const QByteArray &bytes) = 0;
    /// Bytes that were sent and that the peer hasn't taken yet, as far as this end knows.
    virtual qint64 unsent() const = 0;

signals:
    void received(const QByteArray &bytes);
    /// The connection is over; the channel is deleted soon after.
    void closed();
};

} // namespace podsim
