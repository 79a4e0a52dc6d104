#include "console/flowAnalysis.h"
#include "foundation/QGlobal.h"
#include "protocol/dataPacketAnalysis.h"
#include "shell/LogDisplay.h"
#include "shell/connectDevice.h"
#include "tests/support/bench.h"
#include "tests/support/strictmain.h"

#include <QRegularExpression>
#include <QTextEdit>
#include <QTimer>

namespace {

/// A whole GCU frame whose miss distance says which one it is.
QByteArray gcuFrame(int number, char code = 0x20)
{
    return QByteArray::fromHex("8A5E49000111 0000") + char(number) + char(number >> 8) +
           QByteArray(59, '\0') + code + QByteArray::fromHex("00 1234");
}

QByteArray hostFrame(int number)
{
    return QByteArray::fromHex("A8E5480001") + char(number) + char(number >> 8) +
           QByteArray(62, '\0') + QByteArray::fromHex("00 5678");
}

/// Times differ from run to run, and nothing else may.
QString withoutTimes(QString text)
{
    static const QRegularExpression time(QStringLiteral("\\d\\d:\\d\\d:\\d\\d:\\d\\d\\d"));
    return text.replace(time, QStringLiteral("HH:mm:ss:zzz"));
}

} // namespace

class tst_NacelleBench : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void startState();
    void pagesAreMadeAnew();
    void frameAfterAPageIsGivenUp();
    void logEntries();
    void receivedFrameReachesThePacketPage();
    void receivedFrameReachesTheConsole();
    void everyStoredRangeSelectsItsEntry();
    void rangesAfterOldBlocksHaveLeft();
    void historyWalk();
    void historyOfLostText();
    void historyWithoutFrames();
    void historyViewDoesNotFollowTheWire();
    void burstsLeaveTheSame_data();
    void burstsLeaveTheSame();
    void typedTextShiftsSelections();
    void closingEndsTheLoop();

private:
    /// What many frames leave, without their times.
    struct Outcome
    {
        QString log;
        QList<QList<int>> positions;
        QStringList selected = {}; ///< of each group, newest first
        QStringList walked = {};   ///< what form and log show, step by step
    };

    QString entryText(const QString &selected);
    void handOver(int number);
    Outcome outcome(int burst, int lines);

    std::unique_ptr<Bench> m_bench;
};

void tst_NacelleBench::init()
{
    QGlobal::instance()->languageChinese = true;
    m_bench = std::make_unique<Bench>();
}

void tst_NacelleBench::cleanup()
{
    m_bench.reset();
}

/// An entry without its time, which is another at each run: "收8A5E..." of one, two lines joined.
QString tst_NacelleBench::entryText(const QString &selected)
{
    QString text = selected;
    text.replace(QChar(QChar::ParagraphSeparator), QLatin1Char('\n'));
    static const QRegularExpression stamp(
        QStringLiteral("^\\[\\d\\d:\\d\\d:\\d\\d:\\d\\d\\d\\](发|收)->\\n"),
        QRegularExpression::MultilineOption);
    return text.replace(stamp, QStringLiteral("\\1"));
}

void tst_NacelleBench::startState()
{
    QVERIFY((*m_bench)->windowState() & Qt::WindowMaximized);
    QCOMPARE((*m_bench)->windowTitle(), QStringLiteral("云台报文工作台"));
    QVERIFY(!(*m_bench)->windowIcon().pixmap(32).isNull());
    QCOMPARE((*m_bench)->currentPageIndex, 0);
    QVERIFY(m_bench->find<dataPacketAnalysis>("CurrentPage"));
    QVERIFY(m_bench->find<QPushButton>("pushButton_1")->isChecked());
    QCOMPARE(m_bench->find<QWidget>("CurrentPage")->size(),
             m_bench->find<QWidget>("widget_2")->size());
    for (const char *button : {"pushButton_Switch", "pushButton_up", "pushButton_next"})
        QVERIFY(!m_bench->find<QPushButton>(button)->isVisible());
    const QMetaObject *meta = (*m_bench)->metaObject();
    for (const char *method :
         {"CreateTCP(QString,int,int)", "CreateTCP(QString,int,int,bool)",
          "CreateUDP(QString,int,int)", "CreateSerialPort(QString,int,int,int,int,bool)",
          "receive()", "receiveData(QByteArray,QString)", "receiveData(QByteArray,QString,int)",
          "ConnectSuccess(QTcpSocket*)", "ConnectFail(QString)", "Disconnect()",
          "signalsCreateTCP(QString,bool)", "SelectFlowAnalysis(bool)"})
        QVERIFY2(meta->indexOfMethod(method) >= 0, method);
}

