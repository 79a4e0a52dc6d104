#include "foundation/QGlobal.h"
#include "tests/support/clipserver.h"
#include "tests/support/strictmain.h"
#include "tests/support/videobench.h"

#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QUrl>

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
    void missingStreamIsTriedUntilItIsThere_data();
    void missingStreamIsTriedUntilItIsThere();
    void programEndsWhilePlaying();
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
    m_server = std::make_unique<ClipServer>(makeClip(m_clip, 1));
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
    surface->stop();
    QTRY_VERIFY(!refreshed.isEmpty());
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

void tst_vlcEngine::missingStreamIsTriedUntilItIsThere_data()
{
    QTest::addColumn<bool>("wasThere");
    QTest::newRow("lost") << true;
    QTest::newRow("late") << false;
}

/// Once a second, however often it stops meanwhile.
void tst_vlcEngine::missingStreamIsTriedUntilItIsThere()
{
    QFETCH(bool, wasThere);
    m_server->gone = !wasThere;
    VLCWidget *surface = play(m_server->url());
    QElapsedTimer clock;
    clock.start();
    std::atomic<int> attempts{0};
    std::atomic<qint64> last{-1000}, nearest{1000};
    const QObject counter; // goes before what it counts in
    connect(
        surface, &VLCWidget::refresh, &counter,
        [&] {
            const qint64 now = clock.elapsed();
            nearest = std::min<qint64>(nearest, now - last.exchange(now));
            ++attempts;
        },
        Qt::DirectConnection);
    QTest::qWait(700);
    m_server->gone = true;
    QTRY_VERIFY_WITH_TIMEOUT(attempts > 4, 20000);
    QVERIFY2(nearest > 500, qPrintable(QString::number(nearest))); // they come after a sleep
    m_server->gone = false;
    const int before = m_server->requests;
    QTRY_VERIFY(m_server->requests > before);
}

void tst_vlcEngine::programEndsWhilePlaying()
{
    const QString program = QCoreApplication::applicationDirPath() + "/endplaying";
    for (int after = 0; after < 200; after += 15)
        QCOMPARE(QProcess::execute(program, {"libvlc", QUrl::fromLocalFile(m_clip).toString(),
                                             QString::number(after)}),
                 0);
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
