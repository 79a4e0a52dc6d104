#pragma once

#include <QObject>

class QSocketNotifier;

namespace podsim {

/// Turns SIGINT and SIGTERM into a Qt signal, by a pipe to itself. At most one at a time; lives in
/// the main thread to the end of the program.
class StopSignal : public QObject
{
    Q_OBJECT

public:
    StopSignal();

    /// False if the system has no pipe to give.
    bool isReady() const { return m_notifier != nullptr; }

signals:
    void stopped();

private:
    QSocketNotifier *m_notifier = nullptr;
};

} // namespace podsim