void tst_NacelleBench::pagesAreMadeAnew()
{
    QPointer<QWidget> first = m_bench->find<dataPacketAnalysis>("CurrentPage");
    m_bench->click("pushButton_1"); // already checked: nothing happens
    QCOMPARE(m_bench->find<QWidget>("CurrentPage"), first.data());

    (*m_bench)->sendData(hostFrame(1));
    m_bench->click("pushButton_2");
    QVERIFY(m_bench->find<flowAnalysis>("CurrentPage"));
    QCOMPARE((*m_bench)->currentPageIndex, 1);
    QVERIFY(first); // given up, but the event loop hasn't turned
    QVERIFY(!first->parent());
    QCOMPARE(m_bench->log(), QString());
    QCOMPARE((*m_bench)->sentFrames.size(), 1);
    for (const char *button : {"pushButton_Switch", "pushButton_up", "pushButton_next"})
        QVERIFY(m_bench->find<QPushButton>(button)->isVisible());
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(!first);
    m_bench->click("pushButton_1");
    QCOMPARE((*m_bench)->currentPageIndex, 0);
}

void tst_NacelleBench::frameAfterAPageIsGivenUp()
{
    auto *first = m_bench->find<dataPacketAnalysis>("CurrentPage");
    m_bench->click("pushButton_2");
    m_bench->click("pushButton_1");
    (*m_bench)->receiveData(gcuFrame(5), QString());
    QCOMPARE(first->findChild<QLineEdit *>(QStringLiteral("lineEdit73_2"))->text(), QString());
    QCOMPARE(m_bench->find<QLineEdit>("lineEdit73_2")->text(), QStringLiteral("5"));
}

void tst_NacelleBench::logEntries()
{
    (*m_bench)->sendData(QByteArray::fromHex("A80500FF"));
    (*m_bench)->receiveData("noise", QString());
    const QString log = m_bench->log();
    QVERIFY(
        QRegularExpression(QStringLiteral("^\\[\\d\\d:\\d\\d:\\d\\d:\\d\\d\\d\\]发->\\nA80500FF\\n"
                                          "\\[\\d\\d:\\d\\d:\\d\\d:\\d\\d\\d\\]收->\\n$"))
            .match(log)
            .hasMatch());
    QCOMPARE((*m_bench)->sentStarts, QList<int>{0});
    QCOMPARE((*m_bench)->sentEnds, QList<int>{27});
    QCOMPARE((*m_bench)->receivedStarts, QList<int>{27});
    QCOMPARE((*m_bench)->receivedEnds, QList<int>{46});
    QCOMPARE(log.size(), 45);
    m_bench->click("pushButton_Clear");
    QCOMPARE(m_bench->log(), QString());
    QCOMPARE((*m_bench)->receivedFrames, QList<QByteArray>{QByteArray()});
}

