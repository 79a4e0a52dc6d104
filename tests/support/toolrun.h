#pragma once

#include "tests/podsim/podprocess.h"

#include <QDeadlineTimer>

#include <csignal>

// There to end a test that fails.
constexpr int kLimitMs = 20000;
constexpr int kLongestRunMs = 120000;

/// How a program ended, and what it said.
struct Ended
{
    int code = -1; ///< of a program that was killed too
    QByteArray out;
    QByteArray error;
};

/// A real program, run by a test; its input ends at once unless it is to stay open.
class ToolRun
{
public:
    ToolRun(const QString &program, const QStringList &arguments, const QByteArray &input = {},
            bool isOpen = false)
    {
        m_process.start(program, arguments);
        m_process.write(input);
        m_process.waitForStarted(kLimitMs);
        while (m_process.bytesToWrite() > 0 && m_process.waitForBytesWritten(kLimitMs)) {
        }
        if (!isOpen)
            m_process.closeWriteChannel();
    }

    Ended end()
    {
        if (m_process.state() != QProcess::NotRunning && !m_process.waitForFinished(kLongestRunMs))
            m_process.kill();
        const int code = m_process.exitStatus() == QProcess::NormalExit ? m_process.exitCode() : -1;
        return {code, m_process.readAllStandardOutput(), m_process.readAllStandardError()};
    }

    Ended stop(int signal = SIGTERM)
    {
        stopProcess(m_process, signal);
        return end();
    }

    void send(int signal) { sendSignal(m_process, signal); }

    /// Without a chance to write anything more.
    Ended kill()
    {
        m_process.kill();
        return end();
    }

    /// True once standard error has the text.
    bool says(const char *text)
    {
        const QDeadlineTimer limit(kLimitMs);
        m_process.setReadChannel(QProcess::StandardError);
        while (!m_said.contains(text) && !limit.hasExpired()) {
            m_process.waitForReadyRead(100);
            m_said += m_process.readAllStandardError();
        }
        return m_said.contains(text);
    }

    bool hasEnded(int limitMs)
    {
        return m_process.state() == QProcess::NotRunning || m_process.waitForFinished(limitMs);
    }

private:
    QProcess m_process;
    QByteArray m_said;
};
