#pragma once

#include "tests/check/podframes.h"

#include <QElapsedTimer>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>

#include <functional>

/// What a pod does amiss.
struct Oddity
{
    int beat = 0;            ///< milliseconds from frame to frame that it sends unasked
    bool isMute = false;     ///< answers nothing
    bool isSticky = false;   ///< names what it took last in every answer
    QByteArray ignored;      ///< codes that it doesn't take, a byte each
    int ignoredAfter = 0;    ///< so many of them it takes
    int deafAfterBroken = 0; ///< milliseconds
    bool isDeafToPieces = false;
    QByteArray silentTo; ///< codes that it says nothing to
    int lateSuccess = 0; ///< milliseconds after which it calls any command a success
};

/// A pod in this very process, so that a test knows what it got and when.
class OddPod : public QObject
{
public:
    explicit OddPod(const Oddity &oddity) : m_oddity(oddity)
    {
        m_server.listen(QHostAddress::LocalHost);
        connect(&m_server, &QTcpServer::newConnection, this, [this] {
            m_client = m_server.nextPendingConnection();
            connect(m_client, &QTcpSocket::readyRead, this, &OddPod::read);
        });
        connect(&m_beat, &QTimer::timeout, this, [this] { say(m_oddity.isSticky ? m_last : ""); });
        if (oddity.beat > 0)
            m_beat.start(oddity.beat);
    }

    QString link() const { return QStringLiteral("tcp://127.0.0.1:%1").arg(m_server.serverPort()); }

    /// Codes of the good frames that came, in digits with blanks between.
    QByteArray got;
    /// Called with each of them.
    std::function<void(const QByteArray &code)> onFrame;
    void fallSilent() { m_oddity.isMute = true; }
    void hangUp() { m_client->abort(); }

private:
    void read()
    {
        m_bytes += m_client->readAll();
        const bool isPiece = m_bytes.size() < 71;
        for (int at = m_bytes.indexOf(kHeader); at >= 0 && m_bytes.size() >= at + 71;
             at = m_bytes.indexOf(kHeader)) {
            const int size = qMax<int>(71, quint8(m_bytes[at + 2]));
            if (m_bytes.size() < at + size)
                break;
            take(m_bytes.mid(at, size));
            m_bytes.remove(0, at + size);
        }
        if (m_oddity.isDeafToPieces && isPiece)
            m_bytes.clear();
    }

    void take(const QByteArray &frame)
    {
        QByteArray whole = frame.chopped(2);
        appendCrc(whole);
        if (whole != frame)
            m_sinceBroken.start();
        const bool isDeaf =
            m_sinceBroken.isValid() && m_sinceBroken.elapsed() < m_oddity.deafAfterBroken;
        if (whole != frame || isDeaf)
            return;
        const QByteArray code = frame.mid(69, frame.size() - 71).left(1).toHex();
        got += code.isEmpty() ? "- " : code + ' ';
        if (onFrame)
            onFrame(code);
        answer(code);
    }

    void answer(const QByteArray &code)
    {
        const QByteArray byte = QByteArray::fromHex(code);
        if (m_oddity.isMute || (!code.isEmpty() && m_oddity.silentTo.contains(byte)))
            return;
        if (!code.isEmpty() && m_oddity.lateSuccess > 0)
            QTimer::singleShot(m_oddity.lateSuccess, this, [this, code] { say(code + "00"); });
        const bool isTaken = !code.isEmpty() && m_oddity.lateSuccess == 0 &&
                             (!m_oddity.ignored.contains(byte) || m_oddity.ignoredAfter-- > 0);
        m_last = isTaken ? code + "00" : m_last;
        say(isTaken || m_oddity.isSticky ? m_last : QByteArray());
    }

    void say(const QByteArray &feedback)
    {
        if (m_client && m_client->isOpen())
            m_client->write(answerWith(feedback));
    }

    static constexpr const char *kHeader = "\xA8\xE5";

    Oddity m_oddity;
    QTcpServer m_server;
    QTcpSocket *m_client = nullptr;
    QTimer m_beat;
    QElapsedTimer m_sinceBroken;
    QByteArray m_bytes;
    QByteArray m_last;
};
