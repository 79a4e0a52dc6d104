#include "console/flowAnalysis.h"
#include "foundation/QGlobal.h"
#include "tests/support/carrier.h"
#include "tests/support/strictmain.h"

#include <QLineEdit>
#include <QPushButton>
#include <QSlider>
#include <QStyleOptionSlider>
#include <QValidator>

#include <memory>

static const QByteArray kCarrier = initialCarrier();

class tst_flowAnalysis : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        QGlobal::instance()->languageChinese = true;
        m_page = std::make_unique<flowAnalysis>();
        m_page->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_page.get()));
    }
    void cleanup() { m_page.reset(); }
    void commandWalk_data();
    void commandWalk();
    void oddDigitsMoveTheFrameByHalfAByte_data();
    void oddDigitsMoveTheFrameByHalfAByte();
    void longRawFieldIsCheckedOverItsLengthModulo256();
    void modeCommandOverridesUntilThePodReportsIt();
    void idleIgnoresTheSelection();
    void controlInputs_data();
    void controlInputs();
    void carrierBlock_data();
    void carrierBlock();
    void fieldsTakeKeysByTheirRules_data();
    void fieldsTakeKeysByTheirRules();
    void podModeShowsPanelAndButton();
    void selectionIsExclusiveInEachGroup();
    void sliderReadouts();
    void slidersSpringBackAndKeysStay();
    void heldRateIsAControlInput();

private:
    template <typename T>
    T *find(const char *name)
    {
        return m_page->findChild<T *>(QLatin1String(name));
    }
    void press(const char *button) { QTest::mouseClick(find<QPushButton>(button), Qt::LeftButton); }
    bool isChecked(const char *button) { return find<QPushButton>(button)->isChecked(); }
    /// Puts texts in as they are, past the entry rules: "315=0A;ratio=300" fills lineEdit_315 and
    /// lineEdit_ratio.
    void set(const QString &edits)
    {
        for (const QString &edit : edits.split(';', Qt::SkipEmptyParts))
            m_page->findChild<QLineEdit *>("lineEdit_" + edit.section('=', 0, 0))
                ->setText(edit.section('=', 1));
    }
    void type(QLineEdit *field, const QString &text)
    {
        field->setFocus();
        field->selectAll();
        QTest::keyClick(field, Qt::Key_Delete);
        QTest::keyClicks(field, text);
    }
    QString textOf(const char *object)
    {
        return find<QWidget>(object)->property("text").toString();
    }
    QByteArray frame() { return m_page->buildCommandFrame(false); }
    QByteArray controls() { return frame().mid(5, 7).toHex(); }

    std::unique_ptr<flowAnalysis> m_page;
};

