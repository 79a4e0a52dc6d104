#include "console/flowAnalysis.h"
#include "foundation/QGlobal.h"
#include "tests/support/strictmain.h"

#include <QLineEdit>
#include <QPushButton>
#include <QSlider>
#include <QStyleOptionSlider>
#include <QValidator>

#include <memory>

/// Offsets 12 to 68 of a frame made from the form's initial texts.
static const QByteArray kCarrier = QByteArray::fromHex("000000000000000000000000000000000000"
                                                       "0100000000000001"
                                                       "24F2DF65"
                                                       "16EEAA16"
                                                       "A3A00000"
                                                       "0F"
                                                       "B00C0615"
                                                       "E608"
                                                       "000000000000000000000000");

/// Name and text of a field of the form.
struct Entry
{
    const char *edit;
    QString text;
};
using Entries = QList<Entry>;
Q_DECLARE_METATYPE(Entries)

class tst_flowAnalysis : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void eachButtonWithDefaults_data();
    void eachButtonWithDefaults();
    void parameters_data();
    void parameters();
    void oddDigitsMoveTheFrameByHalfAByte_data();
    void oddDigitsMoveTheFrameByHalfAByte();
    void longRawFieldIsCheckedOverItsLengthModulo256_data();
    void longRawFieldIsCheckedOverItsLengthModulo256();
    void modeCommandOverridesUntilThePodReportsIt_data();
    void modeCommandOverridesUntilThePodReportsIt();
    void idleIgnoresTheSelection();
    void controlInputs_data();
    void controlInputs();
    void carrierBlock_data();
    void carrierBlock();
    void carrierFieldsTakeKeysByTheirRules_data();
    void carrierFieldsTakeKeysByTheirRules();
    void latitudeRuleIsBuiltButInstalledNowhere();
    void otherEntryRules_data();
    void otherEntryRules();
    void podModeShowsPanelAndButton_data();
    void podModeShowsPanelAndButton();
    void selectionIsExclusiveInEachGroup();
    void sliderReadouts_data();
    void sliderReadouts();
    void slidersSpringBackAndKeysStay();
    void heldRateIsAControlInput();
    void fixedSizesFollowTheScale();
    void texts_data();
    void texts();
    void retranslateKeepsTheSelector();

private:
    template <typename T>
    T *find(const char *name)
    {
        T *found = m_page->findChild<T *>(QLatin1String(name));
        if (!found)
            qFatal("no widget %s", name);
        return found;
    }
    void press(const char *button) { QTest::mouseClick(find<QPushButton>(button), Qt::LeftButton); }
    /// Puts texts in as they are, past the entry rules: the frame reads what stands there.
    void set(const Entries &entries)
    {
        for (const Entry &entry : entries)
            find<QLineEdit>(entry.edit)->setText(entry.text);
    }
    void type(const char *edit, const QString &text)
    {
        auto *field = find<QLineEdit>(edit);
        field->setFocus();
        field->selectAll();
        QTest::keyClick(field, Qt::Key_Delete);
        QTest::keyClicks(field, text);
    }
    QString textOf(const char *object)
    {
        return find<QWidget>(object)->property("text").toString();
    }

    std::unique_ptr<flowAnalysis> m_page;
};

void tst_flowAnalysis::init()
{
    QGlobal::instance()->languageChinese = true;
    QGlobal::instance()->scaleFactor = 1.0;
    m_page = std::make_unique<flowAnalysis>();
    m_page->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_page.get()));
}

void tst_flowAnalysis::cleanup()
{
    m_page.reset();
}

/// The frame with no control input and the initial carrier block.
static QByteArray plainFrame(const char *size, const char *tail)
{
    return QByteArray::fromHex(QByteArray("A8E5") + size + "00" + "01" + "000000000000" + "01") +
           kCarrier + QByteArray::fromHex(tail);
}

