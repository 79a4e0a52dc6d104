#pragma once

#include <QObject>
#include <QString>

namespace podsim {

class PodChannel;

/// A way in to the pod. Owned by the server, in the main thread.
class PodLink : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    /// Opens the link; the reason if that fails, empty if it doesn't.
    virtual QString open() = 0;
    /// Kind and address of an open link, for the log.
    virtual QString where() const = 0;

signals:
    /// A host is there. The channel lives until some time after its signal `closed`.
    void opened(podsim::PodChannel *channel);
};

} // namespace podsim
