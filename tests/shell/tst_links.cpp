#include "foundation/QGlobal.h"
#include "shell/links.h"
#include "tests/support/farend.h"
#include "tests/support/pty.h"
#include "tests/support/strictmain.h"

#include <QAbstractEventDispatcher>
#include <QComboBox>
#include <QEventLoop>
#include <QLineEdit>
#include <QNetworkDatagram>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>
#include <QUdpSocket>

#include <array>
#include <sys/socket.h>
#include <unistd.h>

namespace {

const QByteArray kAnswer =
    QByteArray::fromHex("8A5E49000111") + QByteArray(63, '\0') + QByteArray::fromHex("20001234");
const QByteArray kEmptyCommand = QByteArray::fromHex("A8E5480001") + QByteArray(25, '\0') + '\1' +
                                 QByteArray(39, '\0') + QByteArray::fromHex("28B2");

/// The other end of a link, as a test has it: its own socket or pseudo-terminal.
class Peer : public QObject
{
public:
    virtual void choose(Bench &bench) = 0;
    virtual QString notice() const = 0;
    virtual bool awaitUp() { return true; }
    virtual void send(const QByteArray &bytes) = 0;

    QByteArray received;

protected:
    static void fill(Bench &bench, int link, quint16 port1, quint16 port2)
    {
        bench.find<QComboBox>("comboBox")->setCurrentIndex(link);
        bench.find<QLineEdit>("LineEdit_RemoteIp")->setText(QStringLiteral("127.0.0.1"));
        bench.find<QLineEdit>("LineEdit_Port1")->setText(QString::number(port1));
        bench.find<QLineEdit>("LineEdit_Port2")->setText(QString::number(port2));
    }
};

class TcpPeer : public Peer
{
public:
    TcpPeer()
    {
        m_server.listen(QHostAddress::LocalHost);
        connect(&m_server, &QTcpServer::newConnection, this, [this] {
            m_socket = m_server.nextPendingConnection();
            connect(m_socket, &QTcpSocket::readyRead, this,
                    [this] { received += m_socket->readAll(); });
        });
    }
    void choose(Bench &bench) override { fill(bench, 0, m_server.serverPort(), 0); }
    QString notice() const override { return QStringLiteral("TCP连接成功！"); }
    bool awaitUp() override
    {
        return QTest::qWaitFor(
            [this] { return m_socket && m_socket->state() == QAbstractSocket::ConnectedState; });
    }
    void send(const QByteArray &bytes) override
    {
        m_socket->write(bytes);
        m_socket->flush();
    }

private:
    QTcpServer m_server;
    QTcpSocket *m_socket = nullptr;
};

class UdpPeer : public Peer
{
public:
    UdpPeer()
    {
        m_socket.bind(QHostAddress(QHostAddress::LocalHost));
        QUdpSocket free;
        free.bind(QHostAddress(QHostAddress::LocalHost));
        m_benchPort = free.localPort();
        connect(&m_socket, &QUdpSocket::readyRead, this, [this] {
            while (m_socket.hasPendingDatagrams()) {
                const QNetworkDatagram datagram = m_socket.receiveDatagram();
                received += datagram.data();
                senderPort = quint16(datagram.senderPort());
            }
        });
    }
    void choose(Bench &bench) override { fill(bench, 1, m_socket.localPort(), m_benchPort); }
    QString notice() const override { return QStringLiteral("创建UDP通信成功！"); }
    void send(const QByteArray &bytes) override
    {
        m_socket.writeDatagram(bytes, QHostAddress::LocalHost, m_benchPort);
    }

    quint16 senderPort = 0;
    quint16 benchPort() const { return m_benchPort; }

private:
    QUdpSocket m_socket;
    quint16 m_benchPort = 0;
};

class PtyPeer : public Peer
{
public:
    PtyPeer()
    {
        connect(&m_pty, &Pty::received, this, [this](const QByteArray &b) { received += b; });
    }
    void choose(Bench &bench) override
    {
        // Pseudo-terminals aren't among the listed ports.
        auto *links = bench.find<QComboBox>("comboBox");
        if (links->findText(m_pty.path()) < 0)
            links->addItem(m_pty.path());
        links->setCurrentText(m_pty.path());
    }
    QString notice() const override { return QStringLiteral("打开串口成功！"); }
    void send(const QByteArray &bytes) override { m_pty.write(bytes); }

private:
    Pty m_pty;
};

std::unique_ptr<Peer> makePeer(const QString &kind)
{
    if (kind == QLatin1String("TCP"))
        return std::make_unique<TcpPeer>();
    if (kind == QLatin1String("UDP"))
        return std::make_unique<UdpPeer>();
    return std::make_unique<PtyPeer>();
}

/// Announces that a link asks for a slot which the window doesn't have: with one, it would connect
/// again by itself.
void announceMissingSlot(const QString &kind)
{
    const char *slot = kind == QLatin1String("TCP")      ? "CreateTCP"
                       : kind == QLatin1String("serial") ? "SerialErrorOccurred"
                                                         : nullptr;
    if (!slot)
        return;
    QTest::ignoreMessage(QtWarningMsg,
                         QRegularExpression(QStringLiteral("No such slot NacelleBench::") + slot));
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression("receiver name: 'NacelleBenchClass'"));
}

