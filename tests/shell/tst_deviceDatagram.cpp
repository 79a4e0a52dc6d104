#include "foundation/QAESEncryption.h"
#include "foundation/QGlobal.h"
#include "protocol/codec.h"
#include "shell/devicedatagram.h"
#include "tests/support/bench.h"
#include "tests/support/strictmain.h"

#include <QUdpSocket>

#include <memory>

namespace {

const QString kOldName = QStringLiteral("old");
const QString kName = QStringLiteral("吊舱 7");

/// A whole record: type 0, L = 51, the text "吊舱 7\nrest" of 13 bytes, CRC A7 82.
const QByteArray kRecord = QByteArray::fromHex("0000"
                                               "3300"
                                               "01020304"
                                               "0000"
                                               "a0a1a2a3a4a5a6a7a8a9aaabacadaeaf"
                                               "000000000000000000000000000000000000000000"
                                               "01"
                                               "e5908ae888b12037"
                                               "0a"
                                               "72657374"
                                               "a782");

/// The same as a datagram, T = 70, made outside of this program: the record through
/// openssl enc -aes-128-cbc -K b3cbc36a0555d1de8a6869cf1a45dae1
///                          -iv a734f552130c95c1471285a16b12bc72
const QByteArray kDatagram = QByteArray::fromHex("00000000"
                                                 "4600"
                                                 "75d2897507415d856a00a96f814938ff"
                                                 "cfe12dd64f3a53fc8c9a032b9f357be0"
                                                 "70f8b028b143111295b5acceb4fcea82"
                                                 "005c9ba0ee6f29fdff607eba308fb578");

QByteArray withByte(QByteArray bytes, int at, char value)
{
    bytes[at] = value;
    return bytes;
}

QByteArray withTotal(qint16 total)
{
    return kDatagram.left(4) + encodeI16(total) + kDatagram.mid(6);
}

/// A record of type 0 with its right checksum.
QByteArray recordOf(const QByteArray &text, char flag = '\1')
{
    QByteArray record = QByteArray(2, '\0') + encodeI16(qint16(text.size() + 38)) +
                        QByteArray(43, '\0') + flag + text;
    const quint16 crc = crc16Of(record.mid(2));
    return record.append(char(crc >> 8)).append(char(crc));
}

/// The first twelve bytes of a record.
QByteArray headOf(qint16 length, qint16 type)
{
    return QByteArray(2, 'h') + encodeI16(length) + QByteArray(4, 'h') + encodeI16(type) + "hh";
}

void addColumns()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<bool>("goesOn");
    QTest::addColumn<QString>("name");
}

} // namespace

class tst_deviceDatagram : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void totals_data();
    void totals();
    void records_data();
    void records();
    void lengths_data();
    void lengths();
    void noSocket();
    void namesTheDevice();
    void aMismatchLeavesTheRest();
    void othersAreSkipped();

private:
    void openLink(const QString &peer);
    void send(QUdpSocket &from, const QByteArray &bytes);
    QString nameAfterCall();

    std::unique_ptr<Bench> m_bench;
    quint16 m_port = 0;
};

void tst_deviceDatagram::init()
{
    QGlobal::instance()->deviceName = kOldName;
}

void tst_deviceDatagram::totals_data()
{
    addColumns();
    QTest::newRow("exact") << kDatagram << true << kName;
    QTest::newRow("bytes behind T") << kDatagram + "behind" << true << kName;
    QTest::newRow("above the datagram") << withTotal(32767) << true << kName;
    QTest::newRow("negative") << withTotal(-1) << true << kOldName;
    QTest::newRow("most negative") << withTotal(-32768) << true << kOldName;
    QTest::newRow("0") << withTotal(0) << true << kOldName;
    QTest::newRow("5") << withTotal(5) << true << kOldName;
    QTest::newRow("6, nothing") << withTotal(6) << true << kOldName;
    QTest::newRow("a block less") << withTotal(54) << false << kOldName;
    // The last block, filled up with zeros, deciphers to other bytes.
    QTest::newRow("no whole blocks") << withTotal(69) << false << kOldName;
    QTest::newRow("no bytes") << QByteArray() << true << kOldName;
    QTest::newRow("half of T") << kDatagram.left(5) << true << kOldName;
}

void tst_deviceDatagram::totals()
{
    QFETCH(QByteArray, bytes);
    QString name = kOldName;
    QTEST(readDeviceDatagram(bytes, name), "goesOn");
    QTEST(name, "name");
}

void tst_deviceDatagram::records_data()
{
    addColumns();
    const QByteArray other = withByte(kRecord, 8, 1);
    QTest::newRow("one") << kRecord << true << kName;
    QTest::newRow("padding of a whole block")
        << recordOf("12345678901234") + QByteArray(16, '\x10') << true << "12345678901234";
    QTest::newRow("wrong CRC, high byte") << withByte(kRecord, 61, 0) << false << kOldName;
    QTest::newRow("wrong CRC, low byte") << withByte(kRecord, 62, 0) << false << kOldName;
    QTest::newRow("what the CRC doesn't cover") << withByte(kRecord, 1, 'x') << true << kName;
    QTest::newRow("another type") << other << true << kOldName;
    QTest::newRow("type 0x0100") << withByte(kRecord, 9, 1) << true << kOldName;
    // The place of the CRC is counted from the first record's start, so that a second record
    // passes only when it repeats the first, whatever its own CRC.
    QTest::newRow("repeated") << kRecord + kRecord << true << kName;
    QTest::newRow("repeated, own CRC wrong") << kRecord + withByte(kRecord, 61, 0) << true << kName;
    QTest::newRow("second one different") << kRecord + recordOf("other") << false << kName;
    QTest::newRow("behind another type") << other + recordOf("other") << false << kOldName;
    QTest::newRow("behind one that holds its CRC") << other + kRecord << true << kName;
    QTest::newRow("no text") << recordOf("text", '\0') << true << kOldName;
    QTest::newRow("flag below zero") << recordOf("text", '\xFF') << true << "text";
    QTest::newRow("empty first line") << recordOf("\nrest") << true << "";
    QTest::newRow("text of nothing") << recordOf("") << true << "";
    QTest::newRow("zero in the text")
        << recordOf(QByteArray("a\0b", 3)) << true << QString(QLatin1String("a\0b", 3));
    QTest::newRow("no UTF-8") << recordOf("\xFF\xC3\n") << true << QString(2, QChar(0xFFFD));
    // 257 bytes are covered, of which the checksum takes the first.
    QTest::newRow("more than a byte counts")
        << recordOf(QByteArray(211, 't')) << true << QString(211, QLatin1Char('t'));
}

