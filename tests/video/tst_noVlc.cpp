#include "foundation/QGlobal.h"
#include "tests/support/strictmain.h"
#include "tests/support/videobench.h"

/// Runs with a libVLC that can't make an instance.
class tst_noVlc : public QObject
{
    Q_OBJECT

private slots:
    void surfaceStaysBlack();
};

/// And everything else works.
void tst_noVlc::surfaceStaysBlack()
{
    VideoBench bench;
    bench.play("http://127.0.0.1:1/clip.mp4");
    VLCWidget *surface = bench.surface();
    QVERIFY(!surface->open());
    surface->play();
    surface->stop();
    surface->pause();
    surface->seekToEnd();
    const QPoint middle = surface->mapTo(bench.video(), surface->rect().center());
    QCOMPARE(bench.video()->grab().toImage().pixelColor(middle), QColor(Qt::black));
    bench.drag({10, 10}, {10, 10});
    bench.press("pushButton_Send");
    QCOMPARE(bench->sentFrames.size(), 1);
    bench.play("http://127.0.0.1:1/clip.mp4");
    QVERIFY(Bench::takeNotices().isEmpty());
}

NACELLE_TEST_MAIN(tst_noVlc)
#include "tst_noVlc.moc"
