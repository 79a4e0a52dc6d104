#include "foundation/QGlobal.h"
#include "tests/podsim/podprocess.h"
#include "tests/support/strictmain.h"
#include "tests/support/videobench.h"
#include "tools/tour/marks.h"

#include <QProcess>
#include <QTcpServer>
#include <QTcpSocket>

#include <csignal>

namespace {

constexpr int kWaitMs = 20000;

quint16 freePort()
{
    QTcpServer server;
    server.listen(QHostAddress(QHostAddress::LocalHost));
    return server.serverPort();
}

QString address(quint16 port)
{
    return QStringLiteral("rtsp://127.0.0.1:%1/pod").arg(port);
}

} // namespace

/// The decoding thread on the stream of the simulated pod, seen on the surface.
class tst_stream : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void marksStandWhereTheyAre_data();
    void marksStandWhereTheyAre();
    void serverComesAndGoes();
    void streamStandsStill();
    void sizeChangesInFlight();
    void soundIsPassedOver();
    void playPressedAgainAndAgain();
    void badServers_data();
    void badServers();
    void windowClosedWhilePlaying();
    void programEnds_data();
    void programEnds();
    void clickedPointComesToTheCentre();
    void trackedTargetStaysInTheCentre();

private:
    void startPod(const QStringList &more = {})
    {
        m_pod = std::make_unique<PodProcess>(QStringList{"--rtsp", QString::number(m_port)} + more);
        QVERIFY(m_pod->awaitLine("listening on rtsp"));
    }
    void play() { m_bench->play(address(m_port)); }
    QImage picture() { return m_bench->surface()->grab().toImage(); }

    QPointF find(const QColor &colour) { return placeOf(picture(), colour); }
    bool isSeenAt(const QColor &colour, const QPointF &place)
    {
        return isAt(picture(), colour, place);
    }
    bool isPlaying() { return isSeenAt(kYellowMark, {0.5, 0.1445}); }

    QPoint onSurface(const QPointF &place)
    {
        const QSize size = m_bench->surface()->size();
        return {int(place.x() * size.width()), int(place.y() * size.height())};
    }

    quint16 m_port = 0;
    std::unique_ptr<PodProcess> m_pod;
    std::unique_ptr<VideoBench> m_bench;
};

void tst_stream::init()
{
    QGlobal::instance()->ffmpegEngine = true;
    m_port = freePort();
    m_bench = std::make_unique<VideoBench>();
}

void tst_stream::cleanup()
{
    QVERIFY(Bench::takeNotices().isEmpty());
    m_bench.reset();
    m_pod.reset();
}

void tst_stream::marksStandWhereTheyAre_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::newRow("1280x720") << QStringList{};
    QTest::newRow("odd line length") << QStringList{"--size", "854x480"};
    QTest::newRow("small") << QStringList{"--size", "320x180"};
}

void tst_stream::marksStandWhereTheyAre()
{
    QFETCH(QStringList, options);
    startPod(options);
    play();
    QTRY_VERIFY_WITH_TIMEOUT(isPlaying(), kWaitMs);
    QVERIFY(isSeenAt(kBlueMark, {0.8856, 0.1109}));
}

/// The thread waits for a camera that isn't up, and opens a lost stream anew.
void tst_stream::serverComesAndGoes()
{
    play();
    QTest::qWait(1500);
    for (int round = 0; round < 4; ++round) {
        startPod();
        QTRY_VERIFY_WITH_TIMEOUT(isPlaying(), kWaitMs);
        m_pod->stop(round % 2 ? SIGKILL : SIGTERM);
        m_bench->surface()->slotGetOneFrame(QImage(16, 9, QImage::Format_RGB32));
        QTest::qWait(100);
        QImage black(16, 9, QImage::Format_RGB32);
        black.fill(Qt::black);
        m_bench->surface()->slotGetOneFrame(black);
        QVERIFY(!isPlaying());
    }
}

void tst_stream::streamStandsStill()
{
    startPod({"--control", "--tcp", "0"});
    play();
    QTRY_VERIFY_WITH_TIMEOUT(isPlaying(), kWaitMs);
    m_pod->write("freeze");
    QTest::qWait(6500); // longer than the thread takes a silence
    m_pod->write("thaw");
    const QImage still = picture();
    QTRY_VERIFY_WITH_TIMEOUT(picture() != still && isPlaying(), kWaitMs);
}

void tst_stream::sizeChangesInFlight()
{
    startPod({"--control"});
    play();
    QTRY_VERIFY_WITH_TIMEOUT(isPlaying(), kWaitMs);
    for (const char *size : {"640x360", "1920x1080", "322x182"}) {
        m_pod->write(QStringLiteral("size ") + size);
        QTest::qWait(500);
        const QImage before = picture();
        QTRY_VERIFY_WITH_TIMEOUT(picture() != before && isPlaying(), kWaitMs);
    }
}

void tst_stream::soundIsPassedOver()
{
    startPod({"--rtsp-audio"});
    play();
    QTRY_VERIFY_WITH_TIMEOUT(isPlaying(), kWaitMs);
}

void tst_stream::playPressedAgainAndAgain()
{
    startPod();
    for (int press = 0; press < 50; ++press)
        play();
    QTRY_VERIFY_WITH_TIMEOUT(isPlaying(), kWaitMs);
    QCOMPARE(m_bench->video()->findChildren<VLCWidget *>().size(), 1);
}

