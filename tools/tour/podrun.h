#pragma once

#include <QFile>
#include <QProcess>
#include <QString>

namespace tour {

/// Which pod the tour is driven against.
struct PodChoice
{
    QString program; ///< to be started
    QString log;     ///< what a pod that runs already writes; where given, none is started
    bool hasStream = true;
};

/// The simulated pod of one tour, with a TCP link, a UDP link and the stream of its picture on this
/// machine: a separate process, by the usual ports where they are free, which ends with this
/// object; or one that runs already and writes what it says to a file.
class PodRun
{
public:
    /// Starts the program, or reads the file of one that runs, and waits until all links are open;
    /// throws a `TourFailure` if they don't open.
    explicit PodRun(const PodChoice &choice);
    ~PodRun();

    quint16 tcpPort() const { return m_tcpPort; }
    quint16 udpPort() const { return m_udpPort; }
    /// Where its picture is to be had.
    QString streamAddress() const;
    /// The local port that its datagrams come to.
    quint16 replyPort() const { return m_replyPort; }

    /// All that it has printed so far.
    const QString &output();

    /// Asks the process to end, and waits for that; its exit code.
    int stop();

private:
    /// A process that ends when this one does, however that happens.
    class Process : public QProcess
    {
    protected:
        void setupChildProcess() override;
    };

    void start(const PodChoice &choice);
    quint16 listeningPort(const QString &kind);

    Process m_process;
    QFile m_log;
    QString m_output;
    quint16 m_tcpPort = 0;
    quint16 m_udpPort = 0;
    quint16 m_replyPort = 0;
    quint16 m_streamPort = 0;
};

} // namespace tour