void tst_flowAnalysis::commandWalk_data()
{
    QTest::addColumn<QStringList>("row"); // button, parameters, length, and what follows offset 68
    const auto row = [](const char *button, const char *edits, const char *size, const char *tail) {
        QTest::addRow("%s %s", button, edits) << QStringList{button, edits, size, tail};
    };
    row("calibrate", "", "48", "01 1B0E");
    row("photo", "", "49", "2001 E8B5");
    row("mid", "", "48", "03 3B4C");
    row("overlook", "", "48", "13 297D");
    row("record", "", "49", "2101 DB84");
    row("zoomin", "", "49", "2201 8ED7");
    row("zoomin", "315=fe", "49", "22FE 9027");
    row("zoomin", "315=", "49", "22 35F8");
    row("zoomout", "", "49", "2301 BDE6");
    row("end_zoom", "", "49", "2401 2471");
    row("focus", "", "49", "2601 4213");
    row("start_night", "", "4A", "2B0101 B71C");
    row("end_night", "", "4A", "2B0100 A73D");
    row("start_ranging", "", "49", "8102 F699");
    row("end_ranging", "", "49", "8100 D6DB");
    row("start_osd", "", "49", "7301 B359");
    row("end_osd", "", "49", "7300 A378");
    row("ratio", "", "4B", "2501F6FF 75F2");
    row("ratio", "ratio=300", "4B", "25012C01 81CF");
    row("ratio", "ratio=40000", "4B", "25010000 D265");
    row("ratio", "ratio=1.5x", "4B", "25010000 D265");
    row("ratio", "315=0A", "4B", "250AF6FF 8503");
    row("ratio", "315=", "4B", "25F6FF 5D3C");
    row("color", "", "4A", "2A0200 C55E");
    row("color", "color=300", "4A", "2A022C 20B0");
    row("color", "color=-1", "4A", "2A02FF DBAE");
    row("addlight", "", "49", "80FF FB1A");
    row("addlight", "addlight=-1", "49", "80FF FB1A");
    row("addlight", "addlight=", "49", "8000 E5EA");
    row("alarmStart", "", "4E", "310101C8003200 F308");
    row("alarmStart", "alarm_1=200.9;alarm_2=-35.9", "4E", "310101C800DDFF ED74");
    row("alarmStart", "alarm_1=hot;alarm_2=", "4E", "31010100000000 A698");
    row("alarmEnd", "", "4E", "310100C8003200 5959");
    row("alarmEnd", "alarm_1=32768;alarm_2=40000", "4E", "3101000080409C 786A");
    row("Isothermy", "", "4E", "320101C8003200 2B8A");
    row("Isothermy", "Isothermy_1=-5.5;Isothermy_2=32768", "4E", "320101FBFF0080 A1A3");
    row("Isothermy", "Isothermy_3=AB cd", "4E", "3201ABCDC8003200 A521");
    row("Isothermy", "Isothermy_3=zz", "4E", "3201C8003200 7CF1");
    row("lock", "", "48", "11 093F");
    row("follow", "", "48", "12 395C");
    row("euler", "", "48", "14 599A");
    row("fpv", "", "48", "10 191E");
    row("fpv2", "", "48", "1C D892");
}

void tst_flowAnalysis::commandWalk()
{
    QFETCH(QStringList, row);
    const auto expected = [](const QString &size, const QString &tail) {
        const QString start = "A8E5" + size + "00" + "01" + "000000000000" + "01";
        return QByteArray::fromHex(start.toLatin1()).append(kCarrier).toHex() +
               QByteArray::fromHex(tail.toLatin1()).toHex();
    };
    const QByteArray idle = expected("48", "00 0B2F");
    QCOMPARE(frame().toHex(), idle);
    press(qPrintable("pushButton_" + row[0]));
    set(row[1]);
    QCOMPARE(frame().toHex(), expected(row[2], row[3]));
    // The invisible buttons clear the selection of either group.
    find<QPushButton>("pushButton_null")->setChecked(true);
    find<QPushButton>("pushButton_null_2")->setChecked(true);
    QCOMPARE(frame().toHex(), idle);
}

void tst_flowAnalysis::oddDigitsMoveTheFrameByHalfAByte_data()
{
    QTest::addColumn<QByteArray>("start");
    QTest::addColumn<QByteArray>("end");
    const auto row = [](const char *edits, const char *start, const char *end) {
        QTest::newRow(edits) << QByteArray(start) << QByteArray(end);
    };
    row("s_1=0", "0a8e5480070000000000000100", "00000000ab7f"); // with a version of one digit
    row("315=5", "0a8e5490001000000000000010", "0000002253f46");
    row("Isothermy_3=7", "0a8e54e0001000000000000010", "32017c80032008416");
    row("Isothermy_3=123", "0a8e54e0001000000000000010", "3201123c8003200634b");
}

void tst_flowAnalysis::oddDigitsMoveTheFrameByHalfAByte()
{
    QFETCH(QByteArray, start);
    QFETCH(QByteArray, end);
    const QString edits = QTest::currentDataTag();
    if (edits.startsWith("s_1"))
        find<QLineEdit>("lineEdit")->setText("7");
    else
        press(edits.startsWith("315") ? "pushButton_zoomin" : "pushButton_Isothermy");
    set(edits);
    QCOMPARE(frame().toHex().left(start.size()), start);
    QCOMPARE(frame().toHex().right(end.size()), end);
}

void tst_flowAnalysis::longRawFieldIsCheckedOverItsLengthModulo256()
{
    press("pushButton_Isothermy");
    set("Isothermy_3=" + QString("5A").repeated(178));
    QCOMPARE(frame().size(), 255);
    QCOMPARE(frame().right(2).toHex(), QByteArray("5639"));
    set("Isothermy_3=" + QString("5A").repeated(200)); // 275 bytes, of which 19 count
    QCOMPARE(frame().size(), 277);
    QCOMPARE(frame().left(3).toHex(), QByteArray("a8e54e"));
    QCOMPARE(frame().right(2).toHex(), QByteArray("fff3"));
}

