#include "foundation/QGlobal.h"
#include "protocol/codec.h"
#include "protocol/gcuframe.h"
#include "tests/support/strictmain.h"

namespace {

QByteArray gcuFrame(const QByteArray &feedback)
{
    // clang-format off
    QByteArray frame = QByteArray::fromHex("8A5E") + encodeU16(quint16(71 + feedback.size())) +
                       QByteArray::fromHex("C8 11 A55A 0A00 F6FF"     // version 200, mode, flags, miss
                                           "D204 2EFB 0100"           // relative angles
                                           "FFFF 64EE FFFF"           // absolute angles
                                           "0F00 F1FF 0000"           // rates
                                           "C1C2C3C4C5C6C7 01"        // reserved, sub-frame
                                           "02 03 04 0180"            // versions, pod code, fault
                                           "39300000 24F2DF65 C0FBFBB6 A3A00000"
                                           "1400 FFFF D1D2D3D4D5D6");
    // clang-format on
    frame += feedback;
    appendCrc(frame);
    return frame;
}

QString valueAt(int offset, const QByteArray &frame)
{
    for (const auto &row : kGcuRows) {
        if (row.field.offset == offset)
            return fieldText(row.field, frame);
    }
    return QStringLiteral("no such row");
}

} // namespace

class tst_gcuframe : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QGlobal::instance()->languageChinese = true; }
    void parse();
    void values_data();
    void values();
    void feedback_data();
    void feedback();
    void resultOfShortFrames();
    void cutFrames();
};

void tst_gcuframe::parse()
{
    GcuFrame record;
    parseGcuFrame(gcuFrame(QByteArray::fromHex("2002")), record);
    QCOMPARE(int(record.header0), 0x8A);
    QCOMPARE(int(record.header1), 0x5E);
    QCOMPARE(int(record.length), 73);
    QCOMPARE(int(record.version), 200);
    QCOMPARE(int(record.workMode), 0x11);
    QCOMPARE(int(record.statusFlags0), 0xA5);
    QCOMPARE(int(record.statusFlags1), 0x5A);
    QCOMPARE(int(record.missHorizontal), 10);
    QCOMPARE(int(record.missVertical), -10);
    QCOMPARE(int(record.relativeX), 1234);
    QCOMPARE(int(record.relativeY), -1234);
    QCOMPARE(int(record.relativeZ), 1);
    QCOMPARE(int(record.absoluteRoll), -1);
    QCOMPARE(int(record.absolutePitch), -4508);
    QCOMPARE(int(record.absoluteYaw), 0xFFFF);
    QCOMPARE(int(record.rateX), 15);
    QCOMPARE(int(record.rateY), -15);
    QCOMPARE(int(record.rateZ), 0);
    QCOMPARE(int(record.reserved1[0]), 0xC1);
    QCOMPARE(int(record.subFrameHeader), 1);
    QCOMPARE(int(record.hardwareVersion), 2);
    QCOMPARE(int(record.firmwareVersion), 3);
    QCOMPARE(int(record.podCode), 4);
    QCOMPARE(int(record.faultCode0), 1);
    QCOMPARE(int(record.faultCode1), 0x80);
    QCOMPARE(record.targetDistance, 12345);
    QCOMPARE(record.targetLongitude, 1709175332);
    QCOMPARE(record.targetLatitude, -1225000000);
    QCOMPARE(record.targetAltitude, 41123);
    QCOMPARE(int(record.zoomCamera1), 20);
    QCOMPARE(int(record.zoomCamera2), 0xFFFF);
    QCOMPARE(int(record.reserved2[5]), 0xD6);
    QCOMPARE(int(record.feedbackCode), 0x20);
    QCOMPARE(record.feedbackName, QByteArray::fromHex("C5C4D5D5"));
    QCOMPARE(int(record.feedbackResult), 2);
    QVERIFY(record.crcValid);
}

void tst_gcuframe::values_data()
{
    QTest::addColumn<int>("offset");
    QTest::addColumn<QString>("text");
    QTest::newRow("version unsigned") << 4 << "200";
    QTest::newRow("mode") << 5 << QStringLiteral("指向锁定模式");
    QTest::newRow("status flags have no value") << 6 << "";
    QTest::newRow("miss") << 10 << "-10";
    QTest::newRow("relative angle") << 14 << "-12.34";
    QTest::newRow("yaw unsigned") << 22 << "655.35";
    QTest::newRow("rate in tenths") << 26 << "-1.5";
    QTest::newRow("distance in tenths") << 43 << "1234.5";
    QTest::newRow("longitude with 7 decimals") << 47 << "170.9175332";
    QTest::newRow("latitude") << 51 << "-122.5000000";
    QTest::newRow("altitude with 6 digits") << 55 << "41.123";
    QTest::newRow("zoom") << 59 << "2";
}

void tst_gcuframe::values()
{
    QFETCH(int, offset);
    QFETCH(QString, text);
    QCOMPARE(valueAt(offset, gcuFrame({})), text);
}

void tst_gcuframe::feedback_data()
{
    QTest::addColumn<QByteArray>("area");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("renewed");
    const auto row = [](const char *hex, const char *text, const char *renewed) {
        QTest::newRow(*hex ? hex : "none")
            << QByteArray::fromHex(hex) << QString::fromUtf8(text) << QString::fromUtf8(renewed);
    };
    row("", "无命令", "无命令");
    row("20", "拍照", "拍照");
    row("2000", "拍照成功", "拍照成功");
    row("2001", "拍照失败", "拍照失败");
    // A renewed text knows no third word: this difference is meant.
    row("2002", "拍照执行中", "拍照失败");
    row("20000102", "拍照成功", "拍照成功");
    row("0200", "成功", "成功");
    row("1600", "凝视(地理坐标引导)成功", "凝视(地理坐标引导)成功");
}

void tst_gcuframe::feedback()
{
    QFETCH(QByteArray, area);
    QTEST(feedbackText(gcuFrame(area)), "text");
    QTEST(renewedFeedbackText(area), "renewed");
}

void tst_gcuframe::resultOfShortFrames()
{
    GcuFrame record;
    parseGcuFrame(gcuFrame(QByteArray::fromHex("20")), record);
    QCOMPARE(int(record.feedbackResult), 0xFF);
    const QByteArray shortest = gcuFrame({});
    parseGcuFrame(shortest, record);
    QCOMPARE(int(record.feedbackCode), int(quint8(shortest.at(69))));
    QCOMPARE(int(record.feedbackResult), int(quint8(shortest.at(70))));
}

void tst_gcuframe::cutFrames()
{
    const QByteArray whole = gcuFrame(QByteArray::fromHex("2001"));
    for (int size = 1; size < whole.size(); ++size) {
        GcuFrame record;
        parseGcuFrame(whole.left(size), record);
        QVERIFY(!record.crcValid);
        QCOMPARE(int(record.workMode), size > 5 ? 0x11 : 0);
        QCOMPARE(int(record.zoomCamera1), size > 59 ? 20 : 0);
    }
}

NACELLE_TEST_MAIN(tst_gcuframe)
#include "tst_gcuframe.moc"
