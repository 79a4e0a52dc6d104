#include "foundation/QGlobal.h"
#include "protocol/controlCmd.h"
#include "protocol/dataPacketAnalysis.h"
#include "tests/support/strictmain.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTextEdit>

#include <memory>

/// The input rows from top to bottom.
static const QList<const char *> kRows{"4", "5", "6", "7", "10", "11"};

class tst_controlCmd : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void itemsInTheirOrder();
    void rowsOfEachItem_data();
    void rowsOfEachItem();
    void opensOnEachCommand_data();
    void opensOnEachCommand();
    void everyFieldRefreshesThePreview();
    void confirmedCommandGoesIntoTheForm();
    void cancelLeavesTheForm();
    void itemThatIsNoCommandEmptiesTheForm();
    void byteOfAllOnesOpensAsMinusOne();
    void unofferedCommandEmptiesTheFormWhenConfirmed();
    void englishTexts();
    void blocksTheRest();

private:
    template <typename T>
    T *find(const QString &name)
    {
        T *found = m_dialog->findChild<T *>(name);
        if (!found)
            qFatal("no widget %s", qPrintable(name));
        return found;
    }
    QComboBox *items() { return find<QComboBox>("comboBox_Cmd"); }
    QString preview() { return find<QTextEdit>("textEdit_16")->toPlainText(); }
    QLineEdit *field(const QString &row) { return find<QLineEdit>("lineEdit_" + row); }
    /// Texts of the enabled fields.
    QStringList openFields()
    {
        QStringList texts;
        for (const char *row : kRows) {
            if (field(row)->isEnabled())
                texts << field(row)->text();
        }
        return texts;
    }
    QStringList labels()
    {
        QStringList texts;
        for (const char *row : kRows) {
            const QString text = find<QLabel>(QString("label_") + row)->text();
            if (!text.isEmpty())
                texts << text;
        }
        return texts;
    }
    QString form(const char *label) { return m_page->findChild<QLabel *>(label)->text(); }
    void pick(int index)
    {
        QTest::keyClick(items(), Qt::Key_Home);
        for (int i = 0; i < index; ++i)
            QTest::keyClick(items(), Qt::Key_Down);
    }
    void click(const char *button) { QTest::mouseClick(find<QPushButton>(button), Qt::LeftButton); }
    void type(const char *row, const QString &text)
    {
        field(row)->selectAll();
        QTest::keyClicks(field(row), text);
    }
    /// Opens the dialog by the workbench's own button, on the command that stands in its form.
    void open();

    std::unique_ptr<dataPacketAnalysis> m_page;
    std::unique_ptr<controlCmd> m_dialog;
};

void tst_controlCmd::init()
{
    QGlobal::instance()->languageChinese = true;
    m_page = std::make_unique<dataPacketAnalysis>();
    m_page->show();
    open();
}

void tst_controlCmd::cleanup()
{
    m_dialog.reset();
    m_page.reset();
}

void tst_controlCmd::open()
{
    m_dialog.reset();
    QTest::mouseClick(m_page->findChild<QPushButton *>("pushButton_Cmd"), Qt::LeftButton);
    for (QWidget *widget : QApplication::topLevelWidgets()) {
        if (auto *dialog = qobject_cast<controlCmd *>(widget))
            m_dialog.reset(dialog);
    }
    QVERIFY(m_dialog);
    QVERIFY(QTest::qWaitForWindowExposed(m_dialog.get()));
}

void tst_controlCmd::itemsInTheirOrder()
{
    const auto expected =
        QString("空命令,吊舱校准,回中,OSD坐标,图像自动翻转,时区,角度控制,FPV,锁定,跟随,俯拍,"
                "欧拉角控制,凝视(地理坐标引导),凝视(地理目标锁定),跟踪,指点平移,拍照,录像开始/停止,"
                "连续放大,连续缩小,停止变倍,指定倍率,聚焦,调色盘,夜视,OSD,画中画,目标识别,"
                "变焦相机数字变焦,补光,连续测距,区域测温,温度报警,等温线,指点测温")
            .split(',');
    QStringList shown;
    for (int i = 0; i < items()->count(); ++i)
        shown << items()->itemText(i);
    QCOMPARE(shown, expected);
}