/// A listener on loopback whose queue is full: a connection to it is never answered.
class FullListener
{
public:
    FullListener() : m_fd(boundSocket(SOCK_STREAM, m_port))
    {
        if (::listen(m_fd, 0) != 0)
            qFatal("no listener");
        for (QTcpSocket &filler : m_fillers)
            filler.connectToHost(QHostAddress::LocalHost, m_port);
        m_fillers[0].waitForConnected();
    }
    ~FullListener() { ::close(m_fd); }
    quint16 port() const { return m_port; }

private:
    quint16 m_port = 0;
    int m_fd;
    std::array<QTcpSocket, 3> m_fillers;
};

QStringList awaitNotices()
{
    QStringList notices;
    const bool came = QTest::qWaitFor([&notices] {
        notices += Bench::takeNotices();
        return !notices.isEmpty();
    });
    return came ? notices : QStringList{QStringLiteral("no notice")};
}

} // namespace

class tst_links : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void subnets_data();
    void subnets();
    void allCases_data();
    void allCases();
    void noLink();
    void tcpRefused();
    void tcpSilent();
    void tcpConnectRunsOnAfterDisconnect();
    void udpLeavesFromAFreshPort();
    void serialPortAbsent();
    void serialPeerGone_data();
    void serialPeerGone();

private:
    void connectTo(Peer &peer, const QString &kind);

    std::unique_ptr<Bench> m_bench;
};

void tst_links::init()
{
    QGlobal::instance()->languageChinese = true;
    m_bench = std::make_unique<Bench>();
}

void tst_links::cleanup()
{
    m_bench.reset();
}

void tst_links::connectTo(Peer &peer, const QString &kind)
{
    announceMissingSlot(kind);
    peer.choose(*m_bench);
    m_bench->click("pushButton_Conn");
    QCOMPARE(m_bench->find<QPushButton>("pushButton_Conn")->text(), QStringLiteral("断开"));
    QCOMPARE(awaitNotices(), QStringList{peer.notice()});
    QVERIFY(peer.awaitUp());
}

void tst_links::subnets_data()
{
    QTest::addColumn<QString>("a");
    QTest::addColumn<QString>("b");
    QTest::addColumn<bool>("same");
    QTest::newRow("same /24") << "192.168.144.121"
                              << "192.168.144.7" << true;
    QTest::newRow("next /24") << "192.168.144.121"
                              << "192.168.145.121" << false;
}

void tst_links::subnets()
{
    QFETCH(QString, a);
    QFETCH(QString, b);
    QTEST(sameSubnet(a, b, QStringLiteral("255.255.255.0")), "same");
    QVERIFY(sameSubnet(a, b, QStringLiteral("255.255.0.0")));
    QCOMPARE(localAddressFor(QStringLiteral("127.0.0.99")), QHostAddress(QHostAddress::LocalHost));
    // TEST-NET-3 belongs to no interface: the socket then binds all addresses.
    QVERIFY(localAddressFor(QStringLiteral("203.0.113.5")).isNull());
}

void tst_links::allCases_data()
{
    QTest::addColumn<QString>("kind");
    for (const char *kind : {"TCP", "UDP", "serial"})
        QTest::newRow(kind) << kind;
}

/// Connect, send, receive, disconnect, connect again.
void tst_links::allCases()
{
    QFETCH(QString, kind);
    const std::unique_ptr<Peer> peer = makePeer(kind);
    for (int round = 1; round <= 2; ++round) {
        QGlobal::instance()->deviceName = QStringLiteral("old");
        connectTo(*peer, kind);
        if (kind != QLatin1String("TCP"))
            QCOMPARE(QGlobal::instance()->deviceName, QString());

        peer->received.clear();
        m_bench->click("pushButton_Send_Null");
        QTRY_COMPARE(peer->received, kEmptyCommand);
        peer->send(kAnswer);
        QTRY_COMPARE((*m_bench)->receivedFrames.size(), round);
        QCOMPARE((*m_bench)->receivedFrames.first(), kAnswer);
        QCOMPARE(m_bench->find<QLineEdit>("lineEdit53_2")->text(), QStringLiteral("指向锁定模式"));

        m_bench->click("pushButton_Conn");
        QCOMPARE(m_bench->find<QPushButton>("pushButton_Conn")->text(), QStringLiteral("连接"));
        (*m_bench)->Disconnect(); // a second time is harmless
        peer->received.clear();
        m_bench->click("pushButton_Send_Null");
        QCoreApplication::processEvents();
        QCOMPARE(peer->received, QByteArray());
    }
    QCOMPARE((*m_bench)->sentFrames.size(), 4);
}

