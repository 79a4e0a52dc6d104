#include "foundation/QGlobal.h"
#include "protocol/dataPacketAnalysis.h"
#include "tests/support/bench.h"
#include "tests/support/strictmain.h"

#include <QCheckBox>
#include <QClipboard>
#include <QLineEdit>
#include <QTextEdit>

namespace {

const char *const kFormFrame =
    "A8 E5 48 00 01 00 00 00 00 00 00 01 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 01 "
    "00 00 00 00 00 00 01 24 F2 DF 65 16 EE AA 16 A3 A0 00 00 0F B0 0C 06 15 E6 08 10 27 00 00 00 "
    "00 00 00 00 00 00 00 00 7B 70 ";

// 73 bytes: lock mode, photo succeeded.
const char *const kGcuFrame =
    "8A 5E 49 00 01 11 A5 5A 0A 00 F6 FF D2 04 2E FB 01 00 FF FF 64 EE FF FF 0F 00 F1 FF 00 00 C1 "
    "C2 C3 C4 C5 C6 C7 01 02 03 04 01 80 39 30 00 00 24 F2 DF 65 C0 FB FB B6 A3 A0 00 00 14 00 FF "
    "FF D1 D2 D3 D4 D5 D6 20 00 B7 AB ";

QByteArray bytesOf(const char *hex)
{
    return QByteArray::fromHex(hex);
}

} // namespace

class tst_dataPacketAnalysis : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void untouchedForm();
    void sendsTheTextNotTheForm();
    void longWordsArePastedQuickly_data();
    void longWordsArePastedQuickly();
    void receivedFramesOfAnySize();
    void sendNull();
    void returnPassesThroughTheWire_data();
    void returnPassesThroughTheWire();
    void refreshCreeps();
    void returnInTheUnacceptableField();
    void flagsRefresh();
    void frameFaults_data();
    void frameFaults();
    void shortestFrames();
    void analysisFillsBothForms();
    void framesOfAnyLength();
    void applyCommand();
    void historyView();
    void languageSwitch();

private:
    QString text(const char *name);
    void typeInto(const char *edit, const QString &text);

    std::unique_ptr<Bench> m_bench;
    dataPacketAnalysis *m_page = nullptr;
};

void tst_dataPacketAnalysis::init()
{
    QGlobal::instance()->languageChinese = true;
    m_bench = std::make_unique<Bench>();
    m_page = m_bench->find<dataPacketAnalysis>("CurrentPage");
}

void tst_dataPacketAnalysis::cleanup()
{
    m_bench.reset();
}

QString tst_dataPacketAnalysis::text(const char *name)
{
    return m_bench->find<QWidget>(name)->property("text").toString();
}

void tst_dataPacketAnalysis::typeInto(const char *edit, const QString &text)
{
    auto *field = m_bench->find<QLineEdit>(edit);
    field->selectAll();
    QTest::keyClicks(field, text);
    QTest::keyClick(field, Qt::Key_Return);
}

void tst_dataPacketAnalysis::untouchedForm()
{
    QCOMPARE(text("label303"), QStringLiteral("通过"));
    QCOMPARE(text("label304"), QStringLiteral("0F 09"));
    m_bench->click("pushButton_Create");
    QCOMPARE(m_bench->find<QTextEdit>("textEdit_Send")->toPlainText(), QString(kFormFrame));
    // The placeholder gives way at the first refresh.
    typeInto("lineEdit43", QStringLiteral("1"));
    QCOMPARE(text("label304"), QStringLiteral("7B 70 "));
}

void tst_dataPacketAnalysis::sendsTheTextNotTheForm()
{
    m_bench->find<QTextEdit>("textEdit_Send")->setPlainText(QStringLiteral("A8 E5 0g1\n2"));
    m_bench->click("pushButton_Send");
    QCOMPARE((*m_bench)->sentFrames, QList<QByteArray>{bytesOf("A8E5012").right(4)});
    QVERIFY(Bench::takeNotices().isEmpty());
}