void tst_controlCmd::rowsOfEachItem_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<QStringList>("labels");
    QTest::addColumn<QStringList>("fields");
    QTest::addColumn<QString>("preview");
    const QStringList x0y0{"XO X0（DEC）:", "Y0 Y0（DEC）:"};
    const QStringList corners = x0y0 + QStringList{"X1 X1（DEC）:", "Y1 Y1（DEC）:"};
    const QStringList limits{"KK:", "TT:", "上限(DEC):", "下限(DEC):"};
    const QStringList kkTt{"KK:", "TT:"};
    int index = 0;
    const auto row = [&index](const char *name, const QStringList &labels,
                              const QStringList &fields, const char *preview) {
        QTest::newRow(name) << index++ << labels << fields << QString(preview);
    };
    row("空命令", {}, {}, "00 ");
    row("吊舱校准", {}, {}, "01 ");
    row("回中", {}, {}, "03 ");
    row("OSD坐标", {"TT:"}, {"0"}, "06 00 ");
    row("图像自动翻转", {"TT:"}, {"0"}, "07 00 ");
    row("时区", {"TT:"}, {"0"}, "08 00 ");
    row("角度控制", {}, {}, "10 ");
    row("FPV", {}, {}, "1C ");
    row("锁定", {}, {}, "11 ");
    row("跟随", {}, {}, "12 ");
    row("俯拍", {}, {}, "13 ");
    row("欧拉角控制", {}, {}, "14 ");
    row("凝视(地理坐标引导)", {"经度:", "纬度:", "高度(m):"}, {"0", "0", "0"},
        "15 00 00 00 00 00 00 00 00 00 00 00 00 ");
    row("凝视(地理目标锁定)", {}, {}, "");
    row("跟踪", QStringList{"TT:"} + corners, {"0", "0", "0", "0", "0"},
        "17 01 00 00 00 00 00 00 00 00 00 ");
    row("指点平移", x0y0, {"0", "0"}, "1A 01 00 00 00 00 ");
    row("拍照", {}, {}, "20 01 ");
    row("录像开始/停止", {}, {}, "21 01 ");
    row("连续放大", {"KK:"}, {"1"}, "22 01 ");
    row("连续缩小", {"KK:"}, {"1"}, "23 01 ");
    row("停止变倍", {"KK:"}, {"1"}, "24 01 ");
    row("指定倍率", {"KK:", "ZZ ZZ（DEC）:"}, {"1", "0"}, "25 01 00 00 ");
    row("聚焦", {}, {}, "26 01 ");
    row("调色盘", {"TT（DEC）:"}, {"0"}, "2A 02 00 ");
    row("夜视", {"TT:"}, {"0"}, "2B 01 00 ");
    row("OSD", {"TT:"}, {"0"}, "73 00 ");
    row("画中画", {"TT:"}, {"0"}, "74 00 ");
    row("目标识别", {"TT:"}, {"0"}, "75 00 ");
    row("变焦相机数字变焦", {"TT:"}, {"0"}, "76 00 ");
    row("补光", {"TT（DEC）:"}, {"0"}, "80 00 ");
    row("连续测距", {"TT:"}, {"0"}, "81 00 ");
    row("区域测温", kkTt + corners, {"1", "0", "0", "0", "0", "0"},
        "30 01 00 00 00 00 00 00 00 00 00 ");
    row("温度报警", limits, {"1", "0", "0", "0"}, "31 01 00 00 00 00 00 ");
    row("等温线", limits, {"1", "0", "0", "0"}, "32 01 00 00 00 00 00 ");
    row("指点测温", kkTt + x0y0, {"1", "0", "0", "0"}, "33 01 00 00 00 00 00 ");
}

void tst_controlCmd::rowsOfEachItem()
{
    QFETCH(int, index);
    QFETCH(QStringList, labels);
    QFETCH(QStringList, fields);
    QFETCH(QString, preview);
    pick(31); // all six rows in use before
    pick(index);
    QCOMPARE(items()->currentText(), QString(QTest::currentDataTag()));
    QCOMPARE(this->labels(), labels);
    QCOMPARE(openFields(), fields);
    QCOMPARE(this->preview(), preview);
    for (const char *row : kRows)
        QVERIFY(field(row)->isEnabled() || field(row)->text().isEmpty());
}

