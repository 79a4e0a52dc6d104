#include "tests/support/strictmain.h"
#include "video/VideoCodec.h"

class tst_VideoCodec : public QObject
{
    Q_OBJECT

private slots:
    void terminatedAndStartedAnew();
};

/// Nothing in the program terminates a thread, but it can be done.
void tst_VideoCodec::terminatedAndStartedAnew()
{
    const QString nobody = QStringLiteral("rtsp://127.0.0.1:1/pod");
    auto *codec = new VideoCodec(nobody, "tcp", true); // kept, as all of them are
    codec->startDecoding();
    QTest::qWait(300);
    codec->restart(nobody, "tcp");
    QTRY_VERIFY(codec->isFinished() || codec->isRunning());
    codec->stopNow();
    QTRY_VERIFY(codec->isFinished());
}

NACELLE_TEST_MAIN(tst_VideoCodec)
#include "tst_VideoCodec.moc"
