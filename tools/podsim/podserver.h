#pragma once

#include "tools/podsim/podsession.h"

#include <QObject>
#include <QVector>

namespace podsim {

class PodLink;

/// The pod with its links. Lives in the main thread.
class PodServer : public QObject
{
    Q_OBJECT

public:
    explicit PodServer(const PodOptions &options);
    ~PodServer() override;

    /// Opens all links that were asked for; the reason if one can't be had, empty otherwise.
    QString open();
    /// The state for other threads, and the log; as long as the server lives.
    const PodSnapshot &shown() const { return m_context.shown; }
    const PodLog &log() const { return m_context.log; }

    /// Closes the links and writes the summary.
    void close();

signals:
    /// The pod has sent its last answer and is to be closed.
    void left();

private:
    void addLinks();
    void addSession(PodChannel *channel);
    void closeLinks();

    PodContext m_context;
    QVector<PodLink *> m_links;
};

} // namespace podsim