void tst_flowAnalysis::modeCommandOverridesUntilThePodReportsIt()
{
    const QHash<QByteArray, int> modes{
        {"lock", 0x11}, {"follow", 0x12}, {"euler", 0x14}, {"fpv", 0x10}, {"fpv2", 0x1C}};
    for (auto mode = modes.begin(); mode != modes.end(); ++mode) {
        press("pushButton_photo");
        press("pushButton_" + mode.key());
        QCOMPARE(int(frame().at(69)), mode.value());
        QCOMPARE(frame().size(), 72);
        m_page->setPodMode(qint8(mode.value()));
        QVERIFY(isChecked("pushButton_" + mode.key()));
        QCOMPARE(frame().mid(69, 2).toHex(), QByteArray("2001"));
        QCOMPARE(frame().size(), 73);
        // The mode alone adds nothing in its own mode.
        m_page->clearPendingCommand();
        QCOMPARE(frame(), m_page->buildCommandFrame(true));
    }
}

void tst_flowAnalysis::idleIgnoresTheSelection()
{
    m_page->setPodMode(0x14);
    press("pushButton_photo");
    press("pushButton_lock");
    type(find<QLineEdit>("lineEdit_312"), "-1500");
    const QByteArray idle = m_page->buildCommandFrame(true);
    QCOMPARE(idle.left(12).toHex(), QByteArray("a8e54800010000000024fa05"));
    QCOMPARE(idle.right(3).toHex(), QByteArray("0097e4"));
}

void tst_flowAnalysis::controlInputs_data()
{
    QTest::addColumn<QVector<int>>("pod"); // mode, yaw and pitch rate
    QTest::addColumn<QString>("edits");
    QTest::addColumn<QByteArray>("inputs");
    const QString angles("314=1;313=-2;312=18000");
    const auto row = [](const char *name, const QVector<int> &pod, const QString &edits,
                        const char *inputs) {
        QTest::newRow(name) << pod << edits << QByteArray(inputs);
    };
    row("euler angles", {0x14, 700, 700}, angles, "0100feff504605");
    row("angle control", {0x10, 0, 0}, angles, "0100feff504605");
    row("fpv", {0x1C, 0, 0}, angles, "0100feff504605");
    row("angles zero", {0x14, 700, 700}, "", "00000000000001");
    row("angles unparsable", {0x14, 0, 0}, "314=x;313=99999;312=", "00000000000001");
    row("roll alone", {0x14, 0, 0}, "314=-1", "ffff0000000005");
    row("lock rates", {0x11, 1500, -1500}, angles, "000024fadc0505");
    row("follow rates", {0x12, -1, 0}, angles, "00000000ffff05");
    row("rates zero", {0x11, 0, 0}, angles, "00000000000001");
    row("look down", {0x13, 700, 700}, angles, "00000000000001");
    row("no report", {0, 700, 700}, angles, "00000000000001");
}

void tst_flowAnalysis::controlInputs()
{
    QFETCH(QVector<int>, pod);
    QFETCH(QString, edits);
    QFETCH(QByteArray, inputs);
    m_page->setPodMode(qint8(pod[0]));
    set(edits);
    find<QSlider>("horizontalSlider1")->setValue(pod[1]);
    find<QSlider>("horizontalSlider2")->setValue(pod[2]);
    QCOMPARE(controls(), inputs);
}