void tst_flowAnalysis::eachButtonWithDefaults_data()
{
    QTest::addColumn<QByteArray>("frame");
    const auto row = [](const char *button, const char *size, const char *tail) {
        QTest::newRow(button) << plainFrame(size, tail);
    };
    row("pushButton_calibrate", "48", "01 1B0E");
    row("pushButton_photo", "49", "2001 E8B5");
    row("pushButton_mid", "48", "03 3B4C");
    row("pushButton_overlook", "48", "13 297D");
    row("pushButton_record", "49", "2101 DB84");
    row("pushButton_zoomin", "49", "2201 8ED7");
    row("pushButton_zoomout", "49", "2301 BDE6");
    row("pushButton_end_zoom", "49", "2401 2471");
    row("pushButton_focus", "49", "2601 4213");
    row("pushButton_start_night", "4A", "2B0101 B71C");
    row("pushButton_end_night", "4A", "2B0100 A73D");
    row("pushButton_start_ranging", "49", "8102 F699");
    row("pushButton_end_ranging", "49", "8100 D6DB");
    row("pushButton_start_osd", "49", "7301 B359");
    row("pushButton_end_osd", "49", "7300 A378");
    row("pushButton_ratio", "4B", "2501F6FF 75F2");
    row("pushButton_color", "4A", "2A0200 C55E");
    row("pushButton_addlight", "49", "80FF FB1A");
    row("pushButton_alarmStart", "4E", "310101C8003200 F308");
    row("pushButton_alarmEnd", "4E", "310100C8003200 5959");
    row("pushButton_Isothermy", "4E", "320101C8003200 2B8A");
    row("pushButton_lock", "48", "11 093F");
    row("pushButton_follow", "48", "12 395C");
    row("pushButton_euler", "48", "14 599A");
    row("pushButton_fpv", "48", "10 191E");
    row("pushButton_fpv2", "48", "1C D892");
}

void tst_flowAnalysis::eachButtonWithDefaults()
{
    QFETCH(QByteArray, frame);
    const QByteArray idle = plainFrame("48", "00 0B2F");
    QCOMPARE(m_page->buildCommandFrame(false).toHex(), idle.toHex());
    press(QTest::currentDataTag());
    QCOMPARE(m_page->buildCommandFrame(false).toHex(), frame.toHex());
    // The invisible buttons clear the selection of either group.
    find<QPushButton>("pushButton_null")->setChecked(true);
    find<QPushButton>("pushButton_null_2")->setChecked(true);
    QCOMPARE(m_page->buildCommandFrame(false).toHex(), idle.toHex());
}

void tst_flowAnalysis::parameters_data()
{
    QTest::addColumn<QByteArray>("button");
    QTest::addColumn<Entries>("entries");
    QTest::addColumn<QByteArray>("frame");
    const auto row = [](const char *name, const char *button, const Entries &entries,
                        const char *size, const char *tail) {
        QTest::newRow(name) << QByteArray(button) << entries << plainFrame(size, tail);
    };
    row("zoom value", "pushButton_ratio", {{"lineEdit_ratio", "300"}}, "4B", "25012C01 81CF");
    row("zoom out of 16 bits", "pushButton_ratio", {{"lineEdit_ratio", "40000"}}, "4B",
        "25010000 D265");
    row("zoom unparsable", "pushButton_ratio", {{"lineEdit_ratio", "1.5x"}}, "4B", "25010000 D265");
    row("camera number", "pushButton_ratio", {{"lineEdit_315", "0A"}}, "4B", "250AF6FF 8503");
    row("camera number high", "pushButton_zoomin", {{"lineEdit_315", "fe"}}, "49", "22FE 9027");
    row("no camera number", "pushButton_ratio", {{"lineEdit_315", ""}}, "4B", "25F6FF 5D3C");
    row("camera number alone missing", "pushButton_zoomin", {{"lineEdit_315", ""}}, "49",
        "22 35F8");
    row("palette low byte", "pushButton_color", {{"lineEdit_color", "300"}}, "4A", "2A022C 20B0");
    row("palette negative", "pushButton_color", {{"lineEdit_color", "-1"}}, "4A", "2A02FF DBAE");
    row("light negative", "pushButton_addlight", {{"lineEdit_addlight", "-1"}}, "49", "80FF FB1A");
    row("light empty", "pushButton_addlight", {{"lineEdit_addlight", ""}}, "49", "8000 E5EA");
    row("limits truncate toward zero", "pushButton_alarmStart",
        {{"lineEdit_alarm_1", "200.9"}, {"lineEdit_alarm_2", "-35.9"}}, "4E",
        "310101C800DDFF ED74");
    row("limits beyond i16 wrap", "pushButton_alarmEnd",
        {{"lineEdit_alarm_1", "32768"}, {"lineEdit_alarm_2", "40000"}}, "4E",
        "3101000080409C 786A");
    row("limits unparsable", "pushButton_alarmStart",
        {{"lineEdit_alarm_1", "hot"}, {"lineEdit_alarm_2", ""}}, "4E", "31010100000000 A698");
    row("isotherm limits", "pushButton_Isothermy",
        {{"lineEdit_Isothermy_1", "-5.5"}, {"lineEdit_Isothermy_2", "32768"}}, "4E",
        "320101FBFF0080 A1A3");
    row("isotherm type of two bytes", "pushButton_Isothermy", {{"lineEdit_Isothermy_3", "AB cd"}},
        "4E", "3201ABCDC8003200 A521");
    row("no isotherm type", "pushButton_Isothermy", {{"lineEdit_Isothermy_3", "zz"}}, "4E",
        "3201C8003200 7CF1");
}

