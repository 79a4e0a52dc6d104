#include "foundation/QGlobal.h"
#include "tests/podsim/podprocess.h"
#include "tests/support/strictmain.h"
#include "tests/support/videobench.h"
#include "tools/tour/marks.h"
#include "video/VideoCodec.h"

#include <QProcess>
#include <QRegularExpression>
#include <QTcpServer>
#include <QTcpSocket>

#include <atomic>
#include <csignal>

namespace {

using namespace tour; // its marks

constexpr int kWaitMs = 60000; ///< for what comes in a second, on a busy machine under a sanitizer
constexpr int kSilenceMs = 30000; ///< well below a minute: a silent server is given up after 5 s

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
    void stopIsHeededWhileTheServerSends();
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
    QTest::newRow("sound is passed over") << QStringList{"--rtsp-audio"};
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
    for (const char *size : {"640x360", "480x360", "1920x1080", "322x182"}) {
        m_pod->write(QStringLiteral("size ") + size);
        QTest::qWait(500);
        const QImage before = picture();
        QTRY_VERIFY_WITH_TIMEOUT(picture() != before && isPlaying(), kWaitMs);
    }
}

void tst_stream::stopIsHeededWhileTheServerSends()
{
    startPod();
    static auto *codec = new VideoCodec(address(m_port), "tcp", true); // kept, as all of them are
    std::atomic<bool> isSending{false};
    connect(
        codec, &VideoCodec::sig_GetOneFrame, codec, [&] { isSending = true; },
        Qt::DirectConnection);
    codec->startDecoding();
    QTRY_VERIFY_WITH_TIMEOUT(isSending, kWaitMs);
    codec->requestStop();
    QVERIFY(codec->wait(kWaitMs));
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
    QTest::addColumn<QByteArray>("answer"); // to a request; a session's is made of the others
    QTest::addColumn<QByteArray>("stream"); // description of the session
    QTest::addColumn<QByteArray>("packets");
    const QByteArray none;
    QTest::newRow("silence") << none << none << none;
    QTest::newRow("closes at once") << QByteArray("close") << none << none;
    QTest::newRow("noise") << QByteArray::fromHex("00ff2400ffff20525453500d0a0d0a") << none << none;
    const auto session = [&](const char *name, const char *stream, const char *packets) {
        QTest::newRow(name) << QByteArray("session") << QByteArray(stream)
                            << QByteArray::fromHex(packets);
    };
    constexpr char kH264[] = "m=video 0 RTP/AVP 96\r\na=rtpmap:96 H264/90000\r\na=control:v\r\n";
    session("no stream", "", "");
    session("no video", "m=audio 0 RTP/AVP 0\r\na=control:a\r\n", "");
    session("unknown codec", "m=video 0 RTP/AVP 96\r\na=rtpmap:96 NOSUCH/90000\r\na=control:v\r\n",
            "");
    session("size 0",
            "m=video 0 RTP/AVP 96\r\na=rtpmap:96 raw/90000\r\n"
            "a=fmtp:96 sampling=YCbCr-4:2:2; width=0; height=0; depth=8\r\na=control:v\r\n",
            "");
    session("size 16384",
            "m=video 0 RTP/AVP 96\r\na=rtpmap:96 raw/90000\r\n"
            "a=fmtp:96 sampling=YCbCr-4:2:2; width=16384; height=16384; depth=8\r\n"
            "a=control:v\r\n",
            "");
    session("damaged packets", kH264,
            "2400001480600001000000000000000067ffffffffffffff"
            "240000148060000200000000000000007c85ffff00ff00ff"
            "2400001480e0000300000000000000006588840000000000");
    session("closes in mid-packet", kH264, "240000148060000100");
}

namespace {

/// What a server says that plays whatever is asked.
QByteArray sessionAnswer(const QByteArray &request, const QByteArray &stream,
                         const QByteArray &packets)
{
    const QString text = QString::fromLatin1(request);
    const QString sequence = QRegularExpression("CSeq: ([0-9]+)").match(text).captured(1);
    const QByteArray head = "RTSP/1.0 200 OK\r\nCSeq: " + sequence.toLatin1() +
                            "\r\nSession: 1\r\nPublic: DESCRIBE, SETUP, PLAY\r\n"
                            "Transport: RTP/AVP/TCP;unicast;interleaved=0-1\r\n";
    if (request.startsWith("PLAY"))
        return head + "\r\n" + packets;
    if (!request.startsWith("DESCRIBE"))
        return head + "\r\n";
    const QByteArray sdp = "v=0\r\no=- 0 0 IN IP4 127.0.0.1\r\ns=x\r\nt=0 0\r\n" + stream;
    return head +
           "Content-Type: application/sdp\r\nContent-Length: " + QByteArray::number(sdp.size()) +
           "\r\n\r\n" + sdp;
}

} // namespace

/// Whatever a server says: no message, no crash, and the window goes on.
void tst_stream::badServers()
{
    QFETCH(QByteArray, answer);
    QFETCH(QByteArray, stream);
    QFETCH(QByteArray, packets);
    QTcpServer server;
    QVERIFY(server.listen(QHostAddress(QHostAddress::LocalHost)));
    int asked = 0;
    connect(&server, &QTcpServer::newConnection, this, [&] {
        QTcpSocket *socket = server.nextPendingConnection();
        ++asked;
        connect(socket, &QTcpSocket::readyRead, socket, [=] {
            const QByteArray request = socket->readAll();
            socket->write(answer == "session" ? sessionAnswer(request, stream, packets) : answer);
            if (answer == "close" || request.startsWith("PLAY"))
                socket->disconnectFromHost();
        });
    });
    m_bench->play(address(server.serverPort()));
    QTRY_VERIFY_WITH_TIMEOUT(asked > 1, kSilenceMs); // a silence too is waited out for 5 s only
    m_bench->press("pushButton_Send");
    QCOMPARE((*m_bench)->sentFrames.size(), 1);
}

/// The player goes on unseen, and the next window starts another.
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
    QTest::addColumn<bool>("busy");
    for (const QString &text : QStringLiteral(PLAYERS).split(' ')) {
        const QByteArray name = text.toLatin1();
        const char *engine = name.constData();
        QTest::addRow("%s, opening", engine) << engine << false << 700 << false;
        for (const int after : {0, 300, 1500})
            QTest::addRow("%s, served, %d ms", engine, after) << engine << true << after << false;
        QTest::addRow("%s, pool of one thread and a run", engine) << engine << true << 700 << true;
    }
}

void tst_stream::programEnds()
{
    QFETCH(QString, engine);
    QFETCH(bool, served);
    QFETCH(int, after);
    QFETCH(bool, busy);
    if (served)
        startPod();
    QProcess program;
    QStringList arguments{engine, address(m_port), QString::number(after)};
    if (busy)
        arguments << "busy";
    program.start(QCoreApplication::applicationDirPath() + "/endplaying", arguments);
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
