#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>

/// Asks a program to end as the system does it; where there are no signals, like a closed console.
void sendSignal(QProcess &process, int signal);
/// The same, as often as it may take, and waits a while for the end.
void stopProcess(QProcess &process, int signal);

/// The real program, run by a test. Waiting ends with what is awaited; the limit is there to end a
/// test that fails.
class PodProcess
{
public:
    explicit PodProcess(const QStringList &arguments);
    ~PodProcess();

    /// Writes a line to the program's standard input.
    void write(const QString &line);
    /// Waits until the output holds `text`, or holds it `count` times; false if the program ends
    /// before.
    bool awaitLine(const QString &text) { return awaitCount(text, 1); }
    bool awaitCount(const QString &text, int count);
    /// All that the program has written so far.
    const QString &output() const { return m_output; }
    QString errorText();
    /// The port that the line of an open link names, for "tcp", "udp" or "rtsp".
    quint16 port(const QString &kind);

    /// Sends a signal and waits for the end.
    void stop(int signal);
    /// Waits for the end; -1 if the program was killed or doesn't end.
    int exitCode();

private:
    QProcess m_process;
    QString m_output;
};
