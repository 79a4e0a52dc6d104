#pragma once

#include "tools/podsim/podlog.h"

#include <QByteArray>
#include <QObject>
#include <QSocketNotifier>

namespace podsim {

class PodStream;

/// Takes the lines of standard input that disturb the stream, and reports each one done.
/// Lives in the main thread; stream and log outlive it.
class PodControl : public QObject
{
    Q_OBJECT

public:
    PodControl(PodStream &stream, const PodLog &log);

private:
    void read();
    void take(const QString &line);
    /// Empty, or the reason why a line could not be carried out.
    QString carryOut(const QString &line);

    PodStream &m_stream;
    const PodLog &m_log;
    QSocketNotifier m_notifier;
    QByteArray m_input; ///< the beginning of a line
};

} // namespace podsim