void tst_deviceDatagram::records()
{
    QFETCH(QByteArray, bytes);
    QString name = kOldName;
    QTEST(readDeviceRecords(bytes, name), "goesOn");
    QTEST(name, "name");
}

void tst_deviceDatagram::lengths_data()
{
    addColumns();
    const QByteArray rest(60, 'r');
    // Type 0: the place of the CRC has to lie inside, and what is covered.
    for (const int length : {-32768, -13, -12, -11, 100, 32767})
        QTest::addRow("type 0, %d", length)
            << headOf(qint16(length), 0) + rest << false << kOldName;
    QTest::newRow("type 0, 0, CRC right, flag beyond the end")
        << QByteArray(16, '\0') << false << kOldName;
    QTest::newRow("type 0, 0, CRC right throughout") << QByteArray(60, '\0') << false << kOldName;
    QTest::newRow("type 0, below 38, text")
        << QByteArray(12, '\0') + headOf(32767, 1) + rest << true << "";
    // Others are passed over, and may lead out behind, but neither out in front nor in a circle.
    for (const int length : {0, 38, 32767})
        QTest::addRow("another type, %d", length)
            << headOf(qint16(length), 1) + rest << true << kOldName;
    for (const int length : {-12, -13, -32768})
        QTest::addRow("another type, %d", length)
            << headOf(qint16(length), 1) + rest << false << kOldName;
    QTest::newRow("circle of two") << headOf(0, 1) + headOf(-24, 1) + rest << false << kOldName;
    QTest::newRow("back once, then out")
        << headOf(12, 1) + headOf(32767, 1) + headOf(-24, 1) + rest << true << kOldName;
    QTest::newRow("repeated, cut short") << kRecord + kRecord.left(50) << false << kName;
    // Of the second record's L + 8 = 258 bytes the checksum takes two, FA 00: that is FC0A.
    const QByteArray first = headOf(300, 1) + QByteArray(248, 'r') + QByteArray::fromHex("FC0A") +
                             QByteArray(50, 'r') + headOf(250, 0);
    QTest::newRow("text to the end")
        << first + QByteArray(248, 'r') << true << QString(212, QLatin1Char('r'));
    QTest::newRow("text beyond the end") << first + QByteArray(247, 'r') << false << kOldName;
    QTest::newRow("shorter than a walk takes") << QByteArray(15, '\0') << true << kOldName;
}

void tst_deviceDatagram::lengths()
{
    records();
}

/// A window with its link, bound on a free port.
void tst_deviceDatagram::openLink(const QString &peer)
{
    m_bench = std::make_unique<Bench>();
    QUdpSocket free;
    QVERIFY(free.bind(QHostAddress(QHostAddress::LocalHost)));
    m_port = free.localPort();
    free.close();
    (*m_bench)->CreateUDP(peer, 1, m_port, true);
    QCOMPARE(Bench::takeNotices().size(), 1);
    QGlobal::instance()->deviceName = kOldName;
}

void tst_deviceDatagram::send(QUdpSocket &from, const QByteArray &bytes)
{
    QCOMPARE(from.writeDatagram(bytes, QHostAddress(QHostAddress::LocalHost), m_port),
             qint64(bytes.size()));
}

QString tst_deviceDatagram::nameAfterCall()
{
    if (!QMetaObject::invokeMethod(m_bench->window(), "receiveUdpData"))
        return QStringLiteral("no such slot");
    return QGlobal::instance()->deviceName;
}

void tst_deviceDatagram::noSocket()
{
    m_bench = std::make_unique<Bench>();
    QCOMPARE(nameAfterCall(), kOldName);
}

void tst_deviceDatagram::namesTheDevice()
{
    openLink(QStringLiteral("127.0.0.1"));
    QUdpSocket peer;
    send(peer, kDatagram);
    QCOMPARE(nameAfterCall(), kName);
    QCOMPARE(nameAfterCall(), kName); // nothing waits any more
}

void tst_deviceDatagram::aMismatchLeavesTheRest()
{
    openLink(QStringLiteral("127.0.0.1"));
    QUdpSocket peer;
    send(peer, withByte(kDatagram, 22, 0));
    send(peer, kDatagram);
    QCOMPARE(nameAfterCall(), kOldName);
    QCOMPARE(nameAfterCall(), kName);
}

void tst_deviceDatagram::othersAreSkipped()
{
    openLink(QStringLiteral("127.0.0.1"));
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

NACELLE_TEST_MAIN(tst_deviceDatagram)
#include "tst_deviceDatagram.moc"