void tst_flowAnalysis::parameters()
{
    QFETCH(QByteArray, button);
    QFETCH(Entries, entries);
    QFETCH(QByteArray, frame);
    press(button);
    set(entries);
    QCOMPARE(m_page->buildCommandFrame(false).toHex(), frame.toHex());
}

void tst_flowAnalysis::oddDigitsMoveTheFrameByHalfAByte_data()
{
    QTest::addColumn<QByteArray>("button");
    QTest::addColumn<Entries>("entries");
    QTest::addColumn<QByteArray>("start");
    QTest::addColumn<QByteArray>("end");
    QTest::newRow("version") << QByteArray() << Entries{{"lineEdit", "7"}}
                             << QByteArray("0a8e5480070000000000000100")
                             << QByteArray("00000000ab7f");
    QTest::newRow("camera number")
        << QByteArray("pushButton_zoomin") << Entries{{"lineEdit_315", "5"}}
        << QByteArray("0a8e5490001000000000000010") << QByteArray("0000002253f46");
    QTest::newRow("one digit of type")
        << QByteArray("pushButton_Isothermy") << Entries{{"lineEdit_Isothermy_3", "7"}}
        << QByteArray("0a8e54e0001000000000000010") << QByteArray("32017c80032008416");
    QTest::newRow("three digits of type")
        << QByteArray("pushButton_Isothermy") << Entries{{"lineEdit_Isothermy_3", "123"}}
        << QByteArray("0a8e54e0001000000000000010") << QByteArray("3201123c8003200634b");
}

void tst_flowAnalysis::oddDigitsMoveTheFrameByHalfAByte()
{
    QFETCH(QByteArray, button);
    QFETCH(Entries, entries);
    QFETCH(QByteArray, start);
    QFETCH(QByteArray, end);
    if (!button.isEmpty())
        press(button);
    set(entries);
    const QByteArray digits = m_page->buildCommandFrame(false).toHex();
    QCOMPARE(digits.left(start.size()), start);
    QCOMPARE(digits.right(end.size()), end);
}

void tst_flowAnalysis::longRawFieldIsCheckedOverItsLengthModulo256_data()
{
    QTest::addColumn<int>("typeBytes");
    QTest::addColumn<int>("size");
    QTest::addColumn<QByteArray>("crc");
    QTest::newRow("252 bytes") << 177 << 254 << QByteArray("c982");
    QTest::newRow("253 bytes") << 178 << 255 << QByteArray("5639");
    QTest::newRow("275 bytes, of which 19 count") << 200 << 277 << QByteArray("fff3");
}

void tst_flowAnalysis::longRawFieldIsCheckedOverItsLengthModulo256()
{
    QFETCH(int, typeBytes);
    QFETCH(int, size);
    QFETCH(QByteArray, crc);
    press("pushButton_Isothermy");
    set({{"lineEdit_Isothermy_3", QString("5A").repeated(typeBytes)}});
    const QByteArray frame = m_page->buildCommandFrame(false);
    QCOMPARE(frame.size(), size);
    QCOMPARE(frame.left(3).toHex(), QByteArray("a8e54e"));
    QCOMPARE(frame.right(2).toHex(), crc);
}

void tst_flowAnalysis::modeCommandOverridesUntilThePodReportsIt_data()
{
    QTest::addColumn<int>("mode");
    QTest::newRow("pushButton_lock") << 0x11;
    QTest::newRow("pushButton_follow") << 0x12;
    QTest::newRow("pushButton_euler") << 0x14;
    QTest::newRow("pushButton_fpv") << 0x10;
    QTest::newRow("pushButton_fpv2") << 0x1C;
}

