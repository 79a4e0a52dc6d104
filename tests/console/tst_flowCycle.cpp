#include "console/flowAnalysis.h"
#include "foundation/QGlobal.h"
#include "tests/support/bench.h"
#include "tests/support/strictmain.h"

#include <QComboBox>
#include <QLineEdit>
#include <QNetworkDatagram>
#include <QPointer>
#include <QSemaphore>
#include <QSlider>
#include <QThreadPool>
#include <QUdpSocket>

#include <memory>

/// A pod on the loopback: keeps the frames that reach it and answers when it is told to.
class Pod : public QObject
{
    Q_OBJECT

public:
    Pod()
    {
        m_socket.bind(QHostAddress(QHostAddress::LocalHost));
        connect(&m_socket, &QUdpSocket::readyRead, this, [this] {
            while (m_socket.hasPendingDatagrams())
                frames.append(m_socket.receiveDatagram().data());
        });
    }

    int port() const { return m_socket.localPort(); }
    void answer(const QByteArray &frame, int port)
    {
        m_socket.writeDatagram(frame, QHostAddress::LocalHost, quint16(port));
    }

    QList<QByteArray> frames;

private:
    QUdpSocket m_socket;
};

/// A GCU frame of 71 bytes and a feedback area. Its CRC isn't looked at by this page.
static QByteArray gcuFrame(int mode, const QByteArray &feedback)
{
    QByteArray frame = QByteArray::fromHex("8A5E000001") + char(mode) + QByteArray(63, '\0') +
                       feedback + QByteArray(2, '\0');
    frame[2] = char(frame.size());
    return frame;
}

/// The frames that the initial form makes.
static const QByteArray kHead = QByteArray::fromHex("010000000000000100000000000000000000"
                                                    "0000000000000000"
                                                    "0100000000000001"
                                                    "24F2DF6516EEAA16A3A000000FB00C0615E608"
                                                    "000000000000000000000000");
static const QByteArray kIdle =
    QByteArray::fromHex("A8E54800") + kHead + QByteArray::fromHex("000B2F");
static const QByteArray kPhoto =
    QByteArray::fromHex("A8E54900") + kHead + QByteArray::fromHex("2001E8B5");

class tst_flowCycle : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void firstFrameIsIdleThenTheCommand();
    void defaultModeGoesBackToIdle();
    void framesThatAreNoAnswer_data();
    void framesThatAreNoAnswer();
    void learningModeEndsWithAnIdleFrame();
    void learningModeStartsWithAnEmptyDisplay_data();
    void learningModeStartsWithAnEmptyDisplay();
    void learningModeWithoutASelectionRunsOn();
    void stopByTheButton_data();
    void stopByTheButton();
    void selectorTurnedDuringARun_data();
    void selectorTurnedDuringARun();
    void waitingCommandIsLostBehindAModeCommand();
    void reportUndoesAModeButton();
    void lateAnswerStillClearsTheSelection();
    void heldRateGoesOutWithEveryFrame();
    void secondRunOnTheSamePage();
    void restartWithinOneSleepKeepsTheOldWorker();
    void pageGivenUpDuringARunIsSilent_data();
    void pageGivenUpDuringARunIsSilent();
    void emissionQueuedForAGivenUpPageIsVoid_data() { pageGivenUpDuringARunIsSilent_data(); }
    void emissionQueuedForAGivenUpPageIsVoid();
    void nothingReachesAPageThatIsGone();
    void buttonTextFollowsTheLanguage();
    void withoutALinkTheRunIsLogged();

private:
    flowAnalysis *page() { return m_bench->find<flowAnalysis>("CurrentPage"); }
    QComboBox *selector() { return page()->findChild<QComboBox *>(QStringLiteral("comboBox")); }
    void click(const char *button) { m_bench->click(button); }
    bool isSelected(const char *button) { return m_bench->find<QPushButton>(button)->isChecked(); }
    QString startText() { return m_bench->find<QPushButton>("pushButton_start")->text(); }
    void selectLearning() { QTest::keyClick(selector(), Qt::Key_Down); }
    QList<QByteArray> &sent() { return m_bench->window()->sentFrames; }
    /// Lets the worker end and the page serve what it has emitted.
    void finishRun()
    {
        QThreadPool::globalInstance()->waitForDone();
        QCoreApplication::sendPostedEvents();
    }
    /// Sends a frame from the pod and waits until the window has recorded it.
    void answer(const QByteArray &frame)
    {
        const int before = m_bench->window()->receivedFrames.size();
        m_pod->answer(frame, m_localPort);
        QTRY_COMPARE(m_bench->window()->receivedFrames.size(), before + 1);
    }

    std::unique_ptr<Pod> m_pod;
    std::unique_ptr<Bench> m_bench;
    int m_localPort = 0;
};