/// Pasted digits without blanks make the box wrap anywhere, which takes a hundredth of the time.
void tst_dataPacketAnalysis::longWordsArePastedQuickly_data()
{
    QTest::addColumn<QString>("pasted");
    QTest::addColumn<bool>("isLong");
    QTest::newRow("digits") << QString("A8").repeated(501) << true;
    QTest::newRow("digits at the end") << "A8 " + QString("E5").repeated(501) << true;
    QTest::newRow("lines of digits") << QString("A8").repeated(500) + '\n' + "E5" << false;
    QTest::newRow("bytes and blanks") << QString("A8 ").repeated(1000) << false;
}

void tst_dataPacketAnalysis::longWordsArePastedQuickly()
{
    QFETCH(QString, pasted);
    QFETCH(bool, isLong);
    auto *box = m_bench->find<QTextEdit>("textEdit_Send");
    QGuiApplication::clipboard()->setText(pasted);
    QTest::keyClick(box, Qt::Key_V, Qt::ControlModifier);
    QCOMPARE(box->toPlainText(), pasted);
    QCOMPARE(box->wordWrapMode() == QTextOption::WrapAnywhere, isLong);
    QTest::keyClick(box, Qt::Key_Z, Qt::ControlModifier);
    QCOMPARE(box->wordWrapMode(), QTextOption::WrapAtWordBoundaryOrAnywhere);
}

/// Long texts go another way into the box, and nothing of it stays with the next one.
void tst_dataPacketAnalysis::receivedFramesOfAnySize()
{
    const auto *box = m_bench->find<QTextEdit>("textEdit_Rev");
    for (const int size : {73, 65507, 4097, 73, 0, 4096}) {
        (*m_bench)->receiveData(QByteArray::fromHex("8A5E00FF") + QByteArray(size, '\xA5'), {});
        QCOMPARE(box->toPlainText(), "8A 5E 00 FF " + QString("A5 ").repeated(size));
        QCOMPARE(box->textCursor().position(), 0);
        QVERIFY(!box->document()->isUndoAvailable());
    }
}

void tst_dataPacketAnalysis::sendNull()
{
    m_bench->click("pushButton_Send_Null");
    const QByteArray expected = bytesOf("A8E5480001") + QByteArray(25, '\0') + '\1' +
                                QByteArray(39, '\0') + bytesOf("28B2");
    QCOMPARE((*m_bench)->sentFrames, QList<QByteArray>{expected});
    QCOMPARE(m_bench->find<QTextEdit>("textEdit_Send")->toPlainText(), QString());
}

void tst_dataPacketAnalysis::returnPassesThroughTheWire_data()
{
    QTest::addColumn<QString>("edit");
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("shown");
    QTest::addColumn<QString>("hex");
    const auto row = [](const char *edit, const char *typed, const char *shown, const char *hex) {
        QTest::addRow("%s %s", edit, typed) << QString(edit) << typed << shown << QString(hex);
    };
    row("lineEdit43", "200", "-56", "C8 ");
    row("lineEdit53", "-18000", "-18000", "B0 B9 ");
    row("lineEdit133", "1,5", "15", "DC 05 "); // no groups
    row("lineEdit63", "18000", "18000", "50 46 ");
    row("lineEdit73", "-1", "-1", "FF FF ");
    row("lineEdit93", "-0.07", "-0.07", "F9 FF ");
    row("lineEdit103", "0.53", "0.52", "34 00 ");
    row("lineEdit113", "359.99", "359.99", "9F 8C ");
    row("lineEdit123", "400", "-255.36", "40 9C ");
    row("lineEdit133", "1.5", "1.5", "96 00 ");
    // A third decimal isn't taken: 2.129 would give 212.
    row("lineEdit143", "2.129", "2.11", "D3 00 ");
    row("lineEdit153", "2.129", "2.11", "D3 00 ");
    row("lineEdit163", "0.29", "0.29", "1D 00 ");
    row("lineEdit173", "-7", "-7", "44 FD ");
    row("lineEdit183", "9", "9", "09 ");
    row("lineEdit213", "-122.5", "-122.5000000", "C0 FB FB B6 ");
    row("lineEdit223", "89.9999999", "89.9999999", "FF E8 A4 35 ");
    row("lineEdit233", "-41.5", "-41.5", "E4 5D FF FF ");
    row("lineEdit243", "255", "255", "FF ");
    row("lineEdit253", "4294967295", "4294967295", "FF FF FF FF ");
    row("lineEdit253", "4294967296", "0", "00 00 00 00 ");
    row("lineEdit263", "-32767", "-32767", "01 80 ");
    row("lineEdit273", "0.251", "0.25", "FA 00 00 00 "); // 251 in double precision
}

