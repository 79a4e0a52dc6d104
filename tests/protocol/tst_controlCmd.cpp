#include "foundation/QGlobal.h"
#include "protocol/controlCmd.h"
#include "protocol/dataPacketAnalysis.h"
#include "tests/support/strictmain.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QTextEdit>

#include <memory>

class tst_controlCmd : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        QGlobal::instance()->languageChinese = true;
        m_page = std::make_unique<dataPacketAnalysis>();
        m_page->show();
        open("00 ");
    }
    void cleanup()
    {
        m_dialog.reset();
        m_page.reset();
    }
    void eachItem_data();
    void eachItem();
    void labels();
    void opensOnOddTexts_data();
    void opensOnOddTexts();
    void everyFieldRefreshesThePreview();
    void confirmedCommandGoesIntoTheForm();
    void cancelLeavesTheForm();
    void whatIsNoCommandEmptiesTheForm();

private:
    template <typename T>
    T *find(const QString &name)
    {
        return m_dialog->findChild<T *>(name);
    }
    QComboBox *items() { return find<QComboBox>("comboBox_Cmd"); }
    QString preview() { return find<QTextEdit>("textEdit_16")->toPlainText(); }
    /// What stands in the fields from top to bottom, all of them or the enabled ones.
    QString fields(bool enabledOnly = true)
    {
        QStringList texts;
        for (const char *row : {"4", "5", "6", "7", "10", "11"}) {
            const auto *field = find<QLineEdit>(QString("lineEdit_") + row);
            if (field->isEnabled() || !(enabledOnly || field->text().isEmpty()))
                texts << field->text();
        }
        return texts.join(' ');
    }
    /// The captions of the fields, from top to bottom.
    QString captions()
    {
        QStringList texts;
        for (const char *row : {"4", "5", "6", "7", "10", "11"})
            texts << find<QLabel>(QString("label_") + row)->text();
        texts.removeAll(QString());
        return texts.join(' ');
    }
    QString form(const char *label) { return m_page->findChild<QLabel *>(label)->text(); }
    void pick(int index)
    {
        QTest::keyClick(items(), Qt::Key_Home);
        for (int i = 0; i < index; ++i)
            QTest::keyClick(items(), Qt::Key_Down);
    }
    void click(const char *button) { QTest::mouseClick(find<QPushButton>(button), Qt::LeftButton); }
    /// Presses a button that closes the dialog: it doesn't stay behind unseen.
    void closeBy(const char *button)
    {
        click(button);
        const QPointer<controlCmd> closed = m_dialog.release();
        QTRY_VERIFY(!closed);
    }
    void type(const char *row, const QString &text)
    {
        auto *field = find<QLineEdit>(QString("lineEdit_") + row);
        field->selectAll();
        QTest::keyClick(field, Qt::Key_Delete);
        QTest::keyClicks(field, text);
    }
    /// Opens the dialog by the workbench's own button, on the command that stands in its form.
    void open(const QString &command)
    {
        m_dialog.reset();
        m_page->findChild<QLabel *>("label294")->setText(command);
        QTest::mouseClick(m_page->findChild<QPushButton *>("pushButton_Cmd"), Qt::LeftButton);
        for (QWidget *widget : QApplication::topLevelWidgets()) {
            if (auto *dialog = qobject_cast<controlCmd *>(widget))
                m_dialog.reset(dialog);
        }
        QVERIFY(m_dialog && QTest::qWaitForWindowExposed(m_dialog.get()));
    }

    std::unique_ptr<dataPacketAnalysis> m_page;
    std::unique_ptr<controlCmd> m_dialog;
};