void tst_flowAnalysis::carrierBlock_data()
{
    QTest::addColumn<int>("offset"); // within the frame
    QTest::addColumn<QByteArray>("bytes");
    const auto row = [](const char *edit, int offset, const char *bytes) {
        QTest::newRow(edit) << offset << QByteArray(bytes);
    };
    row("s_1=-0.07", 12, "f9ff");
    row("s_1=400", 12, "409c");
    row("s_2=-89.99", 14, "d9dc");
    row("s_3=359.99", 16, "9f8c");
    row("s_4=1.5", 18, "9600");
    row("s_5=99.99", 20, "0f27");
    row("s_6=-1", 22, "9cff");
    row("s_7=0.29", 24, "1d00");
    row("s_8=100", 26, "1027");
    row("s_9=x", 28, "0000");
    row("s_10=-122.5", 38, "c0fbfbb6");
    row("s_11=120", 42, "008c8647");
    row("s_11=300", 42, "005ed0b2"); // 3,000,000,000, of which the low 32 bits go out
    row("s_12=41.1239", 46, "a3a00000");
    row("s_13=300", 50, "2c");
    row("s_14=4294967295", 51, "ffffffff");
    row("s_14=4294967296", 51, "00000000");
    row("s_15=-32767", 55, "0180");
    row("s_15=32768", 55, "0000");
}

void tst_flowAnalysis::carrierBlock()
{
    QFETCH(int, offset);
    QFETCH(QByteArray, bytes);
    QCOMPARE(m_page->carrierBlockText(), QString(kCarrier.toHex(' ').toUpper() + ' '));
    set(QTest::currentDataTag());
    QByteArray expected = kCarrier;
    expected.replace(offset - 12, bytes.size() / 2, QByteArray::fromHex(bytes));
    QCOMPARE(frame().mid(12, 57).toHex(), expected.toHex());
}

/// Only the rules that are odd on purpose, and one of each other kind.
void tst_flowAnalysis::fieldsTakeKeysByTheirRules_data()
{
    QTest::addColumn<QString>("stands");
    QTest::addColumn<bool>("acceptable");
    const auto row = [](const char *keys, const char *stands, bool acceptable = true) {
        QTest::newRow(keys) << QString(stands) << acceptable;
    };
    row("lineEdit_s_1=-179.99", "-179.99");
    row("lineEdit_s_1=0", "", false); // refused, though it is the initial text
    row("lineEdit_s_2=91", "9");
    row("lineEdit_s_3=-1", "1");
    row("lineEdit_s_4=-5", "5"); // can't be typed negative
    row("lineEdit_s_9=-0.255", "0.25");
    row("lineEdit_s_5=150", "150", false); // the top is soft
    row("lineEdit_s_11=120", "120");       // the latitude takes the longitude's rule
    row("lineEdit_s_12=500", "500", false);
    row("lineEdit_s_12=-1.2345", "1.234");
    row("lineEdit_s_13=256", "256", false);
    row("lineEdit_s_14=12a3", "123");
    row("lineEdit_312=-18000", "-18000");
    row("lineEdit_315=gaF1", "aF");
    row("lineEdit=0x2", "02");
    row("lineEdit_ratio=-10.5x", "-10.5x");
}

void tst_flowAnalysis::fieldsTakeKeysByTheirRules()
{
    QFETCH(QString, stands);
    QFETCH(bool, acceptable);
    const QString keys = QTest::currentDataTag();
    auto *field = m_page->findChild<QLineEdit *>(keys.section('=', 0, 0));
    type(field, keys.section('=', 1));
    QCOMPARE(field->text(), stands);
    QCOMPARE(field->hasAcceptableInput(), acceptable);
}

void tst_flowAnalysis::podModeShowsPanelAndButton()
{
    struct Row
    {
        int mode, angles, rates; ///< heights of the panels
        const char *button;
    };
    const Row rows[] = {{0x14, 182, 0, "pushButton_euler"},  {0x10, 182, 0, "pushButton_fpv"},
                        {0x1C, 182, 0, "pushButton_fpv2"},   {0x11, 0, 152, "pushButton_lock"},
                        {0x12, 0, 152, "pushButton_follow"}, {0x13, 0, 0, "pushButton_null_2"},
                        {0, 0, 0, "pushButton_null_2"},      {-1, 0, 0, "pushButton_null_2"}};
    for (const Row &row : rows) {
        // A press that the pod hasn't followed is undone by its report.
        press(row.mode == 0x12 ? "pushButton_lock" : "pushButton_follow");
        m_page->setPodMode(qint8(row.mode));
        QVERIFY2(isChecked(row.button), row.button);
        QCOMPARE(find<QWidget>("widget_3")->maximumHeight(), row.angles);
        QCOMPARE(find<QWidget>("widget_14")->maximumHeight(), row.rates);
    }
}