void tst_flowCycle::init()
{
    QGlobal::instance()->languageChinese = true;
    m_pod = std::make_unique<Pod>();
    {
        QUdpSocket probe;
        QVERIFY(probe.bind(QHostAddress(QHostAddress::LocalHost)));
        m_localPort = probe.localPort();
    }
    m_bench = std::make_unique<Bench>();
    m_bench->window()->CreateUDP("127.0.0.1", m_pod->port(), m_localPort, true);
    QCOMPARE(Bench::takeNotices(), QStringList("创建UDP通信成功！"));
    click("pushButton_2");
}

void tst_flowCycle::cleanup()
{
    m_bench->window()->Disconnect();
    m_bench.reset();
    m_pod.reset();
    finishRun();
}

void tst_flowCycle::firstFrameIsIdleThenTheCommand()
{
    QVERIFY(m_pod->frames.isEmpty());
    click("pushButton_photo");
    QCOMPARE(sent().size(), 0); // a selection sends nothing by itself
    click("pushButton_start");
    QCOMPARE(sent().size(), 1);
    QCOMPARE(startText(), QString("停止"));
    QCOMPARE(page()->lastSentText, QString(kIdle.toHex().toUpper()));
    QTRY_VERIFY(m_pod->frames.size() >= 3);
    QCOMPARE(m_pod->frames.at(0).toHex(), kIdle.toHex());
    QCOMPARE(m_pod->frames.at(1).toHex(), kPhoto.toHex());
    QCOMPARE(m_pod->frames.at(2).toHex(), kPhoto.toHex());
    QCOMPARE(page()->lastSentText, QString(kPhoto.toHex().toUpper()));
}

void tst_flowCycle::defaultModeGoesBackToIdle()
{
    click("pushButton_photo");
    click("pushButton_start");
    QTRY_VERIFY(m_pod->frames.contains(kPhoto));
    answer(gcuFrame(0x13, QByteArray::fromHex("2001"))); // a failure is an answer too
    QVERIFY(isSelected("pushButton_null"));
    QVERIFY(!isSelected("pushButton_photo"));
    const int before = sent().size();
    QTRY_VERIFY(sent().size() >= before + 2);
    QCOMPARE(sent().at(0).toHex(), kIdle.toHex());
    QCOMPARE(startText(), QString("停止"));
}

void tst_flowCycle::framesThatAreNoAnswer_data()
{
    QTest::addColumn<QByteArray>("frame");
    QTest::newRow("another code") << gcuFrame(0, QByteArray::fromHex("2100"));
    QTest::newRow("code alone") << gcuFrame(0, QByteArray::fromHex("20"));
    QTest::newRow("three bytes of feedback") << gcuFrame(0, QByteArray::fromHex("200000"));
    QTest::newRow("no feedback") << gcuFrame(0, QByteArray());
    QTest::newRow("code zero") << gcuFrame(0, QByteArray::fromHex("0000"));
}

void tst_flowCycle::framesThatAreNoAnswer()
{
    QFETCH(QByteArray, frame);
    // Before anything was sent there is nothing to be answered.
    click("pushButton_photo");
    answer(gcuFrame(0, QByteArray::fromHex("2000")));
    QVERIFY(isSelected("pushButton_photo"));

    click("pushButton_start");
    QTRY_VERIFY(m_pod->frames.contains(kPhoto));
    answer(frame);
    QVERIFY(isSelected("pushButton_photo"));
    QVERIFY(!isSelected("pushButton_null"));
}

