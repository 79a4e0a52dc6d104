#pragma once

#include "shell/NacelleBench.h"
#include "tests/support/bench.h"

#include <QByteArray>
#include <QString>

constexpr int kLargestDatagram = 65507;

/// Bytes without order, the same each time.
QByteArray noise(int size);

/// A chunk whose length field is negative, so that all of it is a frame.
QByteArray wholeChunk(int size);

/// A socket of that type on loopback with a free port, which goes into `port`.
int boundSocket(int type, quint16 &port);

/// The far end of a link as a bare descriptor, so that it can do what no well-behaved peer does.
/// The program's end is opened as its operator does it.
class FarEnd
{
public:
    FarEnd(Bench &bench, LinkType kind);
    ~FarEnd();

    /// Returns when the piece is on its way, or false if the link takes no more. Any thread's.
    bool write(const QByteArray &piece) const;
    /// Writes what the link takes at once.
    void offer(const QByteArray &piece) const;
    /// What has come, without waiting.
    QByteArray read() const;

    void hangUp();
    void reset();     ///< TCP: goes away without a farewell
    void halfClose(); ///< TCP: will send no more

    /// The port that datagrams go to.
    quint16 nearPort() const { return m_nearPort; }
    /// TCP: whether the program still holds its end, whatever became of the connection.
    bool isHeld() const;

private:
    bool plugTcp(Bench &bench);
    bool plugUdp(Bench &bench);
    bool plugSerial(Bench &bench);
    qint64 writeSome(const QByteArray &piece, qint64 from) const;

    const LinkType m_kind;
    int m_fd = -1;
    int m_near = -1; ///< the program's descriptor of a TCP link
    quint16 m_nearPort = 0;
};