void tst_flowAnalysis::selectionIsExclusiveInEachGroup()
{
    press("pushButton_photo");
    press("pushButton_lock");
    press("pushButton_alarmEnd");
    press("pushButton_alarmEnd"); // stays selected
    press("pushButton_alarm");    // a caption
    QVERIFY(!isChecked("pushButton_photo"));
    QVERIFY(isChecked("pushButton_alarmEnd") && isChecked("pushButton_lock"));
    press("pushButton_fpv2");
    m_page->clearPendingCommand();
    QVERIFY(!isChecked("pushButton_lock") && !isChecked("pushButton_alarmEnd"));
    QVERIFY(isChecked("pushButton_fpv2"));
}

void tst_flowAnalysis::sliderReadouts()
{
    const QHash<int, QString> percents{{-1500, "-100%"}, {14, "0%"},   {15, "1%"},
                                       {-14, "0%"},      {-15, "-1%"}, {1499, "99%"}};
    for (auto row = percents.begin(); row != percents.end(); ++row) {
        find<QSlider>("horizontalSlider1")->setValue(row.key());
        find<QSlider>("horizontalSlider2")->setValue(-row.key());
        QCOMPARE(textOf("label"), QString::number(row.key()));
        QCOMPARE(textOf("label_7"), row.value());
        QCOMPARE(textOf("label_2"), QString::number(-row.key()));
    }
}

/// Centre of the handle, in the slider's coordinates.
static QPoint handleOf(QSlider *slider)
{
    QStyleOptionSlider option;
    option.initFrom(slider);
    option.orientation = Qt::Horizontal;
    option.minimum = slider->minimum();
    option.maximum = slider->maximum();
    option.sliderPosition = slider->sliderPosition();
    option.sliderValue = slider->value();
    return slider->style()
        ->subControlRect(QStyle::CC_Slider, &option, QStyle::SC_SliderHandle, slider)
        .center();
}

void tst_flowAnalysis::slidersSpringBackAndKeysStay()
{
    m_page->resize(1090, 1164);
    m_page->setPodMode(0x11);
    auto *yaw = find<QSlider>("horizontalSlider1");
    auto *pitch = find<QSlider>("horizontalSlider2");
    QTest::keyClick(pitch, Qt::Key_End);
    QTRY_VERIFY(yaw->width() > 100);

    const QPoint from = handleOf(yaw);
    QTest::mousePress(yaw, Qt::LeftButton, {}, from);
    const QPoint to = from - QPoint(60, 0);
    QMouseEvent drag(QEvent::MouseMove, to, Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(yaw, &drag);
    QVERIFY(yaw->value() < 0);
    QCOMPARE(textOf("label"), QString::number(yaw->value()));
    QTest::mouseRelease(yaw, Qt::LeftButton, {}, to);
    QCOMPARE(yaw->value(), 0);
    QCOMPARE(textOf("label"), QString("0"));
    QCOMPARE(textOf("label_7"), QString("0%"));
    // What the keys made stays until that slider's handle is dragged.
    QCOMPARE(pitch->value(), 1500);
    QCOMPARE(textOf("label_2"), QString("1500"));

    const QPoint end = handleOf(pitch);
    QTest::mousePress(pitch, Qt::LeftButton, {}, end);
    QTest::mouseRelease(pitch, Qt::LeftButton, {}, end);
    QCOMPARE(textOf("label_2"), QString("0"));
    QCOMPARE(textOf("label_8"), QString("0%"));
}

void tst_flowAnalysis::heldRateIsAControlInput()
{
    m_page->setPodMode(0x12);
    QTest::keyClick(find<QSlider>("horizontalSlider1"), Qt::Key_Home);
    QCOMPARE(controls(), QByteArray("0000000024fa05"));
    // A mode without rates doesn't read the slider, and doesn't reset it.
    m_page->setPodMode(0x13);
    QCOMPARE(controls(), QByteArray("00000000000001"));
    m_page->setPodMode(0x11);
    QCOMPARE(controls(), QByteArray("0000000024fa05"));
}

NACELLE_TEST_MAIN(tst_flowAnalysis)
#include "tst_flowAnalysis.moc"
