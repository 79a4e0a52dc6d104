#include "console/flowAnalysis.h"
#include "foundation/QGlobal.h"
#include "shell/LogDisplay.h"
#include "shell/connectDevice.h"
#include "tests/support/bench.h"
#include "tests/support/strictmain.h"

#include <QComboBox>
#include <QLineEdit>
#include <QScreen>
#include <QScrollBar>
#include <QValidator>

#ifdef __GLIBC__
#include <malloc.h>
#endif

class tst_connectDevice : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void startsOnUdp();
    void linkChoiceSetsFields();
    void faults_data();
    void faults();
    void typedPortsUpTo99999();
    void pressOnTheListRenewsIt();
    void tabStopsAreSeen();
    void retranslateKeepsChoices();
    void logFollows_data();
    void logFollows();
    void longLinesGiveTheirLayoutUp();
    void longLinesAfterAnEmptyLog();

private:
    QComboBox *links() { return m_bench->find<QComboBox>("comboBox"); }
    QLineEdit *edit(const char *name) { return m_bench->find<QLineEdit>(name); }

    std::unique_ptr<Bench> m_bench;
};

void tst_connectDevice::init()
{
    QGlobal::instance()->languageChinese = true;
    m_bench = std::make_unique<Bench>();
}

void tst_connectDevice::cleanup()
{
    m_bench.reset();
}

void tst_connectDevice::startsOnUdp()
{
    QCOMPARE(links()->currentText(), QStringLiteral("UDP"));
    QCOMPARE(links()->itemText(0), QStringLiteral("TCP Client"));
    QCOMPARE(edit("LineEdit_RemoteIp")->text(), QStringLiteral("192.168.144.121"));
    QCOMPARE(edit("LineEdit_Port1")->text(), QStringLiteral("2337"));
    QCOMPARE(edit("LineEdit_Port2")->text(), QStringLiteral("2338"));
    QCOMPARE(m_bench->find<QPlainTextEdit>("textEdit")->maximumBlockCount(), 50000);
    QVERIFY(!m_bench->find<QPlainTextEdit>("textEdit")->isReadOnly());
    const auto *rates = m_bench->find<QComboBox>("comboBox_s1");
    QCOMPARE(rates->count(), 25);
    QCOMPARE(rates->itemText(24), QStringLiteral("2000000"));
}

void tst_connectDevice::linkChoiceSetsFields()
{
    links()->addItem(QStringLiteral("port"));
    auto *network = m_bench->find<QWidget>("widget_9");
    auto *serial = m_bench->find<QWidget>("widget_11");
    links()->setCurrentIndex(0);
    QCOMPARE(edit("LineEdit_Port1")->text(), QStringLiteral("2332"));
    QCOMPARE(edit("LineEdit_Port2")->text(), QString());
    QCOMPARE(serial->maximumWidth(), 0);
    m_bench->find<QComboBox>("comboBox_s1")->setCurrentIndex(0);
    links()->setCurrentIndex(links()->count() - 1);
    QCOMPARE(m_bench->find<QComboBox>("comboBox_s1")->currentText(), QStringLiteral("115200"));
    QCOMPARE(network->maximumWidth(), 0);
    QCOMPARE(serial->maximumWidth(), 10000000);
    QVERIFY(m_bench->find<QPushButton>("pushButton_Conn")->isEnabled());
    links()->setCurrentIndex(1);
    QCOMPARE(edit("LineEdit_Port2")->text(), QStringLiteral("2338"));
    QCOMPARE(network->maximumWidth(), 10000000);
}