void tst_controlCmd::opensOnEachCommand_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("item");
    QTest::addColumn<QStringList>("fields");
    QTest::addColumn<bool>("offered");
    const auto row = [](const char *text, const char *item, const QStringList &fields,
                        bool offered = true) {
        QTest::newRow(text) << QString(text) << QString(item) << fields << offered;
    };
    row("00 ", "空命令", {});
    row("01 ", "吊舱校准", {});
    row("03 ", "回中", {});
    row("06 01 ", "OSD坐标", {"1"});
    row("07 FF ", "图像自动翻转", {"-1"});
    row("08 F8 ", "时区", {"-8"});
    row("10 ", "角度控制", {});
    row("11 ", "锁定", {});
    row("12 ", "跟随", {});
    row("13 ", "俯拍", {});
    row("14 ", "欧拉角控制", {});
    row("15 24 F2 DF 65 16 EE AA 16 A3 A0 00 00 ", "凝视(地理坐标引导)",
        {"170.9175332", "38.0300822", "41.123"});
    row("15 C0 FB FB B6 00 00 00 00 40 E2 01 00 ", "凝视(地理坐标引导)",
        {"-122.5000000", "0.0000000", "123.456"});
    row("16 ", "凝视(地理坐标引导)", {"0.0000000", "0.0000000", "0"});
    row("17 01 02 64 00 C8 00 FF FF 00 80 ", "跟踪", {"2", "100", "200", "65535", "32768"});
    row("1A 01 64 00 FF FF ", "指点平移", {"100", "65535"});
    row("1B 02 FB FF FF 7F 80 ", "", {"2", "-5", "32767", "-128"}, false);
    row("1C ", "FPV", {});
    row("20 01 ", "拍照", {});
    row("21 01 ", "录像开始/停止", {});
    row("22 02 ", "连续放大", {"2"});
    row("23 80 ", "连续缩小", {"-128"});
    row("24 7F ", "停止变倍", {"127"});
    row("25 01 F6 FF ", "指定倍率", {"1", "-10"});
    row("26 01 ", "聚焦", {});
    row("2A 02 FE ", "调色盘", {"-2"});
    row("2B 01 01 ", "夜视", {"1"});
    row("30 01 FF 01 00 02 00 03 00 FF FF ", "区域测温", {"1", "-1", "1", "2", "3", "65535"});
    row("31 01 01 23 00 DD FF ", "温度报警", {"1", "1", "35", "-35"});
    row("32 FF 02 C8 00 40 9C ", "等温线", {"-1", "2", "200", "-25536"});
    row("33 01 01 88 13 FF FF ", "指点测温", {"1", "1", "5000", "65535"});
    row("73 01 ", "OSD", {"1"});
    row("74 04 ", "画中画", {"4"});
    row("75 FF ", "目标识别", {"-1"});
    row("76 00 ", "变焦相机数字变焦", {"0"});
    row("80 FF ", "补光", {"255"}); // the one unsigned byte
    row("81 02 ", "连续测距", {"2"});
    // Texts that hold less or other than a command.
    row("", "空命令", {});
    row("06 ", "OSD坐标", {"0"});
    row("80 ", "补光", {"0"});
    row("2A 02 ", "调色盘", {"0"});
    row("15 24 F2 ", "凝视(地理坐标引导)", {"0.0061988", "0.0000000", "0"});
    row("30 01 FF 01 ", "区域测温", {"1", "-1", "1", "0", "0", "0"});
    row("31 01 01 23 00 DD ", "温度报警", {"1", "1", "35", "221"});
    row("02 01 ", "", {});
    row("FF ", "", {});
    row("20 01 05 ", "拍照", {});
}

void tst_controlCmd::opensOnEachCommand()
{
    QFETCH(QString, text);
    QFETCH(QString, item);
    QFETCH(QStringList, fields);
    QFETCH(bool, offered);
    m_page->findChild<QLabel *>("label294")->setText(text);
    open();
    QCOMPARE(items()->currentText(), item);
    QCOMPARE(openFields(), offered ? fields : QStringList());
    for (int i = 0; i < kRows.size(); ++i)
        QCOMPARE(field(kRows[i])->text(), fields.value(i));
    QCOMPARE(labels().size(), offered ? fields.size() : 0);
    QCOMPARE(preview(), text);
}