void tst_NacelleBench::receivedFrameReachesThePacketPage()
{
    (*m_bench)->receiveData(gcuFrame(300), QString());
    QCOMPARE(m_bench->find<QLineEdit>("lineEdit73_2")->text(), QStringLiteral("300"));
    QVERIFY(m_bench->find<QTextEdit>("textEdit_Rev")->toPlainText().startsWith("8A 5E 49 00 "));
    QCOMPARE(m_bench->find<QLabel>("label313_2")->text(), QStringLiteral("不通过"));
    // A length below 71 leaves nothing for the feedback, whatever stands there.
    (*m_bench)->receiveData(gcuFrame(300).replace(2, 2, "\xFF\xFF"), QString());
    QCOMPARE(m_bench->find<QLabel>("label304_2")->text(), QString());
}

void tst_NacelleBench::receivedFrameReachesTheConsole()
{
    m_bench->click("pushButton_2");
    (*m_bench)->receiveData(gcuFrame(1), QString());
    QVERIFY(m_bench->find<QPushButton>("pushButton_lock")->isChecked());
    // A frame without a mode byte reads as mode 0.
    (*m_bench)->receiveData("x", QString());
    QVERIFY(m_bench->find<QPushButton>("pushButton_null_2")->isChecked());
}

void tst_NacelleBench::everyStoredRangeSelectsItsEntry()
{
    NacelleBench *window = m_bench->window();
    for (int i = 0; i < 300; ++i) {
        if (i % 3 != 1)
            window->sendData(hostFrame(i).left(72 - i % 50));
        if (i % 5 != 2)
            window->receiveData(i % 7 ? gcuFrame(i) : QByteArray("noise"), QString());
    }
    auto *panel = m_bench->find<connectDevice>("connectDeviceClass");
    const int total = qMax(window->sentEnds.first(), window->receivedEnds.first());
    for (int i = 0; i < window->sentFrames.size(); ++i) {
        QCOMPARE(panel->selectLogRange(window->sentStarts[i] + 1, window->sentEnds[i], total), 0);
        QCOMPARE(entryText(m_bench->selection()),
                 QStringLiteral("发") + window->sentFrames[i].toHex().toUpper());
    }
    for (int i = 0; i < window->receivedFrames.size(); ++i) {
        panel->selectLogRange(window->receivedStarts[i] + 1, window->receivedEnds[i], total);
        QCOMPARE(entryText(m_bench->selection()),
                 QStringLiteral("收") + window->receivedFrames[i].toHex().toUpper());
    }
}

void tst_NacelleBench::rangesAfterOldBlocksHaveLeft()
{
    NacelleBench *window = m_bench->window();
    m_bench->find<QPlainTextEdit>("textEdit")->setMaximumBlockCount(40);
    for (int i = 0; i < 50; ++i)
        window->sendData(hostFrame(i));
    auto *panel = m_bench->find<connectDevice>("connectDeviceClass");
    const int total = window->sentEnds.first();
    for (int i = 0; i < 50; ++i) {
        const int result =
            panel->selectLogRange(window->sentStarts[i] + 1, window->sentEnds[i], total);
        QCOMPARE(result, i < 20 ? 0 : -1);
        if (i < 20)
            QCOMPARE(entryText(m_bench->selection()),
                     QStringLiteral("发") + window->sentFrames[i].toHex().toUpper());
    }
}