void tst_connectDevice::faults_data()
{
    QTest::addColumn<int>("link");
    QTest::addColumn<QString>("address");
    QTest::addColumn<QString>("port1");
    QTest::addColumn<QString>("port2");
    QTest::addColumn<QString>("notice");
    const auto row = [](int link, const char *address, const char *port1, const char *port2,
                        const char *notice) {
        QTest::addRow("%d %s %s %s", link, address, port1, port2)
            << link << address << port1 << port2 << QString::fromUtf8(notice);
    };
    row(0, "192.168.144.256", "1", "", "IP格式错误！");
    row(0, "1.2.3", "1", "", "IP格式错误！");
    row(0, "", "", "", "IP格式错误！");
    row(0, "127.0.0.1 ", "1", "", "IP格式错误！");
    row(0, "127.0.0.1", "", "", "远程端口不能为空！");
    row(0, "127.0.0.1", "70000", "", "远程端口设置不正确！");
    row(1, "300.0.0.1", "", "", "IP格式错误！");
    row(1, "127.0.0.1", "", "", "远程端口不能为空！");
    row(1, "127.0.0.1", "70000", "", "本地端口不能为空！");
    row(1, "127.0.0.1", "70000", "70000", "远程端口设置不正确！");
    row(1, "127.0.0.1", "0", "65536", "本地端口设置不正确！");
}

void tst_connectDevice::faults()
{
    QFETCH(int, link);
    QFETCH(QString, address);
    QFETCH(QString, port1);
    QFETCH(QString, port2);
    QFETCH(QString, notice);
    links()->setCurrentIndex(link);
    edit("LineEdit_RemoteIp")->setText(address);
    edit("LineEdit_Port1")->setText(port1);
    edit("LineEdit_Port2")->setText(port2);
    auto *button = m_bench->find<QPushButton>("pushButton_Conn");
    m_bench->click("pushButton_Conn");
    QCOMPARE(Bench::takeNotices(), QStringList{notice});
    QVERIFY(!button->isChecked());
    QCOMPARE(button->text(), QStringLiteral("连接"));
}

/// The second rule takes the first one's place, so that a port of five digits can be typed.
void tst_connectDevice::typedPortsUpTo99999()
{
    auto *port = edit("LineEdit_Port1");
    port->clear();
    QTest::keyClicks(port, QStringLiteral("-x99999"));
    QCOMPARE(port->text(), QStringLiteral("99999"));
    QTest::keyClicks(port, QStringLiteral("9"));
    QCOMPARE(port->text(), QStringLiteral("99999"));
}

void tst_connectDevice::pressOnTheListRenewsIt()
{
    links()->addItem(QStringLiteral("unplugged"));
    edit("LineEdit_Port1")->setText(QStringLiteral("9"));
    m_bench->find<QComboBox>("comboBox_s1")->setCurrentIndex(0);
    QTest::mouseClick(links(), Qt::LeftButton);
    links()->hidePopup();
    QCOMPARE(links()->findText(QStringLiteral("unplugged")), -1);
    QCOMPARE(links()->currentText(), QStringLiteral("UDP"));
    // What was typed is overwritten; it is the program's way.
    QCOMPARE(edit("LineEdit_Port1")->text(), QStringLiteral("2337"));
    QCOMPARE(m_bench->find<QComboBox>("comboBox_s1")->currentText(), QStringLiteral("115200"));
    // A chosen port that is gone leaves the first link.
    links()->addItem(QStringLiteral("unplugged"));
    links()->setCurrentText(QStringLiteral("unplugged"));
    QTest::mouseClick(links(), Qt::LeftButton);
    links()->hidePopup();
    QCOMPARE(links()->currentText(), QStringLiteral("TCP Client"));
}