void tst_controlCmd::everyFieldRefreshesThePreview()
{
    pick(31);
    type("4", "2");
    QCOMPARE(preview(), QString("30 02 00 00 00 00 00 00 00 00 00 "));
    type("5", "-1");
    QCOMPARE(preview(), QString("30 02 FF 00 00 00 00 00 00 00 00 "));
    type("6", "100");
    QCOMPARE(preview(), QString("30 02 FF 64 00 00 00 00 00 00 00 "));
    type("7", "200");
    QCOMPARE(preview(), QString("30 02 FF 64 00 C8 00 00 00 00 00 "));
    type("10", "65535");
    QCOMPARE(preview(), QString("30 02 FF 64 00 C8 00 FF FF 00 00 "));
    type("11", "65536");
    QCOMPARE(preview(), QString("30 02 FF 64 00 C8 00 FF FF 00 00 "));
    type("11", "6");
    QCOMPARE(preview(), QString("30 02 FF 64 00 C8 00 FF FF 06 00 "));
    // An emptied field counts as 0.
    field("4")->selectAll();
    QTest::keyClick(field("4"), Qt::Key_Delete);
    QCOMPARE(preview(), QString("30 00 FF 64 00 C8 00 FF FF 06 00 "));
}

void tst_controlCmd::confirmedCommandGoesIntoTheForm()
{
    pick(12);
    type("4", "170.9175332");
    type("5", "38.0300822");
    type("6", "41.123");
    click("pushButton_Ok");
    QVERIFY(!m_dialog->isVisible());
    QCOMPARE(form("label293"), QString("凝视(地理坐标引导)"));
    QCOMPARE(form("label294"), QString("15 24 F2 DF 65 16 EE AA 16 A3 A0 00 00 "));
    QCOMPARE(form("label33"), QString("84"));
    QCOMPARE(form("label34"), QString("54 00 "));
}

void tst_controlCmd::cancelLeavesTheForm()
{
    pick(16);
    click("pushButton_Ok");
    open();
    QCOMPARE(items()->currentText(), QString("拍照"));
    pick(31);
    click("pushButton_Cancel");
    QVERIFY(!m_dialog->isVisible());
    QCOMPARE(form("label293"), QString("拍照"));
    QCOMPARE(form("label294"), QString("20 01 "));
    QCOMPARE(form("label33"), QString("73"));
}

void tst_controlCmd::itemThatIsNoCommandEmptiesTheForm()
{
    pick(13);
    QCOMPARE(preview(), QString());
    click("pushButton_Ok");
    QCOMPARE(form("label33"), QString("71"));
    QCOMPARE(form("label294"), QString());
}

void tst_controlCmd::byteOfAllOnesOpensAsMinusOne()
{
    m_page->findChild<QLabel *>("label294")->setText("06 FF ");
    open();
    QCOMPARE(openFields(), QStringList("-1"));
    click("pushButton_Ok");
    QCOMPARE(form("label294"), QString("06 FF "));
}

void tst_controlCmd::unofferedCommandEmptiesTheFormWhenConfirmed()
{
    m_page->findChild<QLabel *>("label294")->setText("1B 02 FB FF FF 7F 80 ");
    open();
    QCOMPARE(items()->currentIndex(), -1);
    click("pushButton_Ok");
    QCOMPARE(form("label33"), QString("71"));
    QCOMPARE(form("label294"), QString());
}

void tst_controlCmd::englishTexts()
{
    QGlobal::instance()->languageChinese = false;
    m_page->findChild<QLabel *>("label294")->setText("15 24 F2 DF 65 16 EE AA 16 A3 A0 00 00 ");
    open();
    QCOMPARE(m_dialog->windowTitle(), QString("Command"));
    QCOMPARE(items()->currentText(), QString("Stare (geo guidance)"));
    QCOMPARE(labels(), QStringList({"Longitude:", "Latitude:", "Altitude(m):"}));
    QCOMPARE(openFields(), QStringList({"170.9175332", "38.0300822", "41.123"}));
    QCOMPARE(find<QLabel>("label")->text(), QString("Device"));
    QCOMPARE(find<QLabel>("label_2")->text(), QString("Value"));
    QCOMPARE(find<QLabel>("label_3")->text(), QString("Hex"));
    QCOMPARE(find<QPushButton>("pushButton_Ok")->text(), QString("OK"));
    QCOMPARE(find<QPushButton>("pushButton_Cancel")->text(), QString("Cancel"));
    pick(32);
    QCOMPARE(labels(), QStringList({"KK:", "TT:", "Upper(DEC):", "Lower(DEC):"}));
    type("6", "35.9");
    QCOMPARE(preview(), QString("31 01 00 23 00 00 00 "));
}

void tst_controlCmd::blocksTheRest()
{
    QCOMPARE(m_dialog->windowModality(), Qt::ApplicationModal);
    QCOMPARE(m_dialog->windowTitle(), QString("命令"));
    QVERIFY(!m_dialog->parent());
}

NACELLE_TEST_MAIN(tst_controlCmd)
#include "tst_controlCmd.moc"