void tst_dataPacketAnalysis::returnPassesThroughTheWire()
{
    QFETCH(QString, edit);
    QFETCH(QString, typed);
    QFETCH(QString, hex);
    typeInto(edit.toLatin1().constData(), typed);
    QTEST(text(edit.toLatin1().constData()), "shown");
    QString label = edit;
    label.replace(QStringLiteral("lineEdit"), QStringLiteral("label")).chop(1);
    QCOMPARE(text(qPrintable(label + '4')), hex);
    QCOMPARE(text("label303"), QStringLiteral("通过"));
}

/// A refresh isn't idempotent: the form shows what the wire holds, which is truncated each time.
void tst_dataPacketAnalysis::refreshCreeps()
{
    typeInto("lineEdit123", QStringLiteral("2.12"));
    QStringList seen;
    for (int i = 0; i < 3; ++i) {
        seen << text("lineEdit123");
        QTest::keyClick(m_bench->find<QLineEdit>("lineEdit123"), Qt::Key_Return);
    }
    QCOMPARE(seen, (QStringList{"2.11", "2.1", "2.09"}));
}

void tst_dataPacketAnalysis::returnInTheUnacceptableField()
{
    auto *edit = m_bench->find<QLineEdit>("lineEdit93");
    QVERIFY(!edit->hasAcceptableInput());
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter}) { // the latter is the keypad's
        m_bench->find<QLabel>("label304")->clear();
        QTest::keyClick(edit, key);
        QCOMPARE(text("label304"), QStringLiteral("7B 70 "));
    }
    // No other field has this: an unacceptable text keeps its return to itself.
    auto *longitude = m_bench->find<QLineEdit>("lineEdit213");
    longitude->setText(QStringLiteral("5"));
    QTest::keyClick(longitude, Qt::Key_Return);
    QCOMPARE(longitude->text(), QStringLiteral("5"));
}

void tst_dataPacketAnalysis::flagsRefresh()
{
    auto *control = m_bench->find<QCheckBox>("checkBox_1");
    auto *inertial = m_bench->find<QCheckBox>("checkBox_2");
    QVERIFY(!control->isChecked() && inertial->isChecked());
    QTest::mouseClick(control, Qt::LeftButton, {}, QPoint(8, control->height() / 2));
    QCOMPARE(text("label84"), QStringLiteral("05 "));
    QTest::mouseClick(inertial, Qt::LeftButton, {}, QPoint(8, inertial->height() / 2));
    QCOMPARE(text("label84"), QStringLiteral("04 "));
}

void tst_dataPacketAnalysis::frameFaults_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("notice");
    const QString good = QString(kFormFrame).remove(' ');
    const auto row = [](const char *tag, const QString &text, const char *notice) {
        QTest::newRow(tag) << text << QString::fromUtf8(notice);
    };
    row("empty", QString(), "数据包长度异常！");
    row("140 digits", good.left(140), "数据包长度异常！");
    row("141 digits", good.left(141), "数据包长度异常！");
    row("142 digits of a wrong header", "00" + good.left(140), "协议头解析错误！");
    row("a line break counts", good + "\n", "数据包长度异常！");
    row("wrong CRC and wrong length", QString(good).replace(4, 2, "49"), "CRC校验失败！");
    row("wrong length, right CRC", "A8E55000" + QString(130, '0') + "65EE", "包长度校验失败！");
    row("good", good, "");
    row("good with blanks", kFormFrame, "");
}

