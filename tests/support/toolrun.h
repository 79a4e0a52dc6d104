#pragma once

#include <QProcess>
#include <QStringList>

#include <csignal>

/// How a program ended, and what it said.
struct Ended
{
    int code = -1; ///< of a program that was killed too
    QByteArray out;
    QByteArray error;
};

/// The real program, run by a test, with an input that ends. The limit is there to end a test that
/// fails.
class ToolRun
{
public:
    ToolRun(const QString &program, const QStringList &arguments, const QByteArray &input = {})
    {
        m_process.start(program, arguments);
        m_process.write(input);
        m_process.closeWriteChannel();
        m_process.waitForStarted(kLimitMs);
    }

    Ended end()
    {
        if (m_process.state() != QProcess::NotRunning && !m_process.waitForFinished(kLimitMs))
            m_process.kill();
        const int code = m_process.exitStatus() == QProcess::NormalExit ? m_process.exitCode() : -1;
        return {code, m_process.readAllStandardOutput(), m_process.readAllStandardError()};
    }

    Ended stop(int signal = SIGTERM)
    {
        ::kill(pid_t(m_process.processId()), signal);
        return end();
    }

    bool isRunning() { return m_process.state() == QProcess::Running; }

private:
    static constexpr int kLimitMs = 120000;

    QProcess m_process;
};
