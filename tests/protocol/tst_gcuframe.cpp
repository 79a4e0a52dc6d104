#include "foundation/QGlobal.h"
#include "protocol/gcuframe.h"
#include "tests/support/strictmain.h"

namespace {

/// A frame with its length, feedback area and CRC in hexadecimal, divided by blanks.
QByteArray gcuFrame(const char *lengthAreaCrc)
{
    const QList<QByteArray> parts = QByteArray(lengthAreaCrc).split(' ');
    // clang-format off
    return QByteArray::fromHex("8A5E" + parts[0] + "00"
                               "C8 11 A55A 0A00 F6FF"     // version 200, mode, flags, miss
                               "D204 2EFB 0100"           // relative angles
                               "FFFF 64EE FFFF"           // absolute angles
                               "0F00 F1FF 0000"           // rates
                               "C1C2C3C4C5C6C7 01"        // reserved, sub-frame
                               "02 03 04 0180"            // versions, pod code, fault
                               "39300000 24F2DF65 C0FBFBB6 A3A00000"
                               "1400 FFFF D1D2D3D4D5D6" + parts[1] + parts[2]);
    // clang-format on
}

const char *const kWithoutFeedback = "47  C8E4";

} // namespace

class tst_gcuframe : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QGlobal::instance()->languageChinese = true; }
    void parse();
    void texts();
    void feedback_data();
    void feedback();
    void resultOfShortFrames();
    void cutFrames();
};

void tst_gcuframe::parse()
{
    GcuFrame r;
    parseGcuFrame(gcuFrame("49 2002 642F"), r);
    const QVector<int> values = {
        r.header0,         r.header1,         r.length,         r.version,        r.workMode,
        r.statusFlags0,    r.statusFlags1,    r.missHorizontal, r.missVertical,   r.relativeX,
        r.relativeY,       r.relativeZ,       r.absoluteRoll,   r.absolutePitch,  r.absoluteYaw,
        r.rateX,           r.rateY,           r.rateZ,          r.reserved1[0],   r.subFrameHeader,
        r.hardwareVersion, r.firmwareVersion, r.podCode,        r.faultCode0,     r.faultCode1,
        r.targetDistance,  r.targetLongitude, r.targetLatitude, r.targetAltitude, r.zoomCamera1,
        r.zoomCamera2,     r.reserved2[5],    r.feedbackCode,   r.feedbackResult};
    const QVector<int> expected = {
        0x8A, 0x5E,  73,         200,         0x11,  0xA5, 0x5A,   10,   -10,  1234, -1234, 1,
        -1,   -4508, 0xFFFF,     15,          -15,   0,    0xC1,   1,    2,    3,    4,     1,
        0x80, 12345, 1709175332, -1225000000, 41123, 20,   0xFFFF, 0xD6, 0x20, 2};
    QCOMPARE(values, expected);
    QCOMPARE(r.feedbackName, QByteArray::fromHex("C5C4D5D5")); // "拍照" in GBK
    QVERIFY(r.crcValid);
}

/// What a form shows of each row: version and yaw unsigned, rates, distance and zoom in tenths,
/// longitude and latitude with 7 decimals; nothing for flags, reserved bytes, area and CRC.
void tst_gcuframe::texts()
{
    QString texts;
    for (const auto &row : kGcuRows)
        texts += fieldText(row.field, gcuFrame(kWithoutFeedback)) + ' ';
    QCOMPARE(texts.section(' ', 1), QString("71 200 指向锁定模式  10 -10 12.34 -12.34 0.01 -0.01 "
                                            "-45.08 655.35 1.5 -1.5 0  1 2 3 4  1234.5 "
                                            "170.9175332 -122.5000000 41.123 2 6553.5    "));
}

void tst_gcuframe::feedback_data()
{
    QTest::addColumn<QByteArray>("frame");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("renewed");
    const auto row = [](const char *frame, const char *text, const char *renewed) {
        QTest::newRow(frame) << gcuFrame(frame) << text << renewed;
    };
    row(kWithoutFeedback, "无命令", "无命令");
    row("48 20 FB7A", "拍照", "拍照");
    row("49 2000 446D", "拍照成功", "拍照成功");
    row("49 2001 544C", "拍照失败", "拍照失败");
    // A renewed text knows no third word: a switch of language makes it a failure.
    row("49 2002 642F", "拍照执行中", "拍照失败");
    row("4B 20000102 6F35", "拍照成功", "拍照成功");
    row("49 0200 24E9", "成功", "成功");
    row("49 1600 EB5E", "凝视(地理坐标引导)成功", "凝视(地理坐标引导)成功");
}

void tst_gcuframe::feedback()
{
    QFETCH(QByteArray, frame);
    QTEST(feedbackText(frame), "text");
    QTEST(renewedFeedbackText(frame.mid(69).chopped(2)), "renewed");
}

void tst_gcuframe::resultOfShortFrames()
{
    GcuFrame record;
    parseGcuFrame(gcuFrame("48 20 FB7A"), record);
    QCOMPARE(int(record.feedbackResult), 0xFF);
    parseGcuFrame(gcuFrame(kWithoutFeedback), record); // its CRC bytes stand there
    QCOMPARE(int(record.feedbackCode), 0xC8);
    QCOMPARE(int(record.feedbackResult), 0xE4);
}

void tst_gcuframe::cutFrames()
{
    const QByteArray whole = gcuFrame("49 2001 544C");
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
