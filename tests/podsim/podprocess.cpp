#include "tests/podsim/podprocess.h"

#include <QDeadlineTimer>
#include <QRegularExpression>

#include <csignal>

namespace {

constexpr int kLimitMs = 20000;
constexpr int kStopWaitMs = 10000;

// On Windows a program that has only begun may lose the message. ThreadSanitizer keeps a signal
// that comes on the way into poll() until the program does something else; a program that only
// waits never gets it. Elsewhere the first one has to do.
#if defined(Q_OS_WIN) || defined(__SANITIZE_THREAD__)
constexpr int kStopTries = 3;
#else
constexpr int kStopTries = 1;
#endif

} // namespace

void sendSignal(QProcess &process, int signal)
{
#ifdef Q_OS_WIN
    Q_UNUSED(signal)
    process.terminate();
#else
    ::kill(static_cast<pid_t>(process.processId()), signal);
#endif
}

void stopProcess(QProcess &process, int signal)
{
    for (int tries = kStopTries; tries > 0 && process.state() != QProcess::NotRunning; --tries) {
        sendSignal(process, signal);
        process.waitForFinished(kStopWaitMs);
    }
}

PodProcess::PodProcess(const QStringList &arguments)
{
    m_process.start(QStringLiteral(PODSIM_PATH), arguments);
    m_process.waitForStarted(kLimitMs);
}

PodProcess::~PodProcess()
{
    if (m_process.state() != QProcess::NotRunning)
        stop(SIGTERM);
}

void PodProcess::write(const QString &line)
{
    m_process.write(line.toLocal8Bit() + '\n');
    m_process.waitForBytesWritten(kLimitMs);
}

bool PodProcess::awaitCount(const QString &text, int count)
{
    const QDeadlineTimer limit(kLimitMs);
    while (m_output.count(text) < count) {
        const bool hasMore = m_process.waitForReadyRead(static_cast<int>(limit.remainingTime()));
        m_output += QString::fromLocal8Bit(m_process.readAllStandardOutput());
        if (!hasMore)
            return m_output.count(text) >= count;
    }
    return true;
}

QString PodProcess::errorText()
{
    return QString::fromLocal8Bit(m_process.readAllStandardError());
}

quint16 PodProcess::port(const QString &kind)
{
    awaitLine(QStringLiteral("listening on ") + kind);
    const QRegularExpression line(QStringLiteral("listening on %1 [0-9.]+:([0-9]+)").arg(kind));
    return line.match(m_output).captured(1).toUShort();
}

void PodProcess::stop(int signal)
{
    stopProcess(m_process, signal);
    exitCode();
}

int PodProcess::exitCode()
{
    if (m_process.state() != QProcess::NotRunning && !m_process.waitForFinished(kLimitMs))
        m_process.kill();
    m_output += QString::fromLocal8Bit(m_process.readAllStandardOutput());
    return m_process.exitStatus() == QProcess::NormalExit ? m_process.exitCode() : -1;
}
