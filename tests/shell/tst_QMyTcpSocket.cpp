#include "foundation/QGlobal.h"
#include "shell/QMyTcpSocket.h"
#include "tests/support/strictmain.h"

#include <QSignalSpy>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>

namespace {

const QString kAddress = QStringLiteral("127.0.0.1");

} // namespace

/// What a TCP link says, in the window or not, of its connection and of the loss of it.
class tst_QMyTcpSocket : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void lossByThePeer();
    void lossByTheOwnEnd_data();
    void lossByTheOwnEnd();

private:
    std::unique_ptr<QTcpServer> m_server;
    std::unique_ptr<QMyTcpSocket> m_link;
    QTcpSocket *m_near = nullptr;
    QTcpSocket *m_far = nullptr;
    QStringList m_asked; ///< for a new connection: address, port, whether the first
};

void tst_QMyTcpSocket::init()
{
    m_asked.clear();
    m_server = std::make_unique<QTcpServer>();
    QVERIFY(m_server->listen(QHostAddress::LocalHost));
    m_link = std::make_unique<QMyTcpSocket>();
    connect(m_link.get(), &QMyTcpSocket::signals_ConnectSuccess, this,
            [this](QTcpSocket *socket) { m_near = socket; });
    connect(m_link.get(), &QMyTcpSocket::signals_CreateMyTcpSocket, this,
            [this](const QString &ip, int port, bool isFirst) {
                m_asked << QStringLiteral("%1 %2 %3").arg(ip).arg(port).arg(isFirst);
            });
    m_near = nullptr;
    m_link->createSocket(kAddress, m_server->serverPort(), true);
    QTRY_VERIFY(m_near && m_server->hasPendingConnections());
    m_far = m_server->nextPendingConnection();
}

/// Two seconds later a new connection is asked for, once, whoever listens.
void tst_QMyTcpSocket::lossByThePeer()
{
    // Acknowledgements that come late must not hold up the next frame.
    QCOMPARE(m_near->socketOption(QAbstractSocket::LowDelayOption).toInt(), 1);
    QSignalSpy received(m_link.get(), &QMyTcpSocket::signals_ReceiveTcpData);
    const QSignalSpy failed(m_link.get(), &QMyTcpSocket::signals_ConnectFail);
    m_far->write("\x8A\x5E");
    QTRY_COMPARE(received.size(), 1);
    QCOMPARE(received.first(), (QVariantList{QByteArray("\x8A\x5E"), kAddress, 1}));

    m_far->close();
    QTRY_VERIFY(!m_near->isOpen());
    QVERIFY(m_asked.isEmpty());
    QTRY_COMPARE(m_asked,
                 QStringList{QStringLiteral("127.0.0.1 %1 0").arg(m_server->serverPort())});
    QCOMPARE(failed.size(), 0);
}

void tst_QMyTcpSocket::lossByTheOwnEnd_data()
{
    QTest::addColumn<bool>("isListed");
    QTest::newRow("an address like any") << false;
    QTest::newRow("an address to come back to") << true;
}

/// Closed by the program, only a listed address is come back to, and at once. The program lists
/// none.
void tst_QMyTcpSocket::lossByTheOwnEnd()
{
    QFETCH(bool, isListed);
    QMap<QString, QString> &addresses = QGlobal::instance()->reconnectAddresses;
    QVERIFY(addresses.isEmpty());
    if (isListed)
        addresses.insert(kAddress, QString());
    m_near->close();
    addresses.clear();
    const QString asked = QStringLiteral("127.0.0.1 %1 0").arg(m_server->serverPort());
    QCOMPARE(m_asked, isListed ? QStringList{asked} : QStringList{});
    QTRY_COMPARE(m_far->state(), QAbstractSocket::UnconnectedState);
}

NACELLE_TEST_MAIN(tst_QMyTcpSocket)
#include "tst_QMyTcpSocket.moc"