void tst_flowCycle::learningModeEndsWithAnIdleFrame()
{
    selectLearning();
    click("pushButton_photo");
    click("pushButton_start");
    int steps = 0;
    connect(page(), &flowAnalysis::signals_sendCmd, this, [&steps] { ++steps; });
    QTRY_VERIFY(m_pod->frames.contains(kPhoto));

    m_bench->window()->receiveData(gcuFrame(0x13, QByteArray::fromHex("2000")), QString());
    QCOMPARE(startText(), QString("停止")); // until the last emission
    finishRun();
    QCOMPARE(startText(), QString("启动"));
    // The first frame, then one for each step: also the step that told of the end gave its frame.
    QCOMPARE(sent().size(), steps + 1);
    QCOMPARE(sent().at(0).toHex(), kIdle.toHex());
    // As a rule it is the only one; a step that was queued at the moment of the answer gives one
    // too.
    const int closing = sent().indexOf(kPhoto);
    QVERIFY(closing == 1 || closing == 2);
    QCOMPARE(sent().count(kIdle), closing + 1);
    // The selection outlives the run.
    QVERIFY(isSelected("pushButton_photo"));
    QTRY_COMPARE(m_pod->frames.last().toHex(), kIdle.toHex());
}

void tst_flowCycle::learningModeStartsWithAnEmptyDisplay_data()
{
    QTest::addColumn<bool>("learning");
    QTest::newRow("default mode keeps it") << false;
    QTest::newRow("learning mode empties it") << true;
}

void tst_flowCycle::learningModeStartsWithAnEmptyDisplay()
{
    QFETCH(bool, learning);
    answer(gcuFrame(0, QByteArray::fromHex("0000")));
    m_bench->window()->sendData("old");
    m_bench->window()->historyIndex = 1;
    if (learning)
        selectLearning();
    click("pushButton_start");
    QCOMPARE(m_bench->log().contains("6F6C64"), !learning);
    QVERIFY(m_bench->log().contains(QString(kIdle.toHex().toUpper())));
    // The history starts again in both modes.
    QCOMPARE(sent().size(), 1);
    QCOMPARE(sent().at(0).toHex(), kIdle.toHex());
    QCOMPARE(m_bench->window()->sentStarts, QList<int>{0});
    QCOMPARE(m_bench->window()->sentEnds.size(), 1);
    QCOMPARE(m_bench->window()->receivedFrames.size(), 0);
    QCOMPARE(m_bench->window()->receivedStarts.size(), 0);
    QCOMPARE(m_bench->window()->receivedEnds.size(), 0);
    QCOMPARE(m_bench->window()->historyIndex, 0);
    QCOMPARE(m_bench->window()->flowRunMode, learning ? 1 : 0);
}

void tst_flowCycle::learningModeWithoutASelectionRunsOn()
{
    selectLearning();
    click("pushButton_start");
    answer(gcuFrame(0, QByteArray::fromHex("0000")));
    const int before = sent().size();
    QTRY_VERIFY(sent().size() >= before + 3);
    QCOMPARE(startText(), QString("停止"));
}

void tst_flowCycle::stopByTheButton_data()
{
    QTest::addColumn<bool>("learning");
    QTest::newRow("default mode") << false;
    QTest::newRow("learning mode") << true;
}

void tst_flowCycle::stopByTheButton()
{
    QFETCH(bool, learning);
    if (learning)
        selectLearning();
    click("pushButton_photo");
    click("pushButton_start");
    QTRY_VERIFY(m_pod->frames.contains(kPhoto));
    const int before = sent().size();
    click("pushButton_start");
    QCOMPARE(startText(), QString("启动"));
    QCOMPARE(sent().size(), before);
    finishRun();
    QCOMPARE(startText(), QString("启动"));
    if (learning)
        QVERIFY(sent().size() > before);
    else
        QCOMPARE(sent().size(), before);
    QCOMPARE(sent().at(0).toHex(), learning ? kIdle.toHex() : kPhoto.toHex());
}

void tst_flowCycle::selectorTurnedDuringARun_data()
{
    QTest::addColumn<bool>("toLearning");
    QTest::newRow("learning to default: stopped, no closing frame") << false;
    QTest::newRow("default to learning: not stopped, closing frame") << true;
}