void tst_dataPacketAnalysis::frameFaults()
{
    QFETCH(QString, text);
    QFETCH(QString, notice);
    m_bench->find<QTextEdit>("textEdit_Send")->setPlainText(text);
    m_bench->click("pushButton_Analysis");
    QCOMPARE(Bench::takeNotices(), notice.isEmpty() ? QStringList() : QStringList{notice});
    // The form is filled by a good frame alone: its placeholder goes then.
    QCOMPARE(this->text("label304"), notice.isEmpty() ? "7B 70 " : "0F 09");
}

/// 71 bytes are a GCU frame without feedback, and a host frame that isn't shown.
void tst_dataPacketAnalysis::shortestFrames()
{
    m_bench->find<QTextEdit>("textEdit_Send")
        ->setPlainText("A8E54700" + QString(130, '0') + "72B7");
    m_bench->click("pushButton_Analysis");
    QCOMPARE(Bench::takeNotices(), QStringList());
    QCOMPARE(text("label33"), QStringLiteral("72"));

    m_bench->find<QTextEdit>("textEdit_Rev")->setPlainText("8A5E4700" + QString(130, '0') + "F1A1");
    m_bench->click("pushButton_AnalysisRev");
    QCOMPARE(Bench::takeNotices(), QStringList());
    QCOMPARE(text("label33_2"), QStringLiteral("71"));
    QCOMPARE(text("label303_2"), QStringLiteral("无命令"));
    QCOMPARE(text("label304_2"), QString());
    QCOMPARE(text("label313_2"), QStringLiteral("通过"));
}

void tst_dataPacketAnalysis::analysisFillsBothForms()
{
    m_bench->find<QTextEdit>("textEdit_Rev")->setPlainText(kGcuFrame);
    m_bench->click("pushButton_AnalysisRev");
    QCOMPARE(Bench::takeNotices(), QStringList());
    // clang-format off
    const QMap<const char *, QString> expected = {
        {"label33_2", "73"},           {"label34_2", "49 00 "},
        {"label43_2", "1"},            {"lineEdit53_2", "指向锁定模式"},
        {"label54_2", "11 "},          {"lineEdit63_2", ""},
        {"label64_2", "A5 5A "},       {"lineEdit73_2", "10"},
        {"lineEdit83_2", "-10"},       {"lineEdit_83_2", "12.34"},
        {"label_84_2", "D2 04 "},      {"lineEdit93_2", "-12.34"},
        {"lineEdit103_2", "0.01"},     {"lineEdit113_2", "-0.01"},
        {"lineEdit123_2", "-45.08"},   {"lineEdit133_2", "655.35"},
        {"lineEdit143_2", "1.5"},      {"lineEdit153_2", "-1.5"},
        {"lineEdit163_2", "0"},        {"label174_2", "C1 C2 C3 C4 C5 C6 C7 "},
        {"label183_2", "1"},           {"lineEdit193_2", "2"},
        {"lineEdit203_2", "3"},        {"lineEdit213_2", "4"},
        {"lineEdit223_2", ""},         {"label224_2", "01 80 "},
        {"lineEdit233_2", "1234.5"},   {"lineEdit243_2", "170.9175332"},
        {"lineEdit253_2", "-122.5000000"}, {"lineEdit263_2", "41.123"},
        {"lineEdit273_2", "2"},        {"lineEdit283_2", "6553.5"},
        {"label294_2", "D1 D2 D3 D4 D5 D6 "}, {"label303_2", "拍照成功"},
        {"label304_2", "20 00 "},      {"label313_2", "通过"},
        {"label314_2", "B7 AB "}};
    // clang-format on
    for (auto it = expected.begin(); it != expected.end(); ++it)
        QCOMPARE(QString("%1: %2").arg(it.key(), text(it.key())),
                 QString("%1: %2").arg(it.key(), it.value()));
}

