#pragma once

#include <QObject>

/// Turns the wish that the program end into a Qt signal, as often as it is expressed: SIGINT,
/// SIGTERM and SIGHUP (of a closed terminal), by a pipe to itself; on Windows Ctrl+C, a closed
/// console, which leaves the program some 5 s, and what QProcess::terminate sends. At most one at a
/// time; lives in the main thread to the end of the program.
class StopSignal : public QObject
{
    Q_OBJECT

public:
    StopSignal();

    /// False if the system can't give notice.
    bool isReady() const { return m_listener; }

signals:
    void stopped();

private:
    QObject *m_listener = nullptr;
};
