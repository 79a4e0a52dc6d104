#pragma once

#include "tools/podsim/podlink.h"

#include <QTimer>

#include <memory>

class QSocketNotifier;

namespace podsim {

/// A pseudo-terminal in raw mode, with a symbolic link to its other end. The other end may be
/// opened and closed any number of times. The system announces no opening: while the other end is
/// closed it is asked for ten times a second, and nothing is read.
class PodLinkPty : public PodLink
{
    Q_OBJECT

public:
    PodLinkPty(const QString &link, QObject *parent);
    ~PodLinkPty() override;

    QString open() override;
    QString where() const override;

private:
    class Channel;

    bool openMaster();
    bool placeLink(QString *reason);
    void removeLink();
    void lookForPeer();
    void closePeer();

    QString m_link;
    QString m_path; ///< of the other end
    int m_master = -1;
    bool m_hasLink = false;
    QTimer m_look;
    Channel *m_channel = nullptr; ///< while the other end is open
};

} // namespace podsim
