#include "foundation/QGlobal.h"
#include "protocol/commands.h"
#include "protocol/modes.h"
#include "tests/support/strictmain.h"

class tst_commands : public QObject
{
    Q_OBJECT

private slots:
    void init() { QGlobal::instance()->languageChinese = true; }
    void bytes_data();
    void bytes();
    void namesInTheCurrentLanguage();
    void namesOfCodes();
    void modes();
};

void tst_commands::bytes_data()
{
    QTest::addColumn<QStringList>("params");
    QTest::addColumn<QByteArray>("expected");
    const auto row = [](const char *name, const QStringList &params, const char *hex) {
        QTest::newRow(name) << params << QByteArray::fromHex(hex);
    };
    row("空命令", {}, "00");
    row("吊舱校准", {"9"}, "01");
    row("回中", {}, "03");
    row("OSD坐标", {"-1"}, "06FF");
    row("图像自动翻转", {"1"}, "0701");
    row("时区", {"-8"}, "08F8");
    row("角度控制", {}, "10");
    row("锁定", {}, "11");
    row("跟随", {}, "12");
    row("俯拍", {}, "13");
    row("欧拉角控制", {}, "14");
    row("凝视(地理坐标引导)", {"170.9175332", "38.0300822", "41.123"},
        "1524F2DF6516EEAA16A3A00000");
    row("凝视(地理坐标锁定)", {}, "16");
    row("跟踪", {"1", "100", "200", "65535", "65536"}, "1701016400C800FFFF0000");
    row("指点平移", {"100", "200", "7", "7", "7", "7"}, "1A016400C800");
    row("外部图像跟踪", {"1", "-5", "32767", "300"}, "1B01FBFFFF7F2C");
    row("FPV", {}, "1C");
    row("拍照", {"5", "6"}, "2001");
    row("录像开始/停止", {}, "2101");
    row("连续放大", {"2"}, "2202");
    row("连续缩小", {"1"}, "2301");
    row("停止变倍", {"1"}, "2401");
    row("指定倍率", {"1", "-10"}, "2501F6FF");
    row("聚焦", {}, "2601");
    row("调色盘", {"3"}, "2A0203");
    row("夜视", {"1"}, "2B0101");
    row("区域测温", {"1", "2", "3", "4", "5", "6"}, "3001020300040005000600");
    row("温度报警", {"1", "1", "35.9", "-35.9"}, "3101012300DDFF");
    row("等温线", {"1", "2", "200.9", "40000"}, "320102C800409C");
    row("指点测温", {"1", "1", "5000", "5000"}, "33010188138813");
    row("OSD", {"1"}, "7301");
    row("画中画", {"4"}, "7404");
    row("目标识别", {"x"}, "7500");
    row("变焦相机数字变焦", {""}, "7600");
    row("补光", {"255"}, "80FF");
    row("连续测距", {"2"}, "8102");
    // The dialog's fourteenth item is the name of no command.
    row("凝视(地理目标锁定)", {"1"}, "");
}

void tst_commands::bytes()
{
    QFETCH(QStringList, params);
    QFETCH(QByteArray, expected);
    while (params.size() < 6)
        params << QString();
    const QString name = QString::fromUtf8(QTest::currentDataTag());
    QCOMPARE(commandBytes(name, params[0], params[1], params[2], params[3], params[4], params[5]),
             expected);
    if (!expected.isEmpty() && expected != "\x16")
        QCOMPARE(commandName(quint8(expected.at(0))), name);
}

void tst_commands::namesInTheCurrentLanguage()
{
    QGlobal::instance()->languageChinese = false;
    const QString english = commandName(0x20);
    QVERIFY(english != QStringLiteral("拍照"));
    QCOMPARE(commandBytes(english), QByteArray::fromHex("2001"));
    QCOMPARE(commandBytes(QStringLiteral("拍照")), QByteArray());
    QStringList names;
    for (const CommandRow &row : kCommands)
        names << QGlobal::instance()->translate(QString::fromUtf8(row.name));
    QCOMPARE(names.removeDuplicates(), 0);
}

/// Code 0x16 is shown by the name of 0x15.
void tst_commands::namesOfCodes()
{
    QCOMPARE(commandName(0x16), QStringLiteral("凝视(地理坐标引导)"));
    QCOMPARE(commandNameGbk(0x16), commandNameGbk(0x15));
    QCOMPARE(commandNameGbk(0x11), QByteArray::fromHex("CBF8B6A8")); // "锁定"
    for (const int code : {0x02, 0x18, 0xFF}) {
        QCOMPARE(commandName(quint8(code)), QString());
        QVERIFY(commandNameGbk(quint8(code)).isNull());
    }
}

void tst_commands::modes()
{
    const QStringList names =
        QStringLiteral(",角度控制模式,指向锁定模式,指向跟随模式,俯拍模式,欧拉角控制模式,,"
                       "凝视模式,跟踪模式,,,,,FPV模式,,")
            .split(QLatin1Char(','));
    for (int i = 0; i < names.size(); ++i)
        QCOMPARE(modeName(quint8(0x0F + i)), names.at(i));
    QCOMPARE(modeName(0), QString());
}

NACELLE_TEST_MAIN(tst_commands)
#include "tst_commands.moc"