void tst_links::noLink()
{
    m_bench->click("pushButton_Send_Null");
    QCOMPARE((*m_bench)->sentFrames, QList<QByteArray>{kEmptyCommand});
    QVERIFY(m_bench->log().contains(QStringLiteral("发->\nA8E5480001")));
}

void tst_links::tcpRefused()
{
    auto peer = std::make_unique<TcpPeer>();
    peer->choose(*m_bench);
    peer.reset();
    announceMissingSlot(QStringLiteral("TCP"));
    m_bench->click("pushButton_Conn");
    QCOMPARE(awaitNotices(), QStringList{QStringLiteral("TCP连接失败！")});
    QVERIFY(m_bench->find<QPushButton>("pushButton_Conn")->isChecked());
    m_bench->click("pushButton_Send_Null"); // stands in the log, goes nowhere
    QCOMPARE((*m_bench)->sentFrames.size(), 1);
}

/// A listener whose queue is full never answers. The operator sees one notice.
void tst_links::tcpSilent()
{
    FullListener listener;
    announceMissingSlot(QStringLiteral("TCP"));
    m_bench->find<QComboBox>("comboBox")->setCurrentIndex(0);
    m_bench->find<QLineEdit>("LineEdit_RemoteIp")->setText(QStringLiteral("127.0.0.1"));
    m_bench->find<QLineEdit>("LineEdit_Port1")->setText(QString::number(listener.port()));
    m_bench->click("pushButton_Conn");
    QCOMPARE(awaitNotices(), QStringList{QStringLiteral("TCP连接失败！")});
    // The toolkit would try the address a second time for as long again.
    QTest::qWait(4000);
    QCOMPARE(Bench::takeNotices(), QStringList());
}

void tst_links::tcpConnectRunsOnAfterDisconnect()
{
    TcpPeer peer;
    peer.choose(*m_bench);
    announceMissingSlot(QStringLiteral("TCP"));
    m_bench->click("pushButton_Conn");
    m_bench->click("pushButton_Conn");
    QCOMPARE(awaitNotices(), QStringList{peer.notice()});
    QVERIFY(peer.awaitUp());
    m_bench->click("pushButton_Send_Null");
    // What was sent would be there by the time that two answers have come.
    for (int answers = 1; answers <= 2; ++answers) {
        peer.send(kAnswer);
        QTRY_COMPARE((*m_bench)->receivedFrames.size(), answers);
    }
    QCOMPARE(peer.received, QByteArray());
}

void tst_links::udpLeavesFromAFreshPort()
{
    UdpPeer peer;
    connectTo(peer, QStringLiteral("UDP"));
    m_bench->click("pushButton_Send_Null");
    QTRY_COMPARE(peer.received, kEmptyCommand);
    QVERIFY(peer.senderPort != peer.benchPort());
    // Each datagram is one chunk.
    peer.send(kAnswer.left(40));
    peer.send(kAnswer.mid(40));
    QTRY_COMPARE((*m_bench)->receivedFrames, QList<QByteArray>{kAnswer});
}

void tst_links::serialPortAbsent()
{
    auto *links = m_bench->find<QComboBox>("comboBox");
    links->addItem(QStringLiteral("/dev/no-such-port"));
    links->setCurrentIndex(links->count() - 1);
    m_bench->click("pushButton_Conn");
    QCOMPARE(awaitNotices(), QStringList{QStringLiteral("打开串口失败！")});
    QVERIFY(m_bench->find<QPushButton>("pushButton_Conn")->isChecked());
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression("device not open"));
    m_bench->click("pushButton_Send_Null");
    QCOMPARE((*m_bench)->sentFrames.size(), 1);
}

void tst_links::serialPeerGone_data()
{
    QTest::addColumn<bool>("sends");
    QTest::newRow("nothing to write") << false;
    QTest::newRow("a frame to write") << true;
}

/// Reads and writes at a port whose far end is gone fail at once, each time. The port is tried now
/// and then, not at every turn of the event loop, which would turn ten thousands of times.
void tst_links::serialPeerGone()
{
    QFETCH(bool, sends);
    FarEnd end(*m_bench, kSerialLink);
    const QSignalSpy turns(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::awake);
    end.hangUp();
    if (sends)
        m_bench->click("pushButton_Send_Null");
    QEventLoop loop;
    QTimer::singleShot(500, &loop, &QEventLoop::quit);
    loop.exec();
    QVERIFY2(turns.size() < 500, qPrintable(QString::number(turns.size())));
}

NACELLE_TEST_MAIN(tst_links)
#include "tst_links.moc"