void tst_NacelleBench::historyWalk()
{
    NacelleBench *window = m_bench->window();
    m_bench->click("pushButton_2");
    for (int i = 1; i <= 3; ++i) {
        window->sendData(hostFrame(10 * i));
        window->receiveData(gcuFrame(i), QString());
    }
    window->sendData(hostFrame(40)); // no answer: groups shift, as nothing ties the two lists
    m_bench->click("pushButton_up"); // without effect in front of the console
    QCOMPARE(window->historyIndex, 0);

    QCOMPARE(m_bench->find<QPushButton>("pushButton_Switch")->text(), QStringLiteral("数据解析"));
    m_bench->click("pushButton_Switch");
    QCOMPARE(m_bench->find<QPushButton>("pushButton_Switch")->text(), QStringLiteral("控制命令"));
    QCOMPARE(window->currentPageIndex, 1);
    const auto shown = [this] {
        return m_bench->find<QLineEdit>("lineEdit53")->text() + QLatin1Char('/') +
               m_bench->find<QLineEdit>("lineEdit73_2")->text();
    };
    const auto selected = [this] { return entryText(m_bench->selection()); };
    const auto sent = [](int n) { return QStringLiteral("发") + hostFrame(n).toHex().toUpper(); };
    QCOMPARE(shown(), QStringLiteral("40/3"));
    QCOMPARE(selected(), sent(40));
    m_bench->click("pushButton_up");
    QCOMPARE(shown(), QStringLiteral("30/2"));
    QCOMPARE(selected(), sent(30));
    m_bench->click("pushButton_up");
    m_bench->click("pushButton_up");
    QCOMPARE(window->historyIndex, 3);
    QCOMPARE(m_bench->find<QLineEdit>("lineEdit53")->text(), QStringLiteral("10"));
    QCOMPARE(selected(), sent(10));
    m_bench->click("pushButton_up"); // past the oldest: back to the newest
    QCOMPARE(window->historyIndex, 0);
    QCOMPARE(shown(), QStringLiteral("40/3"));
    m_bench->click("pushButton_next");
    QCOMPARE(window->historyIndex, 0);
    m_bench->click("pushButton_up");
    m_bench->click("pushButton_next");
    QCOMPARE(shown(), QStringLiteral("40/3"));

    // An answer that follows its command at once is selected with it.
    window->receiveData(gcuFrame(4), QString());
    m_bench->click("pushButton_next");
    QCOMPARE(selected(),
             sent(40) + QLatin1Char('\n') + QStringLiteral("收") + gcuFrame(4).toHex().toUpper());

    m_bench->click("pushButton_Switch");
    QVERIFY(m_bench->find<flowAnalysis>("CurrentPage"));
    QCOMPARE(m_bench->selection(), QString());
    QCOMPARE(window->historyIndex, 0);
}

void tst_NacelleBench::historyOfLostText()
{
    m_bench->click("pushButton_2");
    for (int i = 1; i <= 3; ++i)
        (*m_bench)->sendData(hostFrame(i));
    m_bench->click("pushButton_Clear");
    m_bench->click("pushButton_Switch");
    // The newest group passes with an empty selection; an older one changes nothing.
    QCOMPARE(m_bench->find<QLineEdit>("lineEdit53")->text(), QStringLiteral("3"));
    m_bench->click("pushButton_up");
    QCOMPARE(m_bench->find<QLineEdit>("lineEdit53")->text(), QStringLiteral("3"));
    QCOMPARE((*m_bench)->historyIndex, 0);
}

void tst_NacelleBench::historyWithoutFrames()
{
    m_bench->click("pushButton_2");
    m_bench->click("pushButton_Switch");
    m_bench->click("pushButton_up");
    m_bench->click("pushButton_next");
    QCOMPARE(m_bench->find<QLineEdit>("lineEdit53")->text(), QStringLiteral("0"));
    QCOMPARE(m_bench->find<QLabel>("label33_2")->text(), QStringLiteral("-"));
    // A received frame alone is shown, and nothing is selected for it.
    (*m_bench)->receiveData(gcuFrame(6), QString());
    m_bench->click("pushButton_next");
    QCOMPARE(m_bench->find<QLineEdit>("lineEdit73_2")->text(), QStringLiteral("6"));
    QCOMPARE(m_bench->selection(), QString());
}

void tst_NacelleBench::historyViewDoesNotFollowTheWire()
{
    m_bench->click("pushButton_2");
    (*m_bench)->sendData(hostFrame(1));
    m_bench->click("pushButton_Switch");
    (*m_bench)->receiveData(gcuFrame(9), QString());
    QCOMPARE((*m_bench)->receivedFrames.size(), 1);
    QCOMPARE(m_bench->find<QLineEdit>("lineEdit73_2")->text(), QString());
}