void tst_flowCycle::selectorTurnedDuringARun()
{
    QFETCH(bool, toLearning);
    if (!toLearning)
        selectLearning();
    click("pushButton_photo");
    click("pushButton_start");
    QTRY_VERIFY(m_pod->frames.contains(kPhoto));
    QTest::keyClick(selector(), toLearning ? Qt::Key_Down : Qt::Key_Up);
    QCOMPARE(selector()->currentIndex(), toLearning ? 1 : 0);

    const int before = sent().size();
    m_bench->window()->receiveData(gcuFrame(0, QByteArray::fromHex("2000")), QString());
    QCOMPARE(isSelected("pushButton_null"), toLearning);
    if (!toLearning) {
        finishRun();
        QCOMPARE(sent().size(), before);
        QCOMPARE(startText(), QString("启动"));
        return;
    }
    QTRY_VERIFY(sent().size() >= before + 2);
    QCOMPARE(startText(), QString("停止"));
    click("pushButton_start");
    const int atStop = sent().size();
    finishRun();
    QVERIFY(sent().size() > atStop);
}

void tst_flowCycle::waitingCommandIsLostBehindAModeCommand()
{
    click("pushButton_photo");
    click("pushButton_follow");
    click("pushButton_start");
    QTRY_VERIFY(m_pod->frames.size() >= 2);
    QCOMPARE(m_pod->frames.at(1).mid(69, 1).toHex(), QByteArray("12"));
    answer(gcuFrame(0x12, QByteArray::fromHex("1200")));
    QVERIFY(isSelected("pushButton_follow"));
    QVERIFY(isSelected("pushButton_null"));
    const int before = sent().size();
    QTRY_VERIFY(sent().size() >= before + 2);
    QVERIFY(!m_pod->frames.contains(kPhoto));
    QCOMPARE(sent().at(0).toHex(), kIdle.toHex());
}

void tst_flowCycle::reportUndoesAModeButton()
{
    click("pushButton_lock");
    answer(gcuFrame(0x14, QByteArray()));
    QVERIFY(isSelected("pushButton_euler"));
    QCOMPARE(page()->findChild<QWidget *>("widget_14")->maximumHeight(), 0);
    QVERIFY(page()->findChild<QWidget *>("widget_3")->maximumHeight() > 0);
    answer(gcuFrame(0, QByteArray()));
    QVERIFY(isSelected("pushButton_null_2"));
}

void tst_flowCycle::lateAnswerStillClearsTheSelection()
{
    click("pushButton_photo");
    click("pushButton_start");
    QTRY_VERIFY(m_pod->frames.contains(kPhoto));
    click("pushButton_start");
    finishRun();
    QVERIFY(isSelected("pushButton_photo"));
    answer(gcuFrame(0, QByteArray::fromHex("2000")));
    QVERIFY(isSelected("pushButton_null"));
}

void tst_flowCycle::heldRateGoesOutWithEveryFrame()
{
    click("pushButton_start");
    answer(gcuFrame(0x11, QByteArray()));
    QTest::keyClick(m_bench->find<QSlider>("horizontalSlider2"), Qt::Key_End);
    const int before = sent().size();
    QTRY_VERIFY(sent().size() >= before + 3);
    for (int i = 0; i < 3; ++i)
        QCOMPARE(sent().at(i).mid(5, 7).toHex(), QByteArray("0000dc05000005"));
    QTest::keyClicks(m_bench->find<QLineEdit>("lineEdit_s_13"), "6");
    QTRY_COMPARE(sent().at(0).mid(50, 1).toHex(), QByteArray("9c")); // "156" at once
}

void tst_flowCycle::secondRunOnTheSamePage()
{
    click("pushButton_photo");
    click("pushButton_start");
    QTRY_VERIFY(m_pod->frames.contains(kPhoto));
    click("pushButton_start");
    finishRun();
    m_pod->frames.clear();
    click("pushButton_start");
    QTRY_VERIFY(m_pod->frames.size() >= 2);
    // The selection of the first run is still there, and the first frame is idle again.
    QCOMPARE(m_pod->frames.at(0).toHex(), kIdle.toHex());
    QCOMPARE(m_pod->frames.at(1).toHex(), kPhoto.toHex());
}