void tst_controlCmd::eachItem_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<QStringList>("texts"); // fields and preview; a command to open on, its fields
    auto row = [index = 0](const char *item, const char *fields, const char *preview,
                           const char *command = nullptr, const char *opened = "") mutable {
        QTest::newRow(item) << index++
                            << QStringList{fields, preview, command ? command : preview, opened};
    };
    // clang-format off
    row("空命令", "", "00 ");
    row("吊舱校准", "", "01 ");
    row("回中", "", "03 ");
    row("OSD坐标", "0", "06 00 ", "06 01 ", "1");
    row("图像自动翻转", "0", "07 00 ", "07 FF ", "-1");
    row("时区", "0", "08 00 ", "08 F8 ", "-8");
    row("角度控制", "", "10 ");
    row("FPV", "", "1C ");
    row("锁定", "", "11 ");
    row("跟随", "", "12 ");
    row("俯拍", "", "13 ");
    row("欧拉角控制", "", "14 ");
    row("凝视(地理坐标引导)", "0 0 0", "15 00 00 00 00 00 00 00 00 00 00 00 00 ",
        "15 24 F2 DF 65 16 EE AA 16 A3 A0 00 00 ", "170.9175332 38.0300822 41.123");
    row("凝视(地理目标锁定)", "", "");
    row("跟踪", "0 0 0 0 0", "17 01 00 00 00 00 00 00 00 00 00 ",
        "17 01 02 64 00 C8 00 FF FF 00 80 ", "2 100 200 65535 32768");
    row("指点平移", "0 0", "1A 01 00 00 00 00 ", "1A 01 64 00 FF FF ", "100 65535");
    row("拍照", "", "20 01 ");
    row("录像开始/停止", "", "21 01 ");
    row("连续放大", "1", "22 01 ", "22 02 ", "2");
    row("连续缩小", "1", "23 01 ", "23 80 ", "-128");
    row("停止变倍", "1", "24 01 ", "24 7F ", "127");
    row("指定倍率", "1 0", "25 01 00 00 ", "25 01 F6 FF ", "1 -10");
    row("聚焦", "", "26 01 ");
    row("调色盘", "0", "2A 02 00 ", "2A 02 FE ", "-2");
    row("夜视", "0", "2B 01 00 ", "2B 01 01 ", "1");
    row("OSD", "0", "73 00 ", "73 01 ", "1");
    row("画中画", "0", "74 00 ", "74 04 ", "4");
    row("目标识别", "0", "75 00 ", "75 FF ", "-1");
    row("变焦相机数字变焦", "0", "76 00 ", "76 01 ", "1");
    row("补光", "0", "80 00 ", "80 FF ", "255"); // the one unsigned byte
    row("连续测距", "0", "81 00 ", "81 02 ", "2");
    row("区域测温", "1 0 0 0 0 0", "30 01 00 00 00 00 00 00 00 00 00 ",
        "30 01 FF 01 00 02 00 03 00 FF FF ", "1 -1 1 2 3 65535");
    row("温度报警", "1 0 0 0", "31 01 00 00 00 00 00 ", "31 01 01 23 00 DD FF ", "1 1 35 -35");
    row("等温线", "1 0 0 0", "32 01 00 00 00 00 00 ", "32 FF 02 C8 00 40 9C ", "-1 2 200 -25536");
    row("指点测温", "1 0 0 0", "33 01 00 00 00 00 00 ", "33 01 01 88 13 FF FF ", "1 1 5000 65535");
    // clang-format on
}

void tst_controlCmd::eachItem()
{
    QFETCH(int, index);
    QFETCH(QStringList, texts);
    pick(31); // all six rows in use before
    pick(index);
    QCOMPARE(items()->currentText(), QString(QTest::currentDataTag()));
    QCOMPARE(fields(false), texts[0]);
    QCOMPARE(fields(), texts[0]);
    const QMap<QString, QString> expected = {
        {"补光", "TT（DEC）:"},
        {"调色盘", "TT（DEC）:"},
        {"连续放大", "KK:"},
        {"连续缩小", "KK:"},
        {"停止变倍", "KK:"},
        {"指定倍率", "KK: ZZ ZZ（DEC）:"},
        {"凝视(地理坐标引导)", "经度: 纬度: 高度(m):"},
        {"跟踪", "TT: XO X0（DEC）: Y0 Y0（DEC）: X1 X1（DEC）: Y1 Y1（DEC）:"},
        {"区域测温", "KK: TT: XO X0（DEC）: Y0 Y0（DEC）: X1 X1（DEC）: Y1 Y1（DEC）:"},
        {"温度报警", "KK: TT: 上限(DEC): 下限(DEC):"},
        {"等温线", "KK: TT: 上限(DEC): 下限(DEC):"},
        {"指点测温", "KK: TT: XO X0（DEC）: Y0 Y0（DEC）:"},
        {"指点平移", "XO X0（DEC）: Y0 Y0（DEC）:"}};
    QCOMPARE(captions(), expected.value(items()->currentText(), texts[0].isEmpty() ? "" : "TT:"));
    QCOMPARE(preview(), texts[1]);
    QCOMPARE(items()->count(), 35);
    if (texts[2].isEmpty())
        return;
    open(texts[2]);
    QCOMPARE(items()->currentText(), QString(QTest::currentDataTag()));
    QCOMPARE(fields(), texts[3]);
    QCOMPARE(preview(), texts[2]);
}