/// Both ways, of all lengths, with and without an answer; one in many fills pages.
void tst_NacelleBench::handOver(int number)
{
    if (number % 3 != 1)
        (*m_bench)->sendData(hostFrame(number).left(72 - number % 50));
    else if (number % 500 == 1)
        (*m_bench)->receiveData(QByteArray::fromHex("8A5E00FF") + QByteArray(3000, '\x5A'),
                                QString());
    else
        (*m_bench)->receiveData(gcuFrame(number), QString());
}

/// Frames that come in bursts, with a turn of the event loop after each of them. A burst of one is
/// looked at before the next.
tst_NacelleBench::Outcome tst_NacelleBench::outcome(int burst, int lines)
{
    constexpr int kFrames = 4000;
    constexpr int kSteps = 40;
    m_bench = std::make_unique<Bench>();
    NacelleBench *window = m_bench->window();
    m_bench->click("pushButton_2");
    auto *log = m_bench->find<LogDisplay>("textEdit");
    log->setMaximumBlockCount(lines);
    for (int i = 1; i <= kFrames; ++i) {
        handOver(i);
        if (i % burst == 0)
            QCoreApplication::processEvents();
        if (burst == 1)
            log->settle();
    }
    Outcome seen{
        entryText(m_bench->log()),
        {window->sentStarts, window->sentEnds, window->receivedStarts, window->receivedEnds}};
    auto *panel = m_bench->find<connectDevice>("connectDeviceClass");
    for (int i = 0; i < window->sentFrames.size(); ++i) {
        const FrameHistory::Range range = window->groupRange(i);
        const int result = panel->selectLogRange(range.start, range.end, window->logEnd());
        seen.selected << QString::number(result) + withoutTimes(m_bench->selection());
    }
    m_bench->click("pushButton_Switch");
    for (int i = 0; i < kSteps; ++i) {
        m_bench->click(i % 4 == 3 ? "pushButton_next" : "pushButton_up");
        seen.walked << m_bench->find<QLineEdit>("lineEdit53")->text() + '/' +
                           m_bench->find<QLineEdit>("lineEdit73_2")->text() +
                           withoutTimes(m_bench->selection());
    }
    return seen;
}

void tst_NacelleBench::burstsLeaveTheSame_data()
{
    QTest::addColumn<int>("burst");
    QTest::addColumn<int>("lines");
    QTest::newRow("as many as a read may bring") << 7 << 50000;
    QTest::newRow("a second without a turn") << 4000 << 50000;
    QTest::newRow("old lines leave, by the way") << 7 << 1001;
    QTest::newRow("old lines leave, all at once") << 4000 << 1001;
}

/// The log's view follows some 30 times a second, whatever comes in between; text and positions
/// must not show it.
void tst_NacelleBench::burstsLeaveTheSame()
{
    QFETCH(int, burst);
    QFETCH(int, lines);
    const Outcome single = outcome(1, lines);
    const Outcome many = outcome(burst, lines);
    QCOMPARE(many.log, single.log);
    QCOMPARE(many.positions, single.positions);
    QCOMPARE(many.selected, single.selected);
    QCOMPARE(many.walked, single.walked);
}

void tst_NacelleBench::typedTextShiftsSelections()
{
    m_bench->click("pushButton_2");
    (*m_bench)->sendData(hostFrame(1));
    QTest::keyClicks(m_bench->find<QPlainTextEdit>("textEdit"), QStringLiteral("abc"));
    m_bench->click("pushButton_Switch");
    QVERIFY(m_bench->selection().endsWith(QStringLiteral("5678abc")));
}

/// Whatever other window is open.
void tst_NacelleBench::closingEndsTheLoop()
{
    QWidget other;
    other.show();
    QTimer::singleShot(0, m_bench->window(), &QWidget::close);
    QTimer::singleShot(20000, &other, [] { QApplication::exit(1); });
    QCOMPARE(QApplication::exec(), 0);
}

NACELLE_TEST_MAIN(tst_NacelleBench)
#include "tst_NacelleBench.moc"