void tst_dataPacketAnalysis::framesOfAnyLength()
{
    const QByteArray host = bytesOf(kFormFrame), gcu = bytesOf(kGcuFrame);
    for (int size = 0; size <= host.size(); ++size)
        m_page->showHostFrame(host.left(size));
    for (int size = 0; size <= gcu.size(); ++size)
        m_page->showReceivedFrame(gcu.left(size));
    for (const char *length : {"0000", "0100", "0200", "4600", "FFFF", "0080", "FF7F"}) {
        QByteArray frame = gcu;
        frame.replace(2, 2, QByteArray::fromHex(length));
        m_page->showHostFrame(frame);
        m_page->showGcuFrame(frame);
    }
    // Of a frame cut after its length byte the rest reads as zero, and nothing is sliced.
    m_page->showGcuFrame(gcu.left(4));
    QCOMPARE(text("label33_2"), QStringLiteral("73"));
    QCOMPARE(text("lineEdit243_2"), QStringLiteral("0.0000000"));
    QCOMPARE(text("label244_2"), QString());
    QCOMPARE(text("label303_2"), QStringLiteral("空命令成功"));
    QCOMPARE(text("label313_2"), QStringLiteral("不通过"));
    // A longer frame is shown by its own length: area and CRC stand where S says.
    m_page->showHostFrame(host + "tail");
    QCOMPARE(text("label294"), QStringLiteral("00 "));
    QCOMPARE(text("label303"), QStringLiteral("通过"));
}

void tst_dataPacketAnalysis::applyCommand()
{
    m_page->applyCommand(QStringLiteral("拍照"), {}, {}, {}, {}, {}, {});
    QCOMPARE(text("label33"), QStringLiteral("73"));
    QCOMPARE(text("label34"), QStringLiteral("49 00 "));
    QCOMPARE(text("label293"), QStringLiteral("拍照"));
    QCOMPARE(text("label294"), QStringLiteral("20 01 "));
    QCOMPARE(text("label303"), QStringLiteral("通过"));
    QCOMPARE(text("label304"), QStringLiteral("C9 22 "));
    // A name that no command has empties the area: 71 bytes without a code.
    m_page->applyCommand(QStringLiteral("凝视(地理目标锁定)"), {}, {}, {}, {}, {}, {});
    QCOMPARE(text("label33"), QStringLiteral("71"));
    QCOMPARE(text("label294"), QString());
    QCOMPARE(m_page->buildHostFrame().size(), 71);
}

void tst_dataPacketAnalysis::historyView()
{
    m_page->setHistoryView(0);
    QVERIFY(m_page->findChild<QWidget *>("widget_7")->isVisible());
    m_page->setHistoryView(1);
    for (const char *part : {"widget_7", "widget_8", "widget_80", "widget_81"})
        QVERIFY2(!m_page->findChild<QWidget *>(part)->isVisible(), part);
}

void tst_dataPacketAnalysis::languageSwitch()
{
    m_page->showReceivedFrame(bytesOf(kGcuFrame).replace(70, 1, "\2"));
    QCOMPARE(text("label303_2"), QStringLiteral("拍照执行中"));
    QCOMPARE(text("label313_2"), QStringLiteral("不通过"));
    typeInto("lineEdit73", QStringLiteral("321"));

    QGlobal::instance()->languageChinese = false;
    m_page->retranslate();
    const auto english = [](const char *key) {
        return QGlobal::instance()->englishTexts->value(QString::fromUtf8(key));
    };
    QCOMPARE(text("lineEdit73"), QStringLiteral("321"));
    QCOMPARE(text("pushButton_Send_Null"), english("发送空指令"));
    QCOMPARE(text("label52"), english("滚转控制量"));
    QCOMPARE(text("label293"), english("空命令"));
    QCOMPARE(text("lineEdit53_2"), english("指向锁定模式"));
    QCOMPARE(text("label303"), english("通过"));
    QCOMPARE(text("label313_2"), english("不通过"));
    // What was still executing reads as failed from here on: a renewed text knows two words only.
    QCOMPARE(text("label303_2"), english("拍照") + english("失败"));

    QGlobal::instance()->languageChinese = true;
    m_page->retranslate();
    QCOMPARE(text("label303"), QStringLiteral("通过"));
    QCOMPARE(text("label313_2"), QStringLiteral("不通过"));
    QCOMPARE(text("label303_2"), QStringLiteral("拍照失败"));
}

NACELLE_TEST_MAIN(tst_dataPacketAnalysis)
#include "tst_dataPacketAnalysis.moc"