void tst_flowAnalysis::modeCommandOverridesUntilThePodReportsIt()
{
    QFETCH(int, mode);
    press("pushButton_photo");
    press(QTest::currentDataTag());
    const QByteArray held = m_page->buildCommandFrame(false);
    QCOMPARE(int(held.at(69)), mode);
    QCOMPARE(held.size(), 72);

    m_page->setPodMode(qint8(mode));
    QVERIFY(find<QPushButton>(QTest::currentDataTag())->isChecked());
    const QByteArray freed = m_page->buildCommandFrame(false);
    QCOMPARE(freed.mid(69, 2).toHex(), QByteArray("2001"));
    QCOMPARE(freed.size(), 73);

    // The mode alone adds nothing in its own mode.
    m_page->clearPendingCommand();
    QCOMPARE(m_page->buildCommandFrame(false), m_page->buildCommandFrame(true));
}

void tst_flowAnalysis::idleIgnoresTheSelection()
{
    m_page->setPodMode(0x14);
    press("pushButton_photo");
    press("pushButton_lock");
    type("lineEdit_312", "-1500");
    const QByteArray frame = m_page->buildCommandFrame(true);
    QCOMPARE(frame.left(12).toHex(), QByteArray("a8e548000100000000"
                                                "24fa"
                                                "05"));
    QCOMPARE(frame.right(3).toHex(), QByteArray("0097e4"));
}

void tst_flowAnalysis::controlInputs_data()
{
    QTest::addColumn<int>("mode");
    QTest::addColumn<Entries>("entries");
    QTest::addColumn<int>("yawRate");
    QTest::addColumn<int>("pitchRate");
    QTest::addColumn<QByteArray>("inputs");
    const Entries angles{{"lineEdit_314", "1"}, {"lineEdit_313", "-2"}, {"lineEdit_312", "18000"}};
    QTest::newRow("euler angles") << 0x14 << angles << 700 << 700 << QByteArray("0100feff504605");
    QTest::newRow("angle control") << 0x10 << angles << 0 << 0 << QByteArray("0100feff504605");
    QTest::newRow("fpv") << 0x1C << angles << 0 << 0 << QByteArray("0100feff504605");
    QTest::newRow("angles zero") << 0x14 << Entries{} << 700 << 700 << QByteArray("00000000000001");
    QTest::newRow("angles unparsable")
        << 0x14 << Entries{{"lineEdit_314", "x"}, {"lineEdit_313", "99999"}, {"lineEdit_312", ""}}
        << 0 << 0 << QByteArray("00000000000001");
    QTest::newRow("roll alone") << 0x14 << Entries{{"lineEdit_314", "-1"}} << 0 << 0
                                << QByteArray("ffff0000000005");
    QTest::newRow("lock rates") << 0x11 << angles << 1500 << -1500 << QByteArray("000024fadc0505");
    QTest::newRow("follow rates") << 0x12 << angles << -1 << 0 << QByteArray("00000000ffff05");
    QTest::newRow("rates zero") << 0x11 << angles << 0 << 0 << QByteArray("00000000000001");
    QTest::newRow("look down") << 0x13 << angles << 700 << 700 << QByteArray("00000000000001");
    QTest::newRow("stare") << 0x16 << angles << 700 << 700 << QByteArray("00000000000001");
    QTest::newRow("no report") << 0 << angles << 700 << 700 << QByteArray("00000000000001");
}

void tst_flowAnalysis::controlInputs()
{
    QFETCH(int, mode);
    QFETCH(Entries, entries);
    QFETCH(int, yawRate);
    QFETCH(int, pitchRate);
    QFETCH(QByteArray, inputs);
    m_page->setPodMode(qint8(mode));
    set(entries);
    find<QSlider>("horizontalSlider1")->setValue(yawRate);
    find<QSlider>("horizontalSlider2")->setValue(pitchRate);
    QCOMPARE(m_page->buildCommandFrame(false).mid(5, 7).toHex(), inputs);
}

