#include "tests/support/clipserver.h"
#include "tests/support/countingcodec.h"
#include "tests/support/strictmain.h"

#include <QTemporaryDir>

class tst_VideoCodec : public QObject
{
    Q_OBJECT

private slots:
    void terminatedAndStartedAnew();
    void openedAgainAndAgain();
    void stopIsHeededWithoutAPicture();
    void pictureIsFoundAfterTheSound();
};

/// Nothing in the program terminates a thread, but it can be done.
void tst_VideoCodec::terminatedAndStartedAnew()
{
    const QString nobody = QStringLiteral("rtsp://127.0.0.1:1/pod");
    static auto *codec = new VideoCodec(nobody, "tcp", true); // kept, as all of them are
    codec->startDecoding();
    QTest::qWait(300);
    codec->restart(nobody, "tcp");
    QTRY_VERIFY(codec->isFinished() || codec->isRunning());
    codec->stopNow();
    QTRY_VERIFY(codec->isFinished());
}

/// Each opening is a call in the one before; on a stack of a megabyte there is no room for these.
void tst_VideoCodec::openedAgainAndAgain()
{
    const QTemporaryDir folder;
    const QString picture = folder.filePath("picture.png");
    QVERIFY(QImage(16, 16, QImage::Format_RGB32).save(picture));
    CountingCodec codec(picture, "tcp", true);
    codec.setStackSize(1 << 20);
    codec.startDecoding();
    QTRY_VERIFY_WITH_TIMEOUT(codec.openings > 20000, 120000);
    codec.requestStop();
    QVERIFY(codec.wait());
}

/// Sound alone would be opened anew each second.
void tst_VideoCodec::stopIsHeededWithoutAPicture()
{
    const QTemporaryDir folder;
    QFile sound(folder.filePath("sound.wav"));
    QVERIFY(sound.open(QIODevice::WriteOnly));
    sound.write(QByteArray::fromHex("52494646 EC000000 57415645 666D7420 10000000 01000100 401F0000"
                                    "803E0000 02001000 64617461 C8000000") +
                QByteArray(200, '\0')); // 100 samples
    sound.close();
    CountingCodec codec(sound.fileName(), "tcp", true);
    codec.requestStop();
    codec.startDecoding();
    QVERIFY(codec.wait(20000));
    QCOMPARE(int(codec.openings), 1);
}

/// Of what a file holds first nothing is taken for the picture.
void tst_VideoCodec::pictureIsFoundAfterTheSound()
{
    const QTemporaryDir folder;
    makeClip(folder.filePath("clip.mkv"), 1, true);
    CountingCodec codec(folder.filePath("clip.mkv"), "tcp", true);
    std::atomic<int> pictures{0};
    connect(
        &codec, &VideoCodec::sig_GetOneFrame, &codec, [&] { ++pictures; }, Qt::DirectConnection);
    codec.startDecoding();
    QTRY_VERIFY_WITH_TIMEOUT(pictures > 0, 20000);
    codec.requestStop();
    QVERIFY(codec.wait());
}

NACELLE_TEST_MAIN(tst_VideoCodec)
#include "tst_VideoCodec.moc"