void tst_stream::badServers_data()
{
    QTest::addColumn<QByteArray>("answer"); // the server's, to whatever is asked
    QTest::newRow("silence") << QByteArray();
    QTest::newRow("closes at once") << QByteArray("close");
    QTest::newRow("noise") << QByteArray("\x00\xff$\x00\xff\xff RTSP \r\n\r\n", 20);
    const auto describe = [](const QByteArray &sdp) {
        return "RTSP/1.0 200 OK\r\nCSeq: 1\r\nPublic: DESCRIBE, SETUP, PLAY\r\n"
               "Content-Type: application/sdp\r\nContent-Length: " +
               QByteArray::number(sdp.size()) + "\r\n\r\n" + sdp;
    };
    const QByteArray head = "v=0\r\no=- 0 0 IN IP4 127.0.0.1\r\ns=x\r\nt=0 0\r\n";
    QTest::newRow("no stream") << describe(head);
    QTest::newRow("no video") << describe(head + "m=audio 0 RTP/AVP 0\r\na=control:a\r\n");
    QTest::newRow("unknown codec")
        << describe(head + "m=video 0 RTP/AVP 96\r\na=rtpmap:96 NOSUCH/90000\r\na=control:v\r\n");
}

/// Whatever a server says: no message, no crash, and the window goes on.
void tst_stream::badServers()
{
    QFETCH(QByteArray, answer);
    QTcpServer server;
    QVERIFY(server.listen(QHostAddress(QHostAddress::LocalHost)));
    int asked = 0;
    connect(&server, &QTcpServer::newConnection, this, [&] {
        QTcpSocket *socket = server.nextPendingConnection();
        ++asked;
        connect(socket, &QTcpSocket::readyRead, socket, [socket, answer] {
            socket->readAll();
            if (answer == "close")
                socket->disconnectFromHost();
            else
                socket->write(answer);
        });
    });
    m_bench->play(address(server.serverPort()));
    QTRY_VERIFY_WITH_TIMEOUT(asked > (answer.isEmpty() ? 0 : 1), kWaitMs);
    m_bench->press("pushButton_Send");
    QCOMPARE((*m_bench)->sentFrames.size(), 1);
}

/// The player goes on unseen, and the next window has one of its own.
void tst_stream::windowClosedWhilePlaying()
{
    startPod();
    play();
    QTRY_VERIFY_WITH_TIMEOUT(isPlaying(), kWaitMs);
    const std::unique_ptr<videoFrom> closed(m_bench->video());
    closed->close();
    m_bench->openVideo();
    play();
    QTRY_VERIFY_WITH_TIMEOUT(isPlaying(), kWaitMs);
}

void tst_stream::programEnds_data()
{
    QTest::addColumn<QString>("engine");
    QTest::addColumn<bool>("served");
    QTest::addColumn<int>("after");
    for (const char *engine : {"ffmpeg", "libvlc"}) {
        QTest::addRow("%s, opening", engine) << engine << false << 700;
        for (const int after : {0, 300, 1500})
            QTest::addRow("%s, served, %d ms", engine, after) << engine << true << after;
    }
}

void tst_stream::programEnds()
{
    QFETCH(QString, engine);
    QFETCH(bool, served);
    QFETCH(int, after);
    if (served)
        startPod();
    QProcess program;
    program.start(QCoreApplication::applicationDirPath() + "/endplaying",
                  {engine, address(m_port), QString::number(after)});
    QVERIFY(program.waitForFinished(kWaitMs));
    QCOMPARE(program.exitStatus(), QProcess::NormalExit);
    QCOMPARE(program.exitCode(), 0);
}

void tst_stream::clickedPointComesToTheCentre()
{
    startPod({"--tcp", "0"});
    play();
    QTRY_VERIFY_WITH_TIMEOUT(isPlaying(), kWaitMs);
    QVERIFY(m_bench->plug("TCP Client", QString::number(m_pod->port("tcp"))));
    const QPoint mark = onSurface(find(kBlueMark));
    m_bench->drag(mark, mark);
    m_bench->press("pushButton_Send");
    QTRY_VERIFY_WITH_TIMEOUT(isSeenAt(kBlueMark, {0.5, 0.5}), kWaitMs);
}

void tst_stream::trackedTargetStaysInTheCentre()
{
    startPod({"--tcp", "0"});
    play();
    QTRY_VERIFY_WITH_TIMEOUT(isPlaying(), kWaitMs);
    QVERIFY(m_bench->plug("TCP Client", QString::number(m_pod->port("tcp"))));
    m_bench->press("pushButton_Tracking");
    const QPoint target = onSurface(find(kCar));
    m_bench->drag(target - QPoint(40, 40), target + QPoint(40, 40));
    m_bench->press("pushButton_Send");
    QTRY_VERIFY_WITH_TIMEOUT(isSeenAt(kCar, {0.5, 0.5}), kWaitMs);
    for (int second = 0; second < 10; ++second) {
        QTest::qWait(1000);
        QVERIFY(isSeenAt(kCar, {0.5, 0.5}));
    }
    m_bench->press("pushButton_Quit");
    QTRY_VERIFY_WITH_TIMEOUT(!isSeenAt(kCar, {0.5, 0.5}), kWaitMs);
}

NACELLE_TEST_MAIN(tst_stream)
#include "tst_stream.moc"