void tst_flowAnalysis::carrierBlock_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("offset"); // within the frame
    QTest::addColumn<QByteArray>("bytes");
    const auto row = [](const char *edit, const char *text, int offset, const char *bytes) {
        QTest::newRow(qPrintable(QString("%1 = %2").arg(edit, text)))
            << QString(text) << offset << QByteArray(bytes);
    };
    row("lineEdit_s_1", "-0.07", 12, "f9ff");
    row("lineEdit_s_1", "400", 12, "409c");
    row("lineEdit_s_2", "-89.99", 14, "d9dc");
    row("lineEdit_s_3", "359.99", 16, "9f8c");
    row("lineEdit_s_4", "1.5", 18, "9600");
    row("lineEdit_s_5", "99.99", 20, "0f27");
    row("lineEdit_s_6", "-1", 22, "9cff");
    row("lineEdit_s_7", "0.29", 24, "1d00");
    row("lineEdit_s_8", "100", 26, "1027");
    row("lineEdit_s_9", "x", 28, "0000");
    row("lineEdit_s_10", "-122.5", 38, "c0fbfbb6");
    row("lineEdit_s_11", "120", 42, "008c8647");
    row("lineEdit_s_12", "500", 46, "20a10700");
    row("lineEdit_s_12", "41.1239", 46, "a3a00000");
    row("lineEdit_s_13", "300", 50, "2c");
    row("lineEdit_s_13", "", 50, "00");
    row("lineEdit_s_14", "4294967295", 51, "ffffffff");
    row("lineEdit_s_14", "4294967296", 51, "00000000");
    row("lineEdit_s_15", "-32767", 55, "0180");
    row("lineEdit_s_15", "32768", 55, "0000");
}

void tst_flowAnalysis::carrierBlock()
{
    QFETCH(QString, text);
    QFETCH(int, offset);
    QFETCH(QByteArray, bytes);
    QCOMPARE(m_page->carrierBlockText(), QString(kCarrier.toHex(' ').toUpper() + ' '));

    const QByteArray edit = QByteArray(QTest::currentDataTag()).split(' ').first();
    find<QLineEdit>(edit)->setText(text);
    QByteArray expected = kCarrier;
    expected.replace(offset - 12, bytes.size() / 2, QByteArray::fromHex(bytes));
    const QByteArray frame = m_page->buildCommandFrame(false);
    QCOMPARE(frame.mid(12, 57).toHex(), expected.toHex());
}

void tst_flowAnalysis::carrierFieldsTakeKeysByTheirRules_data()
{
    QTest::addColumn<QString>("keys");
    QTest::addColumn<QString>("stands");
    QTest::addColumn<bool>("acceptable");
    const auto row = [](const char *edit, const char *keys, const char *stands, bool acceptable) {
        QTest::newRow(qPrintable(QString("%1 = %2").arg(edit, keys)))
            << QString(keys) << QString(stands) << acceptable;
    };
    row("lineEdit_s_1", "-179.99", "-179.99", true);
    row("lineEdit_s_1", "0", "", true); // refused by the rule, though it is the initial text
    row("lineEdit_s_1", "181", "18", true);
    row("lineEdit_s_2", "-90.00", "-90.00", true);
    row("lineEdit_s_2", "91", "9", true);
    row("lineEdit_s_3", "-1", "1", true);
    row("lineEdit_s_3", "361", "36", true);
    row("lineEdit_s_4", "-5", "5", true); // can't be typed negative
    row("lineEdit_s_9", "-0.255", "0.25", true);
    row("lineEdit_s_5", "150", "150", false); // the top is soft
    row("lineEdit_s_10", "-180.0000000", "-180.0000000", true);
    row("lineEdit_s_11", "120", "120", true); // the latitude takes the longitude's rule
    row("lineEdit_s_12", "500", "500", false);
    row("lineEdit_s_12", "-1.2345", "1.234", true);
    row("lineEdit_s_13", "256", "256", false);
    row("lineEdit_s_13", "255", "255", true);
    row("lineEdit_s_14", "12a3", "123", true);
    row("lineEdit_s_15", "-32767", "-32767", true);
}

void tst_flowAnalysis::carrierFieldsTakeKeysByTheirRules()
{
    QFETCH(QString, keys);
    QFETCH(QString, stands);
    QFETCH(bool, acceptable);
    const QByteArray edit = QByteArray(QTest::currentDataTag()).split(' ').first();
    type(edit, keys);
    QCOMPARE(find<QLineEdit>(edit)->text(), stands);
    if (!stands.isEmpty())
        QCOMPARE(find<QLineEdit>(edit)->hasAcceptableInput(), acceptable);
}

