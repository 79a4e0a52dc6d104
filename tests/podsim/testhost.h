#pragma once

#include <QByteArray>
#include <QTcpSocket>
#include <QUdpSocket>

/// A host's end of a link with the pod. Waiting is limited so that a failing test ends.
class TestHost
{
public:
    virtual ~TestHost() = default;
    virtual void send(const QByteArray &bytes) = 0;
    /// The next `size` bytes, or what came of them.
    QByteArray receive(int size);

protected:
    /// Waits for more bytes; empty if none come.
    virtual QByteArray more() = 0;

private:
    QByteArray m_received;
};

class TcpHost : public TestHost
{
public:
    explicit TcpHost(quint16 port);
    void send(const QByteArray &bytes) override;
    /// All that comes until the other side closes.
    QByteArray receiveAll();

protected:
    QByteArray more() override;

private:
    QTcpSocket m_socket;
};

class UdpHost : public TestHost
{
public:
    /// `machine` stands for another one: the last number of its address.
    explicit UdpHost(int machine = 1);
    /// Where this host takes its answers.
    quint16 replyPort() const { return m_socket.localPort(); }
    void setPort(quint16 port) { m_port = port; }
    void send(const QByteArray &bytes) override;
    /// One whole datagram.
    QByteArray datagram() { return more(); }

protected:
    QByteArray more() override;

private:
    QUdpSocket m_socket;
    quint16 m_port = 0;
};

class PtyHost : public TestHost
{
public:
    explicit PtyHost(const QString &path);
    ~PtyHost() override;
    bool isOpen() const { return m_descriptor != -1; }
    void send(const QByteArray &bytes) override;

protected:
    QByteArray more() override;

private:
    int m_descriptor;
};