/// The labels of each item that has any, by its place in the list.
void tst_controlCmd::labels()
{
    const QString box = "XO X0（DEC）:,Y0 Y0（DEC）:", corner = ",X1 X1（DEC）:,Y1 Y1（DEC）:";
    const QString limits = "KK:,TT:,上限(DEC):,下限(DEC):";
    QMap<int, QString> expected = {{12, "经度:,纬度:,高度(m):"},
                                   {14, "TT:," + box + corner},
                                   {15, box},
                                   {21, "KK:,ZZ ZZ（DEC）:"},
                                   {23, "TT（DEC）:"},
                                   {29, "TT（DEC）:"},
                                   {31, "KK:,TT:," + box + corner},
                                   {32, limits},
                                   {33, limits},
                                   {34, "KK:,TT:," + box}};
    for (const int item : {3, 4, 5, 24, 25, 26, 27, 28, 30})
        expected[item] = "TT:";
    for (const int item : {18, 19, 20})
        expected[item] = "KK:";
    for (int item = 0; item < items()->count(); ++item) {
        items()->setCurrentIndex(item);
        QStringList texts;
        for (const char *row : {"4", "5", "6", "7", "10", "11"})
            texts << find<QLabel>(QString("label_") + row)->text();
        texts.removeAll(QString());
        QCOMPARE(items()->itemText(item) + ": " + texts.join(','),
                 items()->itemText(item) + ": " + expected.value(item));
    }
}

void tst_controlCmd::opensOnOddTexts_data()
{
    QTest::addColumn<QStringList>("texts"); // item and fields
    const auto row = [](const char *command, const char *item, const char *fields) {
        QTest::newRow(command) << QStringList{item, fields};
    };
    row("16 ", "凝视(地理坐标引导)", "0.0000000 0.0000000 0");
    row("15 C0 FB FB B6 00 00 00 00 40 E2 01 00 ", "凝视(地理坐标引导)",
        "-122.5000000 0.0000000 123.456");
    row("15 24 F2 ", "凝视(地理坐标引导)", "0.0061988 0.0000000 0");
    row("1B 02 FB FF FF 7F 80 ", "", "2 -5 32767 -128"); // shown, but not to be changed
    row("", "空命令", "");
    row("06 ", "OSD坐标", "0");
    row("80 ", "补光", "0");
    row("2A 02 ", "调色盘", "0");
    row("30 01 FF 01 ", "区域测温", "1 -1 1 0 0 0");
    row("31 01 01 23 00 DD ", "温度报警", "1 1 35 221");
    row("02 01 ", "", "");
    row("FF ", "", "");
    row("20 01 05 ", "拍照", "");
}

void tst_controlCmd::opensOnOddTexts()
{
    QFETCH(QStringList, texts);
    open(QTest::currentDataTag());
    QCOMPARE(items()->currentText(), texts[0]);
    QCOMPARE(fields(false), texts[1]);
    QCOMPARE(fields(), texts[0].isEmpty() ? QString() : texts[1]);
    QCOMPARE(preview(), QString(QTest::currentDataTag()));
}

void tst_controlCmd::everyFieldRefreshesThePreview()
{
    pick(31);
    const char *const keys[][2] = {{"4", ""},    {"5", "-1"},     {"6", "100"},
                                   {"7", "200"}, {"10", "65535"}, {"11", "6"}};
    for (const auto &key : keys)
        type(key[0], key[1]);
    QCOMPARE(preview(), QString("30 00 FF 64 00 C8 00 FF FF 06 00 "));
    type("11", "65536"); // beyond the range, so 0
    QCOMPARE(preview(), QString("30 00 FF 64 00 C8 00 FF FF 00 00 "));
    pick(32);
    type("6", "35.9");
    QCOMPARE(preview(), QString("31 01 00 23 00 00 00 "));
}

void tst_controlCmd::confirmedCommandGoesIntoTheForm()
{
    pick(12);
    type("4", "170.9175332");
    type("5", "38.0300822");
    type("6", "41.123");
    closeBy("pushButton_Ok");
    QCOMPARE(form("label293"), QString("凝视(地理坐标引导)"));
    QCOMPARE(form("label294"), QString("15 24 F2 DF 65 16 EE AA 16 A3 A0 00 00 "));
    QCOMPARE(form("label34"), QString("54 00 "));
    open("06 FF "); // shown as -1, and the same byte again
    click("pushButton_Ok");
    QCOMPARE(form("label294"), QString("06 FF "));
}

void tst_controlCmd::cancelLeavesTheForm()
{
    pick(16);
    click("pushButton_Ok");
    open("20 01 ");
    pick(31);
    closeBy("pushButton_Cancel");
    QCOMPARE(form("label293"), QString("拍照"));
    QCOMPARE(form("label294"), QString("20 01 "));
    QCOMPARE(form("label33"), QString("73"));
}

/// The fourteenth item, and a command that no item offers.
void tst_controlCmd::whatIsNoCommandEmptiesTheForm()
{
    for (const bool isItem : {true, false}) {
        open(isItem ? "20 01 " : "1B 02 FB FF FF 7F 80 ");
        if (isItem)
            pick(13);
        click("pushButton_Ok");
        QCOMPARE(form("label33"), QString("71"));
        QCOMPARE(form("label294"), QString());
    }
}

NACELLE_TEST_MAIN(tst_controlCmd)
#include "tst_controlCmd.moc"
