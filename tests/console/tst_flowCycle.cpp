#include "console/flowAnalysis.h"
#include "foundation/QGlobal.h"
#include "tests/support/bench.h"
#include "tests/support/strictmain.h"

#include <QComboBox>
#include <QMutex>
#include <QNetworkDatagram>
#include <QPointer>
#include <QSemaphore>
#include <QSet>
#include <QThread>
#include <QThreadPool>
#include <QUdpSocket>

#include <memory>

/// A pod on the loopback: keeps the frames that reach it and answers when it is asked to.
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

/// The threads that have emitted.
static QMutex s_mutex;
static QSet<QThread *> s_workers;

static void noteWorker()
{
    const QMutexLocker locker(&s_mutex);
    s_workers.insert(QThread::currentThread());
}

class tst_flowCycle : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void firstFrameIsIdleThenTheCommand();
    void defaultModeGoesBackToIdle();
    void framesThatAreNoAnswer();
    void learningModeEndsWithAnIdleFrame();
    void learningModeStartsWithAnEmptyDisplay();
    void selectorTurnedDuringARun();
    void lateAnswerStillClearsTheSelection();
    void restartWithinOneSleepKeepsTheOldWorker();
    void pageGivenUpDuringARunIsSilent();
    void emissionQueuedForAGivenUpPageIsVoid_data();
    void emissionQueuedForAGivenUpPageIsVoid();

private:
    flowAnalysis *page() { return m_bench->find<flowAnalysis>("CurrentPage"); }
    QComboBox *selector() { return page()->findChild<QComboBox *>(QStringLiteral("comboBox")); }
    void click(const char *button) { m_bench->click(button); }
    bool isSelected(const char *button) { return m_bench->find<QPushButton>(button)->isChecked(); }
    QString startText() { return m_bench->find<QPushButton>("pushButton_start")->text(); }
    void selectLearning() { QTest::keyClick(selector(), Qt::Key_Down); }
    /// Starts a run and waits until the selected command has gone out in it.
    void startPhoto()
    {
        click("pushButton_start");
        QTRY_VERIFY(sent().contains(kPhoto));
    }
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
    click("pushButton_photo");
    QCOMPARE(sent().size(), 0); // a selection sends nothing by itself
    // The second run keeps the selection of the first, and starts idle too.
    for (int run = 0; run < 2; ++run) {
        startPhoto();
        QCOMPARE(startText(), QString("停止"));
        QTRY_VERIFY(m_pod->frames.size() >= 3);
        QCOMPARE(m_pod->frames.at(0).toHex(), kIdle.toHex());
        QCOMPARE(m_pod->frames.at(1).toHex(), kPhoto.toHex());
        QCOMPARE(m_pod->frames.at(2).toHex(), kPhoto.toHex());
        QCOMPARE(page()->lastSentText, QString(kPhoto.toHex().toUpper()));
        const int before = sent().size();
        click("pushButton_start");
        finishRun();
        QTRY_COMPARE(m_pod->frames.size(), before); // all have come
        m_pod->frames.clear();
        QCOMPARE(sent().size(), before); // no closing frame in default mode
        QCOMPARE(startText(), QString("启动"));
    }
}

void tst_flowCycle::defaultModeGoesBackToIdle()
{
    click("pushButton_photo");
    startPhoto();
    answer(gcuFrame(0x13, QByteArray::fromHex("2001"))); // a failure is an answer too
    QVERIFY(isSelected("pushButton_null"));
    QVERIFY(!isSelected("pushButton_photo"));
    const int before = sent().size();
    QTRY_VERIFY(sent().size() >= before + 2);
    QCOMPARE(sent().at(0).toHex(), kIdle.toHex());
    QCOMPARE(startText(), QString("停止"));
}