/// The Tab key, once around the window: what it comes to is seen, whatever link and mode.
void tst_connectDevice::tabStopsAreSeen()
{
    links()->addItem(QStringLiteral("port"));
    m_bench->click("pushButton_2");
    auto *console = m_bench->find<flowAnalysis>("CurrentPage");
    const auto hasNoKeyboard = [](const QWidget *unseen) {
        return !unseen->isAncestorOf(QApplication::focusWidget());
    };
    const QList<QWidget *> folding = {
        m_bench->find<QWidget>("widget_9"), m_bench->find<QWidget>("widget_11"),
        console->findChild<QWidget *>("widget_3"), console->findChild<QWidget *>("widget_14")};
    QVERIFY(QTest::qWaitForWindowActive(m_bench->window()));
    for (const auto &[link, mode, stops] :
         {std::tuple{"UDP", 0x14, 46}, {"port", 0x11, 45}, {"UDP", 0, 43}}) {
        links()->setCurrentText(link);
        // In use when the pod changes its mode.
        console->findChild<QWidget *>(mode ? "lineEdit_s_1" : "horizontalSlider1")->setFocus();
        console->setPodMode(qint8(mode));
        QCoreApplication::processEvents();
        QVERIFY(mode || hasNoKeyboard(folding.last()));
        links()->setFocus();
        int seen = 0;
        do {
            for (const QWidget *part : folding)
                QVERIFY2((part->height() && part->width()) || hasNoKeyboard(part),
                         qPrintable(QApplication::focusWidget()->objectName()));
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
            ++seen;
        } while (QApplication::focusWidget() != links());
        QCOMPARE(seen, stops);
    }
}

void tst_connectDevice::retranslateKeepsChoices()
{
    auto *parity = m_bench->find<QComboBox>("comboBox_s4");
    parity->setCurrentIndex(2);
    QGlobal::instance()->languageChinese = false;
    m_bench->find<connectDevice>("connectDeviceClass")->retranslate();
    const auto english = [](const char *key) {
        return QGlobal::instance()->englishTexts->value(QString::fromUtf8(key));
    };
    QCOMPARE(parity->currentIndex(), 2);
    QCOMPARE(parity->currentText(), english("偶校验"));
    QCOMPARE(m_bench->find<QPushButton>("pushButton_Conn")->text(), english("连接"));
    QCOMPARE(m_bench->find<QPushButton>("pushButton_Switch")->text(), english("数据解析"));
    QCOMPARE(links()->itemText(0), QStringLiteral("TCP Client"));
}

/// True if the screen shows the widget as it would be painted now.
static bool isOnScreen(QWidget *part)
{
    const QRect place(part->mapTo(part->window(), QPoint()), part->size());
    const QImage painted = part->grab().toImage();
    return painted == part->screen()
                          ->grabWindow(part->window()->winId(), place.x(), place.y(), place.width(),
                                       place.height())
                          .toImage()
                          .convertToFormat(painted.format());
}

/// What comes to a view before it has followed: another window goes off a part of it, the operator
/// turns the wheel.
static void meanwhile(QPlainTextEdit *log, int entry)
{
    if (entry % 14 == 2)
        log->viewport()->repaint(0, 100, 200, 40);
    if (entry % 14 == 8)
        log->verticalScrollBar()->triggerAction(QScrollBar::SliderSingleStepSub);
}

void tst_connectDevice::logFollows_data()
{
    QTest::addColumn<int>("entries");
    QTest::addColumn<int>("digits");
    QTest::addColumn<int>("limit");
    QTest::addColumn<int>("together");
    QTest::newRow("few") << 3 << 146 << 50000 << 1000;
    QTest::newRow("many") << 300 << 146 << 50000 << 1000;
    QTest::newRow("many, one by one") << 60 << 146 << 50000 << 1;
    QTest::newRow("more than the display keeps") << 300 << 146 << 40 << 1000;
    QTest::newRow("more than the display keeps, one by one") << 120 << 146 << 120 << 1;
    QTest::newRow("more than the display keeps, by threes") << 60 << 60 << 80 << 3;
    QTest::newRow("more than the display keeps, looked at meanwhile") << 40 << 146 << 80 << 7;
    QTest::newRow("lines longer than the view") << 5 << 60000 << 50000 << 1000;
    QTest::newRow("long lines, more than the display keeps") << 30 << 600 << 40 << 1000;
}

