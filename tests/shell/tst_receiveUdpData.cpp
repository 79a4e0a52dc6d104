#include "foundation/QGlobal.h"
#include "tests/support/bench.h"
#include "tests/support/datagramsample.h"
#include "tests/support/strictmain.h"

#include <QUdpSocket>

#include <memory>

class tst_receiveUdpData : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void noSocket();
    void portTaken();
    void disconnected();
    void namesTheDevice();
    void datagramOfNothing();
    void aMismatchLeavesTheRest();
    void othersAreSkipped();

private:
    void openLink(quint16 port);
    void openLink();
    void send(QUdpSocket &from, const QByteArray &bytes);
    QString nameAfterCall();

    std::unique_ptr<Bench> m_bench;
    quint16 m_port = 0;
};

void tst_receiveUdpData::init()
{
    QGlobal::instance()->deviceName = kOldName;
}

/// A window with its link on this port.
void tst_receiveUdpData::openLink(quint16 port)
{
    m_bench = std::make_unique<Bench>();
    m_port = port;
    (*m_bench)->CreateUDP(QStringLiteral("127.0.0.1"), 1, m_port, true);
    QCOMPARE(Bench::takeNotices().size(), 1);
    QGlobal::instance()->deviceName = kOldName;
}

/// A window with its link on a free port.
void tst_receiveUdpData::openLink()
{
    QUdpSocket free;
    QVERIFY(free.bind(QHostAddress(QHostAddress::LocalHost)));
    const quint16 port = free.localPort();
    free.close();
    openLink(port);
}

void tst_receiveUdpData::send(QUdpSocket &from, const QByteArray &bytes)
{
    QCOMPARE(from.writeDatagram(bytes, QHostAddress(QHostAddress::LocalHost), m_port),
             qint64(bytes.size()));
}

QString tst_receiveUdpData::nameAfterCall()
{
    if (!QMetaObject::invokeMethod(m_bench->window(), "receiveUdpData"))
        return QStringLiteral("no such slot");
    return QGlobal::instance()->deviceName;
}

void tst_receiveUdpData::noSocket()
{
    m_bench = std::make_unique<Bench>();
    QCOMPARE(nameAfterCall(), kOldName);
}

void tst_receiveUdpData::portTaken()
{
    QUdpSocket other;
    QVERIFY(other.bind(QHostAddress(QHostAddress::LocalHost)));
    openLink(other.localPort());
    QUdpSocket peer;
    send(peer, kDatagram);
    QTRY_VERIFY(other.hasPendingDatagrams());
    QCOMPARE(nameAfterCall(), kOldName);
}

void tst_receiveUdpData::disconnected()
{
    openLink();
    QUdpSocket peer;
    send(peer, kDatagram);
    (*m_bench)->Disconnect();
    QCOMPARE(nameAfterCall(), kOldName);
}

void tst_receiveUdpData::namesTheDevice()
{
    openLink();
    QUdpSocket peer;
    send(peer, kDatagram);
    QCOMPARE(nameAfterCall(), kName);
    QGlobal::instance()->deviceName = kOldName;
    QCOMPARE(nameAfterCall(), kOldName); // nothing waits any more
}

void tst_receiveUdpData::datagramOfNothing()
{
    openLink();
    QUdpSocket peer;
    send(peer, QByteArray());
    send(peer, kDatagram);
    QCOMPARE(nameAfterCall(), kName);
}

void tst_receiveUdpData::aMismatchLeavesTheRest()
{
    openLink();
    QUdpSocket peer;
    send(peer, withByte(kDatagram, 22, 0));
    send(peer, kDatagram);
    QCOMPARE(nameAfterCall(), kOldName);
    QCOMPARE(nameAfterCall(), kName);
}

void tst_receiveUdpData::othersAreSkipped()
{
    openLink();
    QUdpSocket stranger;
    QVERIFY(stranger.bind(QHostAddress(QStringLiteral("127.0.0.2"))));
    QUdpSocket peer;
    send(stranger, kDatagram);
    QCOMPARE(nameAfterCall(), kOldName);
    // Neither does a stranger's broken one end the call.
    send(stranger, withByte(kDatagram, 22, 0));
    send(peer, kDatagram);
    QCOMPARE(nameAfterCall(), kName);
    QCoreApplication::processEvents();
    QCOMPARE((*m_bench)->receivedFrames.size(), 0);
}

NACELLE_TEST_MAIN(tst_receiveUdpData)
#include "tst_receiveUdpData.moc"
