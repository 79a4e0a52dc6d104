#include "foundation/QGlobal.h"
#include "shell/links.h"
#include "tests/support/farend.h"
#include "tests/support/strictmain.h"

#include <QAbstractEventDispatcher>
#include <QComboBox>
#include <QEventLoop>
#include <QLineEdit>
#include <QNetworkDatagram>
#include <QSignalSpy>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>
#include <QUdpSocket>

#include <array>
#include <dlfcn.h>
#include <sys/socket.h>
#include <termios.h>
#include <unistd.h>

Q_DECLARE_METATYPE(LinkType)

static QList<termios> s_asked; ///< of serial ports

/// Stands before the system's own: a pseudo-terminal forgets parity and the number of bits.
int tcsetattr(int port, int when, const termios *settings) noexcept
{
    static const auto own = reinterpret_cast<decltype(&tcsetattr)>(dlsym(RTLD_NEXT, "tcsetattr"));
    s_asked << *settings;
    return own(port, when, settings);
}

namespace {

const QByteArray kAnswer =
    QByteArray::fromHex("8A5E49000111") + QByteArray(63, '\0') + QByteArray::fromHex("20001234");
const QByteArray kEmptyCommand = QByteArray::fromHex("A8E5480001") + QByteArray(25, '\0') + '\1' +
                                 QByteArray(39, '\0') + QByteArray::fromHex("28B2");

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
    void localAddresses();
    void allCases_data();
    void allCases();
    void noLink();
    void tcpRefused();
    void tcpSilent();
    void tcpConnectRunsOnAfterDisconnect();
    void udpLeavesFromAFreshPort();
    void serialPortAbsent();
    void serialSettings();
    void serialPeerGone_data();
    void serialPeerGone();

private:
    void pressTcp(quint16 port);

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

/// Presses the button for a TCP connection to this machine.
void tst_links::pressTcp(quint16 port)
{
    Bench::expectWarning("No such slot NacelleBench::CreateTCP");
    Bench::expectWarning("receiver name: 'NacelleBenchClass'");
    m_bench->find<QComboBox>("comboBox")->setCurrentIndex(0);
    m_bench->find<QLineEdit>("LineEdit_RemoteIp")->setText(QStringLiteral("127.0.0.1"));
    m_bench->find<QLineEdit>("LineEdit_Port1")->setText(QString::number(port));
    m_bench->click("pushButton_Conn");
}

void tst_links::localAddresses()
{
    const QString pod = QStringLiteral("192.168.144.121");
    QVERIFY(sameSubnet(pod, QStringLiteral("192.168.144.7"), QStringLiteral("255.255.255.0")));
    QVERIFY(!sameSubnet(pod, QStringLiteral("192.168.145.121"), QStringLiteral("255.255.255.0")));
    QVERIFY(sameSubnet(pod, QStringLiteral("192.168.145.121"), QStringLiteral("255.255.0.0")));
    QCOMPARE(localAddressFor(QStringLiteral("127.0.0.99")), QHostAddress(QHostAddress::LocalHost));
    // The first is near the loopback's, as its real mask goes; TEST-NET-3 belongs to no interface.
    for (const char *peer : {"127.0.1.99", "203.0.113.5"})
        QVERIFY2(localAddressFor(QLatin1String(peer)).isNull(), peer);
}

void tst_links::allCases_data()
{
    QTest::addColumn<LinkType>("kind");
    QTest::newRow("TCP") << kTcpLink;
    QTest::newRow("UDP") << kUdpLink;
    QTest::newRow("serial") << kSerialLink;
}

/// Connect, send, receive, disconnect, connect again.
void tst_links::allCases()
{
    QFETCH(LinkType, kind);
    const QString name = QStringLiteral("old");
    for (int round = 1; round <= 2; ++round) {
        QGlobal::instance()->deviceName = name;
        const FarEnd end(*m_bench, kind);
        QCOMPARE(m_bench->find<QPushButton>("pushButton_Conn")->text(), QStringLiteral("断开"));
        QCOMPARE(QGlobal::instance()->deviceName, kind == kTcpLink ? name : QString());

        m_bench->click("pushButton_Send_Null");
        QByteArray heard;
        QTRY_COMPARE(heard += end.read(), kEmptyCommand);
        QVERIFY(end.write(kAnswer));
        QTRY_COMPARE((*m_bench)->receivedFrames.size(), round);
        QCOMPARE((*m_bench)->receivedFrames.first(), kAnswer);
        QCOMPARE(m_bench->find<QLineEdit>("lineEdit53_2")->text(), QStringLiteral("指向锁定模式"));

        m_bench->click("pushButton_Conn");
        QCOMPARE(m_bench->find<QPushButton>("pushButton_Conn")->text(), QStringLiteral("连接"));
        (*m_bench)->Disconnect(); // a second time is harmless
        m_bench->click("pushButton_Send_Null");
        QCoreApplication::processEvents();
        QCOMPARE(end.read(), QByteArray());
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
    quint16 port = 0;
    ::close(boundSocket(SOCK_STREAM, port));
    pressTcp(port);
    QCOMPARE(awaitNotices(), QStringList{QStringLiteral("TCP连接失败！")});
    QVERIFY(m_bench->find<QPushButton>("pushButton_Conn")->isChecked());
    m_bench->click("pushButton_Send_Null"); // stands in the log, goes nowhere
    QCOMPARE((*m_bench)->sentFrames.size(), 1);
}

/// A listener whose queue is full never answers. The operator is told once, within three seconds.
void tst_links::tcpSilent()
{
    FullListener listener;
    pressTcp(listener.port());
    QEventLoop attempt;
    QTimer::singleShot(3000, Qt::PreciseTimer, &attempt, &QEventLoop::quit);
    attempt.exec();
    QCOMPARE(Bench::takeNotices(), QStringList{QStringLiteral("TCP连接失败！")});
    // The toolkit would try the address a second time for as long again.
    QTest::qWait(4000);
    QCOMPARE(Bench::takeNotices(), QStringList());
}

void tst_links::tcpConnectRunsOnAfterDisconnect()
{
    QTcpServer server;
    QVERIFY(server.listen(QHostAddress::LocalHost));
    pressTcp(server.serverPort());
    m_bench->click("pushButton_Conn");
    QCOMPARE(awaitNotices(), QStringList{QStringLiteral("TCP连接成功！")});
    QTRY_VERIFY(server.hasPendingConnections());
    QTcpSocket *peer = server.nextPendingConnection();
    m_bench->click("pushButton_Send_Null");
    // What was sent would be there by the time that two answers have come.
    for (int answers = 1; answers <= 2; ++answers) {
        peer->write(kAnswer);
        QTRY_COMPARE((*m_bench)->receivedFrames.size(), answers);
    }
    QCOMPARE(peer->readAll(), QByteArray());
}

void tst_links::udpLeavesFromAFreshPort()
{
    QUdpSocket peer;
    QVERIFY(peer.bind(QHostAddress(QHostAddress::LocalHost)));
    quint16 port = 0;
    ::close(boundSocket(SOCK_DGRAM, port));
    QVERIFY(m_bench->plug("UDP", QString::number(peer.localPort()), QString::number(port)));
    m_bench->click("pushButton_Conn");
    m_bench->click("pushButton_Conn"); // the port was given back
    QCOMPARE(awaitNotices(), QStringList{QStringLiteral("创建UDP通信成功！")});
    m_bench->click("pushButton_Send_Null");
    QTRY_VERIFY(peer.hasPendingDatagrams());
    const QNetworkDatagram datagram = peer.receiveDatagram();
    QCOMPARE(datagram.data(), kEmptyCommand);
    QVERIFY(datagram.senderPort() != port);
    // What the bench listens on is its one address: another has the port to give.
    QVERIFY(QUdpSocket().bind(QHostAddress(QStringLiteral("127.0.0.2")), port));
    // Each datagram is a chunk of its own.
    for (const QByteArray &chunk : {kAnswer.left(40), kAnswer.mid(40)})
        peer.writeDatagram(chunk, QHostAddress::LocalHost, port);
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
    Bench::expectWarning("device not open");
    m_bench->click("pushButton_Send_Null");
    QCOMPARE((*m_bench)->sentFrames.size(), 1);
}

/// As the panel says, but one stop bit always.
void tst_links::serialSettings()
{
    const FarEnd end(*m_bench, kSerialLink);
    const struct
    {
        const char *rate, *bits, *parity;
        speed_t speed;
        tcflag_t flags;
    } rows[] = {{"9600", "8", "奇校验", B9600, CS8 | PARENB | PARODD},
                {"115200", "7", "偶校验", B115200, CS7 | PARENB},
                {"2000000", "5", "无", B2000000, CS5}};
    for (const auto &row : rows) {
        m_bench->click("pushButton_Conn");
        m_bench->find<QComboBox>("comboBox_s1")->setCurrentText(row.rate);
        m_bench->find<QComboBox>("comboBox_s2")->setCurrentText(row.bits);
        m_bench->find<QComboBox>("comboBox_s3")->setCurrentText(QStringLiteral("2"));
        m_bench->find<QComboBox>("comboBox_s4")->setCurrentText(row.parity);
        s_asked.clear();
        Bench::expectWarning("No such slot NacelleBench::SerialErrorOccurred");
        Bench::expectWarning("receiver name: 'NacelleBenchClass'");
        m_bench->click("pushButton_Conn");
        QCOMPARE(awaitNotices(), QStringList{QStringLiteral("打开串口成功！")});
        QCOMPARE(s_asked.first().c_cflag & (CSIZE | CSTOPB | PARENB | PARODD), row.flags);
        QCOMPARE(cfgetospeed(&s_asked.last()), row.speed);
    }
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