void tst_flowCycle::restartWithinOneSleepKeepsTheOldWorker()
{
    QThreadPool *pool = QThreadPool::globalInstance();
    pool->setMaxThreadCount(4);
    click("pushButton_start");
    bool restarted = false;
    const auto restart = [this, &restarted] {
        if (restarted)
            return;
        restarted = true;
        click("pushButton_start");
        click("pushButton_start");
    };
    // Right behind an emission, so that the old worker is in its sleep.
    connect(page(), &flowAnalysis::signals_sendCmd, this, restart);
    QTRY_VERIFY(restarted);
    const int before = sent().size();
    QTRY_VERIFY(sent().size() >= before + 4);
    QCOMPARE(pool->activeThreadCount(), 2);
    click("pushButton_start");
    finishRun();
    QCOMPARE(pool->activeThreadCount(), 0);
}

void tst_flowCycle::pageGivenUpDuringARunIsSilent_data()
{
    QTest::addColumn<QByteArray>("button");
    QTest::newRow("packet page") << QByteArray("pushButton_1");
    QTest::newRow("history view") << QByteArray("pushButton_Switch");
}

void tst_flowCycle::pageGivenUpDuringARunIsSilent()
{
    QFETCH(QByteArray, button);
    selectLearning();
    click("pushButton_photo");
    click("pushButton_start");
    QTRY_VERIFY(m_pod->frames.contains(kPhoto));
    const QPointer<flowAnalysis> given = page();
    click(button);
    const int before = sent().size();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(given.isNull());
    finishRun();
    QCOMPARE(sent().size(), before);
    QCOMPARE(sent().at(0).toHex(), kPhoto.toHex());

    // The new page starts with its own defaults and doesn't go on with the run.
    click(button == "pushButton_1" ? "pushButton_2" : "pushButton_Switch");
    QCOMPARE(startText(), QString("启动"));
    QVERIFY(!isSelected("pushButton_photo"));
    QCOMPARE(selector()->currentIndex(), 0);
    QCOMPARE(sent().size(), before);
}

void tst_flowCycle::emissionQueuedForAGivenUpPageIsVoid()
{
    QFETCH(QByteArray, button);
    selectLearning();
    QSemaphore emitted;
    connect(
        page(), &flowAnalysis::signals_sendCmd, page(), [&emitted] { emitted.release(); },
        Qt::DirectConnection);
    click("pushButton_start");
    emitted.acquire(); // an emission is queued, and the event loop hasn't had a turn
    QCOMPARE(sent().size(), 1);
    click(button);
    finishRun();
    QCOMPARE(sent().size(), 1);
}

void tst_flowCycle::nothingReachesAPageThatIsGone()
{
    click("pushButton_photo");
    click("pushButton_start");
    QTRY_VERIFY(m_pod->frames.contains(kPhoto));
    click("pushButton_Switch");
    QCOMPARE(m_bench->window()->currentPageIndex, 1);
    answer(gcuFrame(0x11, QByteArray::fromHex("2000")));
    click("pushButton_Switch");
    // The new console hasn't heard of the mode.
    click("pushButton_lock");
    QCOMPARE(page()->buildCommandFrame(false).mid(69, 1).toHex(), QByteArray("11"));
}

void tst_flowCycle::buttonTextFollowsTheLanguage()
{
    click("pushButton_start");
    QGlobal::instance()->languageChinese = false;
    page()->retranslate();
    QCOMPARE(startText(), QString("Stop"));
    click("pushButton_start");
    QCOMPARE(startText(), QString("Start"));
    finishRun();
    QCOMPARE(startText(), QString("Start"));
}

void tst_flowCycle::withoutALinkTheRunIsLogged()
{
    m_bench->window()->Disconnect();
    click("pushButton_start");
    QTRY_VERIFY(sent().size() >= 3);
    QCOMPARE(m_bench->log().count(QString(kIdle.toHex().toUpper())), sent().size());
    QVERIFY(m_pod->frames.isEmpty());
}

NACELLE_TEST_MAIN(tst_flowCycle)
#include "tst_flowCycle.moc"