void tst_flowAnalysis::latitudeRuleIsBuiltButInstalledNowhere()
{
    const QString pattern("^[-+]?((90(\\.\\d{1,7})?)|([1-8]?\\d(\\.\\d{1,7})?))$");
    int built = 0;
    for (const auto *rule : m_page->findChildren<QRegExpValidator *>())
        built += rule->regExp().pattern() == pattern;
    QCOMPARE(built, 1);
    for (const auto *edit : m_page->findChildren<QLineEdit *>()) {
        const auto *rule = qobject_cast<const QRegExpValidator *>(edit->validator());
        QVERIFY(!rule || rule->regExp().pattern() != pattern);
    }
}

void tst_flowAnalysis::otherEntryRules_data()
{
    QTest::addColumn<QString>("keys");
    QTest::addColumn<QString>("stands");
    const auto row = [](const char *edit, const char *keys, const char *stands) {
        QTest::newRow(edit) << QString(keys) << QString(stands);
    };
    row("lineEdit_315", "gaF1", "aF");
    row("lineEdit", "0x2", "02");
    row("lineEdit_Isothermy_3", "any text", "any text");
    row("lineEdit_ratio", "-10.5x", "-10.5x");
    row("lineEdit_alarm_1", "1e3", "1e3");
}

void tst_flowAnalysis::otherEntryRules()
{
    QFETCH(QString, keys);
    QFETCH(QString, stands);
    type(QTest::currentDataTag(), keys);
    QCOMPARE(find<QLineEdit>(QTest::currentDataTag())->text(), stands);
    for (const char *edit : {"lineEdit_312", "lineEdit_313", "lineEdit_314"}) {
        const QValidator *rule = find<QLineEdit>(edit)->validator();
        int at = 0;
        for (QString text : {"18000", "-18000"})
            QCOMPARE(rule->validate(text, at), QValidator::Acceptable);
        for (QString text : {"18001", "-18001"})
            QVERIFY(rule->validate(text, at) != QValidator::Acceptable);
    }
}

void tst_flowAnalysis::podModeShowsPanelAndButton_data()
{
    QTest::addColumn<int>("mode");
    QTest::addColumn<int>("angles");
    QTest::addColumn<int>("rates");
    QTest::addColumn<int>("scaledAngles"); // at a scale of 1.5
    QTest::addColumn<int>("scaledRates");
    QTest::addColumn<QByteArray>("button");
    const auto row = [](const char *name, int mode, int angles, int rates, int scaledAngles,
                        int scaledRates, const char *button) {
        QTest::newRow(name) << mode << angles << rates << scaledAngles << scaledRates
                            << QByteArray(button);
    };
    row("euler", 0x14, 182, 0, 197, 0, "pushButton_euler");
    row("angle", 0x10, 182, 0, 197, 0, "pushButton_fpv");
    row("fpv", 0x1C, 182, 0, 197, 0, "pushButton_fpv2");
    row("lock", 0x11, 0, 152, 0, 167, "pushButton_lock");
    row("follow", 0x12, 0, 152, 0, 167, "pushButton_follow");
    row("look down", 0x13, 0, 0, 0, 0, "pushButton_null_2");
    row("stare", 0x16, 0, 0, 0, 0, "pushButton_null_2");
    row("none", 0, 0, 0, 0, 0, "pushButton_null_2");
    row("negative", -1, 0, 0, 0, 0, "pushButton_null_2");
}

void tst_flowAnalysis::podModeShowsPanelAndButton()
{
    QFETCH(int, mode);
    QFETCH(int, angles);
    QFETCH(int, rates);
    QFETCH(int, scaledAngles);
    QFETCH(int, scaledRates);
    QFETCH(QByteArray, button);
    QCOMPARE(find<QWidget>("widget_3")->height(), 0);
    QCOMPARE(find<QWidget>("widget_14")->height(), 0);
    press(mode == 0x12 ? "pushButton_lock" : "pushButton_follow");

    m_page->setPodMode(qint8(mode));
    // A press that the pod hasn't followed is undone by its report.
    QVERIFY(find<QPushButton>(button)->isChecked());
    QCOMPARE(find<QWidget>("widget_3")->maximumHeight(), angles);
    QCOMPARE(find<QWidget>("widget_3")->minimumHeight(), angles);
    QCOMPARE(find<QWidget>("widget_14")->maximumHeight(), rates);
    QCOMPARE(find<QWidget>("widget_14")->minimumHeight(), rates);

    QGlobal::instance()->scaleFactor = 1.5;
    m_page->setPodMode(qint8(mode));
    QCOMPARE(find<QWidget>("widget_3")->maximumHeight(), scaledAngles);
    QCOMPARE(find<QWidget>("widget_14")->maximumHeight(), scaledRates);
}

