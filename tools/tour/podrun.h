#pragma once

#include <QProcess>
#include <QString>

/// The simulated pod of one tour: a process with a TCP link, a UDP link and the stream
/// of its picture on this machine, by the usual ports where they are free. It ends with this
/// object.
class PodRun
{
public:
    /// Starts the program at `path` and waits until all three are open; throws a `TourFailure`
    /// if they don't.
    explicit PodRun(const QString &path);
    ~PodRun();

    quint16 tcpPort() const { return m_tcpPort; }
    quint16 udpPort() const { return m_udpPort; }
    /// Where its picture is to be had.
    QString streamAddress() const;
    /// The local port that its datagrams come to.
    quint16 replyPort() const { return m_replyPort; }

    /// All that it has told so far.
    const QString &output();

    /// Asks it to end, and waits for that; its exit code.
    int stop();

private:
    /// A process that ends when this one does, however that happens.
    class Process : public QProcess
    {
    protected:
        void setupChildProcess() override;
    };

    quint16 listeningPort(const QString &kind);

    Process m_process;
    QString m_output;
    quint16 m_tcpPort = 0;
    quint16 m_udpPort = 0;
    quint16 m_replyPort = 0;
    quint16 m_streamPort = 0;
};