void tst_flowCycle::framesThatAreNoAnswer()
{
    // Before anything was sent there is nothing to be answered.
    click("pushButton_photo");
    answer(gcuFrame(0, QByteArray::fromHex("2000")));
    QVERIFY(isSelected("pushButton_photo"));
    startPhoto();
    for (const char *feedback : {"2100", "20", "200000", "", "0000"}) {
        answer(gcuFrame(0, QByteArray::fromHex(feedback)));
        QVERIFY2(isSelected("pushButton_photo"), feedback);
    }
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
    // The first frame, then one for each step: also the step that announced the end gave its frame.
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

void tst_flowCycle::learningModeStartsWithAnEmptyDisplay()
{
    for (const bool learning : {false, true}) {
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
        QCOMPARE(m_bench->window()->sentStarts, QList<int>{0});
        QCOMPARE(m_bench->window()->receivedFrames.size(), 0);
        QCOMPARE(m_bench->window()->historyIndex, 0);
        QCOMPARE(m_bench->window()->flowRunMode, learning ? 1 : 0);
        click("pushButton_start");
        finishRun();
    }
}

void tst_flowCycle::selectorTurnedDuringARun()
{
    // Learning to default: stopped by the answer, and no closing frame.
    selectLearning();
    click("pushButton_photo");
    startPhoto();
    QTest::keyClick(selector(), Qt::Key_Up);
    int before = sent().size();
    m_bench->window()->receiveData(gcuFrame(0, QByteArray::fromHex("2000")), QString());
    QVERIFY(!isSelected("pushButton_null"));
    finishRun();
    QCOMPARE(sent().size(), before);
    QCOMPARE(startText(), QString("启动"));
    // Default to learning: not stopped, and a closing frame.
    startPhoto();
    selectLearning();
    m_bench->window()->receiveData(gcuFrame(0, QByteArray::fromHex("2000")), QString());
    QVERIFY(isSelected("pushButton_null"));
    before = sent().size();
    QTRY_VERIFY(sent().size() >= before + 2);
    QCOMPARE(startText(), QString("停止"));
    click("pushButton_start");
    before = sent().size();
    finishRun();
    QVERIFY(sent().size() > before);
    QCOMPARE(sent().at(0).toHex(), kIdle.toHex());
}

void tst_flowCycle::lateAnswerStillClearsTheSelection()
{
    click("pushButton_photo");
    startPhoto();
    click("pushButton_start");
    finishRun();
    QVERIFY(isSelected("pushButton_photo"));
    answer(gcuFrame(0, QByteArray::fromHex("2000")));
    QVERIFY(isSelected("pushButton_null"));
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
    // Right after an emission, so that the old worker is in its sleep.
    connect(page(), &flowAnalysis::signals_sendCmd, this, restart);
    QTRY_VERIFY(restarted);
    const QMetaObject::Connection count = connect(
        page(), &flowAnalysis::signals_sendCmd, page(), [] { noteWorker(); }, Qt::DirectConnection);
    const int before = sent().size();
    QTRY_VERIFY(sent().size() >= before + 8);
    disconnect(count);
    click("pushButton_start");
    finishRun();
    QCOMPARE(s_workers.size(), 2);
}

void tst_flowCycle::pageGivenUpDuringARunIsSilent()
{
    for (const QString button : {"pushButton_1", "pushButton_Switch"}) {
        selectLearning();
        click("pushButton_photo");
        startPhoto();
        const QPointer<flowAnalysis> given = page();
        click(qPrintable(button));
        const int before = sent().size();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(given.isNull());
        finishRun();
        QCOMPARE(sent().size(), before);
        answer(gcuFrame(0x11, QByteArray::fromHex("2000")));
        // The new page starts with its own defaults, without the run or the mode of the old one.
        click(button == "pushButton_1" ? "pushButton_2" : "pushButton_Switch");
        QCOMPARE(startText(), QString("启动"));
        QVERIFY(!isSelected("pushButton_photo"));
        QCOMPARE(selector()->currentIndex(), 0);
        click("pushButton_lock");
        QCOMPARE(page()->buildCommandFrame(false).mid(69, 1).toHex(), QByteArray("11"));
        m_bench->find<QPushButton>("pushButton_null_2")->setChecked(true);
    }
}

void tst_flowCycle::emissionQueuedForAGivenUpPageIsVoid_data()
{
    QTest::addColumn<bool>("toHistory");
    QTest::newRow("packet page") << false;
    QTest::newRow("history view") << true;
}

void tst_flowCycle::emissionQueuedForAGivenUpPageIsVoid()
{
    QFETCH(bool, toHistory);
    selectLearning();
    QSemaphore emitted;
    connect(
        page(), &flowAnalysis::signals_sendCmd, page(), [&emitted] { emitted.release(); },
        Qt::DirectConnection);
    click("pushButton_start");
    emitted.acquire(); // an emission is queued, and the event loop hasn't had a turn
    QCOMPARE(sent().size(), 1);
    click(toHistory ? "pushButton_Switch" : "pushButton_1");
    finishRun();
    QCOMPARE(sent().size(), 1);
}

NACELLE_TEST_MAIN(tst_flowCycle)
#include "tst_flowCycle.moc"