void tst_flowAnalysis::selectionIsExclusiveInEachGroup()
{
    press("pushButton_photo");
    press("pushButton_lock");
    press("pushButton_zoomin");
    QVERIFY(!find<QPushButton>("pushButton_photo")->isChecked());
    QVERIFY(find<QPushButton>("pushButton_zoomin")->isChecked());
    QVERIFY(find<QPushButton>("pushButton_lock")->isChecked());
    press("pushButton_alarmEnd");
    press("pushButton_alarm"); // a caption
    QVERIFY(find<QPushButton>("pushButton_alarmEnd")->isChecked());
    press("pushButton_fpv2");
    QVERIFY(!find<QPushButton>("pushButton_lock")->isChecked());

    m_page->clearPendingCommand();
    QVERIFY(!find<QPushButton>("pushButton_alarmEnd")->isChecked());
    QVERIFY(find<QPushButton>("pushButton_fpv2")->isChecked());
    QCOMPARE(find<QPushButton>("pushButton_null")->width(), 0);
    QCOMPARE(find<QPushButton>("pushButton_null_2")->width(), 0);
    // A pressed button stays selected when it is pressed again.
    press("pushButton_photo");
    press("pushButton_photo");
    QVERIFY(find<QPushButton>("pushButton_photo")->isChecked());
}

void tst_flowAnalysis::sliderReadouts_data()
{
    QTest::addColumn<int>("value");
    QTest::addColumn<QString>("readout");
    QTest::addColumn<QString>("percent");
    const auto row = [](int value, const char *readout, const char *percent) {
        QTest::newRow(readout) << value << QString(readout) << QString(percent);
    };
    row(1500, "1500", "100%");
    row(-1500, "-1500", "-100%");
    row(14, "14", "0%");
    row(15, "15", "1%");
    row(-14, "-14", "0%");
    row(-15, "-15", "-1%");
    row(1499, "1499", "99%");
}

void tst_flowAnalysis::sliderReadouts()
{
    QFETCH(int, value);
    QFETCH(QString, readout);
    QFETCH(QString, percent);
    find<QSlider>("horizontalSlider1")->setValue(value);
    QCOMPARE(textOf("label"), readout);
    QCOMPARE(textOf("label_7"), percent);
    QCOMPARE(textOf("label_2"), QString("0"));
    QCOMPARE(textOf("label_8"), QString("0%"));
    find<QSlider>("horizontalSlider1")->setValue(0);
    find<QSlider>("horizontalSlider2")->setValue(value);
    QCOMPARE(textOf("label"), QString("0"));
    QCOMPARE(textOf("label_7"), QString("0%"));
    QCOMPARE(textOf("label_2"), readout);
    QCOMPARE(textOf("label_8"), percent);
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
    QCOMPARE(textOf("label_2"), QString("1500"));
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
    // What the keys made stays until a drag of its own handle.
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
    QCOMPARE(m_page->buildCommandFrame(false).mid(5, 7).toHex(), QByteArray("0000000024fa05"));
    // A mode without rates doesn't read the slider, and doesn't reset it.
    m_page->setPodMode(0x13);
    QCOMPARE(m_page->buildCommandFrame(false).mid(5, 7).toHex(), QByteArray("00000000000001"));
    m_page->setPodMode(0x11);
    QCOMPARE(m_page->buildCommandFrame(false).mid(5, 7).toHex(), QByteArray("0000000024fa05"));
}

