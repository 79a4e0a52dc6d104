#include "foundation/QGlobal.h"
#include "tests/support/strictmain.h"
#include "tests/support/videobench.h"

#include <QProcess>
#include <QSignalSpy>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QThread>
#include <QUrl>

#include <atomic>

namespace {

/// A web server with one file for every request, in a thread of its own: libVLC may hold the
/// other one up while it waits for an answer.
class ClipServer : public QThread
{
public:
    explicit ClipServer(const QByteArray &clip) : m_clip(clip)
    {
        start();
        while (!port)
            yieldCurrentThread();
    }
    ~ClipServer() override
    {
        quit();
        wait();
    }
    QString url() const { return QStringLiteral("http://127.0.0.1:%1/clip.ts").arg(port); }

    std::atomic<quint16> port{0};
    std::atomic<int> requests{0};
    std::atomic<bool> gone{false}; ///< closes every connection

protected:
    void run() override
    {
        QTcpServer server;
        if (!server.listen(QHostAddress(QHostAddress::LocalHost)))
            qFatal("no port for the web server");
        connect(&server, &QTcpServer::newConnection, &server, [&] {
            QTcpSocket *socket = server.nextPendingConnection();
            connect(socket, &QTcpSocket::readyRead, socket, [this, socket] { answer(socket); });
        });
        port = server.serverPort();
        exec();
    }

private:
    void answer(QTcpSocket *socket)
    {
        if (!socket->readAll().startsWith("GET"))
            return;
        ++requests;
        if (gone) {
            socket->disconnectFromHost();
            return;
        }
        socket->write("HTTP/1.0 200 OK\r\nContent-Type: video/mpeg\r\nContent-Length: " +
                      QByteArray::number(m_clip.size()) + "\r\n\r\n" + m_clip);
        socket->disconnectFromHost();
    }

    const QByteArray m_clip;
};

} // namespace

/// Surfaces on libVLC, with addresses that every build of it can play.
class tst_vlcEngine : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanup()
    {
        m_bench.reset();
        m_server->gone = false;
    }
    void stoppedIsPlayedAgain_data();
    void stoppedIsPlayedAgain();
    void endedIsStoppedFirst();
    void lostStreamIsTriedUntilItIsBack();
    void errorIsLeftDown();
    void goingKeepsTheWindowAlive();

private:
    VLCWidget *play(const QString &url)
    {
        m_bench = std::make_unique<VideoBench>();
        m_bench->play(url);
        return m_bench->surface();
    }

    QTemporaryDir m_folder;
    QString m_clip;
    std::unique_ptr<ClipServer> m_server;
    std::unique_ptr<VideoBench> m_bench;
};

void tst_vlcEngine::initTestCase()
{
    m_clip = m_folder.filePath("clip.ts");
    QCOMPARE(QProcess::execute("ffmpeg", {"-v", "error", "-f", "lavfi", "-i",
                                          "testsrc=size=320x180:rate=25:duration=1", "-c:v",
                                          "mpeg2video", m_clip}),
             0);
    QFile file(m_clip);
    QVERIFY(file.open(QIODevice::ReadOnly));
    m_server = std::make_unique<ClipServer>(file.readAll());
}

void tst_vlcEngine::stoppedIsPlayedAgain_data()
{
    QTest::addColumn<bool>("served");
    QTest::newRow("web address") << true;
    QTest::newRow("file") << false;
}

void tst_vlcEngine::stoppedIsPlayedAgain()
{
    QFETCH(bool, served);
    const int before = m_server->requests;
    VLCWidget *surface = play(served ? m_server->url() : QUrl::fromLocalFile(m_clip).toString());
    QSignalSpy refreshed(surface, &VLCWidget::refresh);
    if (served)
        QTRY_VERIFY(m_server->requests > before);
    const int played = m_server->requests;
    // A stop counts once the clip plays, which nothing tells.
    const auto playAndStop = [&] {
        surface->play();
        QTest::qWait(500);
        surface->stop();
        return refreshed.wait(1500);
    };
    QTRY_VERIFY_WITH_TIMEOUT(playAndStop(), 20000);
    if (served)
        QTRY_VERIFY(m_server->requests > played);
}

/// A clip that is over plays again by a press of nothing but `play`, which stops it first.
void tst_vlcEngine::endedIsStoppedFirst()
{
    VLCWidget *surface = play(m_server->url());
    QSignalSpy refreshed(surface, &VLCWidget::refresh);
    QTRY_VERIFY_WITH_TIMEOUT((surface->play(), !refreshed.isEmpty()), 20000);
}

void tst_vlcEngine::lostStreamIsTriedUntilItIsBack()
{
    VLCWidget *surface = play(m_server->url());
    QSignalSpy refreshed(surface, &VLCWidget::refresh);
    QTest::qWait(700);
    m_server->gone = true;
    QTRY_VERIFY_WITH_TIMEOUT(refreshed.size() > 3, 20000);
    m_server->gone = false;
    const int before = m_server->requests;
    QTRY_VERIFY(m_server->requests > before);
}

/// On purpose: the event of an error isn't attached.
void tst_vlcEngine::errorIsLeftDown()
{
    VLCWidget *surface = play("http://127.0.0.1:1/clip.ts");
    QSignalSpy refreshed(surface, &VLCWidget::refresh);
    QVERIFY(!refreshed.wait(4500));
    QVERIFY(Bench::takeNotices().isEmpty());
}

void tst_vlcEngine::goingKeepsTheWindowAlive()
{
    const int before = m_server->requests;
    VLCWidget *surface = play(m_server->url());
    QTRY_VERIFY(m_server->requests > before);
    surface->stop(); // a task sleeps for it that outlives the surface
    surface->play();
    bool alive = false;
    QMetaObject::invokeMethod(
        this, [&alive] { alive = true; }, Qt::QueuedConnection);
    delete surface;
    QVERIFY(alive);
    QTest::qWait(1200);
    QVERIFY(Bench::takeNotices().isEmpty());
}

NACELLE_TEST_MAIN(tst_vlcEngine)
#include "tst_vlcEngine.moc"
