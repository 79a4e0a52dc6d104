#include "tests/podsim/podprocess.h"
#include "tests/podsim/testhost.h"
#include "tests/support/streamreader.h"
#include "tests/support/strictmain.h"
#include "tools/podsim/picturestamp.h"
#include "tools/podsim/podcodec.h"

#include <QDeadlineTimer>
#include <QTest>

#include <csignal>

namespace {

constexpr int kMostPictures = 300; // ten seconds' worth; more than anything here takes

/// A pod that streams, with a client.
struct Rig
{
    explicit Rig(const QStringList &options = {})
        : pod(QStringList{"--tcp", "0", "--rtsp", "0", "--rtsp-stamp", "--control"} + options),
          address(QString("rtsp://127.0.0.1:%1/pod").arg(pod.port("rtsp"))), reader(address)
    {
    }

    /// Has the pod carry out a line.
    bool tell(const QString &line)
    {
        pod.write(line);
        return pod.awaitLine("control: " + line);
    }

    PodProcess pod;
    QString address;
    StreamReader reader;
};

/// The first picture that meets a condition, or a null one.
template <typename Condition>
QImage awaitPicture(StreamReader &reader, Condition condition)
{
    for (int i = 0; i < kMostPictures; ++i) {
        const QImage picture = reader.next();
        if (picture.isNull() || condition(picture))
            return picture;
    }
    return {};
}

bool isYellow(QRgb colour)
{
    return qRed(colour) > 200 && qGreen(colour) > 180 && qBlue(colour) < 60;
}

} // namespace

class TestPodStream : public QObject
{
    Q_OBJECT

private slots:
    void picksComeToTheMiddle();
    void sizeChangesInFlight();
    void freezesAndThaws();
    void clientsComeBack();
    void clientsShareThePicture();
    void hasSoundOnDemand();
    void refusesLines();
    void portInUse();
    void endsBeforeItsClients();
};

/// The yellow mark is seen at 5000, 1446; pointed at, it comes to the middle of the pictures.
void TestPodStream::picksComeToTheMiddle()
{
    Rig rig({"--size", "640x360"});
    const QImage first = rig.reader.next();
    QCOMPARE(first.size(), QSize(640, 360));
    QVERIFY(isYellow(first.pixel(320, 52)));
    QByteArray point = QByteArray::fromHex("A8 E5 4D 00 01") + QByteArray(64, '\0') +
                       QByteArray::fromHex("1A 01 88 13 A6 05");
    podsim::appendChecksum(point);
    TcpHost(rig.pod.port("tcp")).send(point);
    const auto isThere = [](const QImage &p) { return isYellow(p.pixel(322, 182)); };
    QVERIFY(!awaitPicture(rig.reader, isThere).isNull());
}

/// Within one session: a client that has to open anew doesn't get the second size.
void TestPodStream::sizeChangesInFlight()
{
    Rig rig;
    QCOMPARE(rig.reader.next().size(), QSize(1280, 720));
    for (const QSize size : {QSize(640, 360), QSize(1920, 1080)}) {
        QVERIFY(rig.tell(QString("size %1x%2").arg(size.width()).arg(size.height())));
        const QImage picture =
            awaitPicture(rig.reader, [size](const QImage &p) { return p.size() == size; });
        QCOMPARE(picture.size(), size);
        QVERIFY(podsim::readStamp(picture).has_value());
    }
}

/// No picture shows a time at which the stream was frozen.
void TestPodStream::freezesAndThaws()
{
    Rig rig;
    QVERIFY(!rig.reader.next().isNull());
    QVERIFY(rig.tell("freeze"));
    const quint32 from = podsim::stampClock();
    QTest::qWait(300); // no signal announces pictures that don't come
    const quint32 to = podsim::stampClock();
    QVERIFY(rig.tell("thaw"));
    const QImage picture = awaitPicture(rig.reader, [from](const QImage &p) {
        const auto stamp = podsim::readStamp(p);
        return !stamp || int(stamp->milliseconds - from) >= 0;
    });
    const auto stamp = podsim::readStamp(picture);
    QVERIFY(stamp.has_value());
    QVERIFY(int(stamp->milliseconds - to) >= 0);
}

/// A client that tries again while the server is still letting go of the stream before.
bool comesBack(const QString &address)
{
    const QDeadlineTimer limit(20000);
    while (!limit.hasExpired()) {
        StreamReader reader(address);
        if (!reader.next().isNull())
            return true;
    }
    return false;
}

/// After a drop at once; after a stop only when the server has started again, at the same port.
void TestPodStream::clientsComeBack()
{
    Rig rig;
    QVERIFY(!rig.reader.next().isNull());
    QVERIFY(rig.tell("drop"));
    QVERIFY(awaitPicture(rig.reader, [](const QImage &) { return false; }).isNull());
    QVERIFY(comesBack(rig.address));
    QVERIFY(rig.tell("rtsp stop"));
    QVERIFY(!StreamReader(rig.address).isOpen());
    QVERIFY(rig.tell("rtsp start"));
    QVERIFY(comesBack(rig.address));
}

void TestPodStream::clientsShareThePicture()
{
    Rig rig;
    for (int i = 0; i < 2; ++i) {
        StreamReader other(rig.address);
        QVERIFY(podsim::readStamp(other.next()).has_value());
        QVERIFY(podsim::readStamp(rig.reader.next()).has_value());
    }
    const auto number = podsim::readStamp(rig.reader.next())->number;
    QVERIFY(podsim::readStamp(rig.reader.next())->number > number);
}

void TestPodStream::hasSoundOnDemand()
{
    Rig silent;
    QVERIFY(!silent.reader.hasSound());
    Rig loud({"--rtsp-audio"});
    QVERIFY(loud.reader.hasSound());
    const auto isHeard = [&loud](const QImage &) { return loud.reader.soundPackets() > 0; };
    QVERIFY(!awaitPicture(loud.reader, isHeard).isNull());
    QVERIFY(loud.reader.soundPackets() > 0);
}

void TestPodStream::refusesLines()
{
    Rig rig;
    for (const QString line : {"size 641x360", "size", "size 640", "size 8000x640", "thaw now"}) {
        rig.pod.write(line);
        QVERIFY(rig.pod.awaitLine("control: not understood: " + line));
    }
    QCOMPARE(rig.reader.next().size(), QSize(1280, 720));
}

void TestPodStream::portInUse()
{
    Rig rig;
    const QString port = QString::number(rig.pod.port("rtsp"));
    PodProcess second({"--rtsp", port});
    QCOMPARE(second.exitCode(), 1);
    QVERIFY(second.errorText().contains("cannot open rtsp 127.0.0.1:" + port));
}

void TestPodStream::endsBeforeItsClients()
{
    Rig rig({"--rtsp-audio"});
    QVERIFY(!rig.reader.next().isNull());
    rig.pod.stop(SIGTERM);
    QCOMPARE(rig.pod.exitCode(), 0);
    QVERIFY(awaitPicture(rig.reader, [](const QImage &) { return false; }).isNull());
}

NACELLE_TEST_MAIN(TestPodStream)
#include "tst_podstream.moc"
