#pragma once

#include <QObject>

/// Turns the wish that the program end into a Qt signal: SIGINT and SIGTERM, by a pipe to itself;
/// on Windows Ctrl+C, a closed console and what QProcess::terminate sends. At most one at a time;
/// lives in the main thread to the end of the program.
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
