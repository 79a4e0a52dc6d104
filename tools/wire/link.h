#pragma once

#include <QObject>
#include <QString>

#include <memory>

namespace wire {

/// Where a link leads. The ports and the form of a serial line are the pod's usual ones where the
/// text doesn't name them.
struct LinkAddress
{
    enum Kind : quint8 { Tcp, TcpListen, Udp, Serial };
    Kind kind = Tcp;
    QString text; ///< as it was given
    QString host; ///< of serial the port's name
    quint16 port = 0;
    quint16 local = 0; ///< of UDP the port that datagrams are received on
    int baud = 115200;
    int dataBits = 8;
    char parity = 'n'; ///< n, o or e
};

/// Reads `tcp://host:2332`, `tcp-listen://address:2332`, `udp://host:2337?local=2338`,
/// `serial:///dev/ttyUSB0?baud=115200&parity=even&data=8`. False with `error` set for anything
/// else.
bool readLinkAddress(const QString &text, LinkAddress &address, QString &error);

/// A link to a pod, or to a bench: bytes in, bytes out, by the bench's own rules. Lives in the
/// thread of its event loop and belongs to who made it. A link that is closed may be opened again.
class Link : public QObject
{
    Q_OBJECT

public:
    static std::unique_ptr<Link> make(const LinkAddress &address);

    /// Begins to open it: `opened` or `closed` follows, of a link that opens at once before it
    /// returns.
    virtual void open() = 0;
    /// Writes at once what the link takes; false where there is nobody at the other end.
    virtual bool send(const QByteArray &bytes) = 0;
    /// Bytes that wait to go out.
    virtual qint64 unsent() const { return 0; }
    /// Reads no more for a while, so that its other end has to wait as far as the link knows how
    /// to; or goes on.
    void hold(bool isHeld);
    /// Ends it once all has gone out, or after a few seconds: how many bytes weren't taken.
    virtual qint64 close() = 0;
    const LinkAddress &address() const { return m_address; }

signals:
    /// It is open, or listens; before `opened`.
    void ready();
    void opened();
    void received(const QByteArray &bytes);
    /// What waited to go out has become less.
    void written();
    /// Of a link that listens: its client has gone, another one may come.
    void left();
    /// What an operator should know, while the link goes on.
    void noticed(const QString &text);
    /// It couldn't be opened, or is lost.
    void closed(const QString &reason);

protected:
    explicit Link(const LinkAddress &address) : m_address(address)
    {
        connect(this, &Link::opened, this, &Link::ready);
    }
    QString failure(const QString &reason) const { return m_address.text + ": " + reason; }
    /// Hands on what has come.
    virtual void read() = 0;
    void readUnlessHeld();

    const LinkAddress m_address;

private:
    bool m_isHeld = false;
};

/// Who sends waits for `written` when so many bytes are unsent: more would only take memory.
constexpr qint64 kMuchUnsent = 1 << 20;

} // namespace wire