void tst_flowAnalysis::fixedSizesFollowTheScale()
{
    QGlobal::instance()->scaleFactor = 1.5;
    const flowAnalysis page;
    const auto size = [&page](const char *name) {
        return page.findChild<QWidget *>(QLatin1String(name))->maximumSize();
    };
    QCOMPARE(size("widget_0").height(), 75);
    QCOMPARE(size("widget_1").height(), 272);
    QCOMPARE(size("widget_2").height(), 572);
    QCOMPARE(size("widget_3").height(), 0);
    QCOMPARE(size("widget_14").height(), 0);
    QCOMPARE(size("widget_4").height(), 75);
    QCOMPARE(size("widget_51").height(), 45);
    QCOMPARE(size("widget_56").height(), 120);
    QCOMPARE(size("widget_316").height(), 45);
    QCOMPARE(size("pushButton_video"), QSize(180, 45));
    QCOMPARE(size("comboBox"), QSize(180, 45));
    QCOMPARE(size("pushButton_start"), QSize(180, 60));
    QCOMPARE(size("label_3").width(), 120);
    QCOMPARE(size("label_8").width(), 150);
}

void tst_flowAnalysis::texts_data()
{
    QTest::addColumn<QString>("chinese");
    QTest::addColumn<QString>("english");
    const auto row = [](const char *object, const char *chinese, const char *english) {
        QTest::newRow(object) << QString(chinese) << QString(english);
    };
    row("pushButton_video", "视频", "Video");
    row("pushButton_start", "启动", "Start");
    row("pushButton_calibrate", "吊舱校准", "Pod calibration");
    row("pushButton_record", "录像", "Record");
    row("pushButton_ratio", "指定倍率", "Set zoom");
    row("pushButton_color", "调色盘", "Palette");
    row("pushButton_alarm", "温度报警", "Temp. alarm");
    row("pushButton_alarmStart", "开启", "On");
    row("pushButton_alarmEnd", "关闭", "Off");
    row("pushButton_Isothermy", "等温线", "Isotherm");
    row("pushButton_fpv", "角度控制", "Angle control");
    row("pushButton_fpv2", "FPV", "FPV");
    row("pushButton_null", "", "");
    row("pushButton_null_2", "", "");
    row("label_103", "模拟载机数据", "Simulated carrier data");
    row("label_104", "命令", "Command");
    row("label_123", "载机滚转角", "Carrier roll");
    row("label_128", "载机GNSS周数", "Carrier GNSS week");
    row("label_133", "载机海拔", "Carrier altitude");
    row("label_138", "上限", "Upper");
    row("label_139", "TT(HEX)", "TT(HEX)"); // not relabelled
    row("label_140", "下限", "Lower");
    row("label_141", "上限", "Upper");
    row("label_142", "下限", "Lower");
    row("label_315", "相机KK值", "Camera KK");
    row("label_9", "版本号", "Version");
    row("label_control", "控制量", "Control input");
    row("label_312", "偏航", "Yaw");
    row("label_313", "俯仰", "Pitch");
    row("label_314", "滚转", "Roll");
    row("label_316", "偏航", "Yaw");
    row("label_317", "俯仰", "Pitch");
    row("label_control_3", "角速率控制", "Rate control");
    row("label_3", "输入量", "Input");
    row("label_4", "输入量", "Input");
    row("label_5", "百分比", "Percent");
    row("label_6", "百分比", "Percent");
    row("label", "0", "0");
    row("label_7", "0%", "0%");
}

void tst_flowAnalysis::texts()
{
    QFETCH(QString, chinese);
    QFETCH(QString, english);
    QCOMPARE(textOf(QTest::currentDataTag()), chinese);
    QGlobal::instance()->languageChinese = false;
    m_page->retranslate();
    QCOMPARE(textOf(QTest::currentDataTag()), english);
}

void tst_flowAnalysis::retranslateKeepsTheSelector()
{
    auto *selector = find<QComboBox>("comboBox");
    QCOMPARE(selector->count(), 2);
    QCOMPARE(selector->currentText(), QString("默认模式"));
    QTest::keyClick(selector, Qt::Key_Down);
    QCOMPARE(selector->currentText(), QString("学习模式"));
    press("pushButton_photo");
    QGlobal::instance()->languageChinese = false;
    m_page->retranslate();
    QCOMPARE(selector->count(), 2);
    QCOMPARE(selector->currentText(), QString("Learning"));
    QCOMPARE(m_page->buildCommandFrame(false).mid(69, 2).toHex(), QByteArray("2001"));
}

NACELLE_TEST_MAIN(tst_flowAnalysis)
#include "tst_flowAnalysis.moc"