/// Texts stand there at once, the view soon after, also when the operator had clicked or scrolled
/// elsewhere.
void tst_connectDevice::logFollows()
{
    QFETCH(int, entries);
    QFETCH(int, digits);
    QFETCH(int, limit);
    QFETCH(int, together);
    enum class Touch { None, Click, Scroll };
    auto *panel = m_bench->find<connectDevice>("connectDeviceClass");
    auto *log = m_bench->find<QPlainTextEdit>("textEdit");
    log->setMaximumBlockCount(limit);
    QApplication::setCursorFlashTime(0);
    QStringList lines;
    for (const auto touch : {Touch::None, Touch::Click, Touch::Scroll}) {
        if (touch == Touch::Click)
            QTest::mouseClick(log->viewport(), Qt::LeftButton, {}, {5, 5});
        else if (touch == Touch::Scroll)
            log->verticalScrollBar()->setValue(0);
        for (int i = 0; i < entries; ++i) {
            const int length = digits < 1000 ? digits * (1 + i % 3) : digits;
            const QStringList entry{QString::number(i) + "->", QString(length, QLatin1Char('A'))};
            lines += entry;
            panel->appendLog(entry.join('\n'));
            QVERIFY(log->textCursor().atEnd() && !log->textCursor().hasSelection());
            meanwhile(log, i);
            if (i % together == together - 1)
                QTest::qWait(together == 1 ? 15 : 60);
        }
        lines = lines.mid(qMax(0, lines.size() - limit));
        QCOMPARE(m_bench->log(), lines.join('\n'));
        QTRY_VERIFY(log->viewport()->rect().contains(log->cursorRect().center()));
        // The toolkit stops at the cursor's line: lines of unlike heights leave a few below.
        QVERIFY(log->verticalScrollBar()->maximum() - log->verticalScrollBar()->value() <= 4);
        // The bar is white but for its handle.
        const QImage bar = log->verticalScrollBar()->grab().toImage();
        QImage white(bar.size(), bar.format());
        white.fill(Qt::white);
        QVERIFY(bar != white);
        // What was moved and painted in parts is what would be painted at once.
        QTRY_VERIFY(isOnScreen(log->viewport()));
    }
}

/// What is allocated; only the GNU library says so, elsewhere nothing is.
static int heapMegabytes()
{
#ifdef __GLIBC__
    const auto heap = mallinfo2();
    return int((heap.uordblks + heap.hblkhd) / 1000000);
#else
    return 0;
#endif
}

/// Of the lines that a flood makes, one keeps what it was laid out with: eight megabytes.
void tst_connectDevice::longLinesGiveTheirLayoutUp()
{
    auto *log = m_bench->find<LogDisplay>("textEdit");
    const int before = heapMegabytes();
    for (int i = 0; i < 20; ++i) {
        log->append("->\n" + QString(262028, QLatin1Char('A')));
        log->settle();
    }
    const int grown = heapMegabytes() - before;
    QVERIFY2(grown < 60, qPrintable(QString::number(grown)));
}

/// The line whose layout was kept is gone then.
void tst_connectDevice::longLinesAfterAnEmptyLog()
{
    auto *log = m_bench->find<LogDisplay>("textEdit");
    for (int i = 0; i < 3; ++i) {
        for (int entry = 0; entry < 100; ++entry)
            log->append("->\n" + QString(146, QLatin1Char('A')));
        for (const int digits : {6000, 120000}) {
            log->append("->\n" + QString(digits, QLatin1Char('A')));
            log->settle();
            log->clear();
            log->append("->\n" + QString(digits, QLatin1Char('B')));
            log->settle();
            QCOMPARE(log->toPlainText(), "->\n" + QString(digits, QLatin1Char('B')));
        }
    }
}

NACELLE_TEST_MAIN(tst_connectDevice)
#include "tst_connectDevice.moc"
