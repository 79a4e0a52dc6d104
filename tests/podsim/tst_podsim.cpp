#include "tests/podsim/podprocess.h"
#include "tests/podsim/testhost.h"
#include "tests/support/strictmain.h"

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <memory>

namespace {

QByteArray bytes(const QByteArray &hex)
{
    return QByteArray::fromHex(hex);
}

QByteArray hex(const QByteArray &data)
{
    return data.toHex(' ').toUpper();
}

QByteArray zeros(int count)
{
    return QByteArray(count, '\0');
}

/// The host's empty command, 72 bytes, without a position block.
const QByteArray kEmpty =
    bytes("A8 E5 48 00 01") + zeros(25) + bytes("01") + zeros(39) + bytes("28 B2");

/// A host frame with valid inertial data, a carrier at 170.9175332 east, 38.0300822 north and
/// 41.123 m, and all controls at zero. `tail` is the command area with the checksum.
QByteArray hostFrame(const QByteArray &length, const QByteArray &tail)
{
    return bytes("A8 E5" + length + "00 01") + zeros(6) + bytes("01") + zeros(18) + bytes("01") +
           zeros(6) + bytes("01 24 F2 DF 65 16 EE AA 16 A3 A0 00 00 0F B0 0C 06 15 E6 08") +
           zeros(12) + bytes(tail);
}

const QByteArray kIdle = hostFrame("48", "00 0B 2F");
const QByteArray kPhoto = hostFrame("49", "20 01 E8 B5");
const QByteArray kRecord = hostFrame("49", "21 01 DB 84");

/// An answer of a pod that looks ahead in follow mode with both zooms at 1.0 and the OSD on.
/// `fixed` is the carrier's place, which is the target's, and `tail` the feedback area with the
/// checksum.
QByteArray answer(const QByteArray &length, const QByteArray &place, const QByteArray &tail)
{
    return bytes("8A 5E" + length + "00 01 12 10 01") + zeros(29) + bytes("01 01 01 01 00 00") +
           zeros(4) + bytes(place) + bytes("0A 00 0A 00") + zeros(6) + bytes(tail);
}

const QByteArray kNowhere = "00 00 00 00 00 00 00 00 00 00 00 00";
const QByteArray kPlace = "24 F2 DF 65 16 EE AA 16 A3 A0 00 00";
const QByteArray kEmptyAnswer = answer("47", kNowhere, "6E 0C");
const QByteArray kIdleAnswer = answer("47", kPlace, "F3 91");
const QByteArray kPhotoAnswer = answer("49", kPlace, "20 00 B3 30");

constexpr int kPlainSize = 71;
constexpr int kFeedbackSize = 73;

/// A pod with one host on one kind of link.
struct Rig
{
    Rig(const QByteArray &kind, const QStringList &options)
    {
        if (kind == "tcp") {
            start({"--tcp", "0"}, options);
            host = std::make_unique<TcpHost>(pod->port("tcp"));
        } else if (kind == "udp") {
            auto udp = std::make_unique<UdpHost>();
            start({"--udp", "0", "--udp-reply", QString::number(udp->replyPort())}, options);
            udp->setPort(pod->port("udp"));
            host = std::move(udp);
        } else {
            const QString link = directory.filePath("pod");
            start({"--pty", link}, options);
            pod->awaitLine("listening on pty");
            host = std::make_unique<PtyHost>(link);
        }
    }

    void start(QStringList link, const QStringList &options)
    {
        pod = std::make_unique<PodProcess>(link + options);
    }

    QTemporaryDir directory;
    std::unique_ptr<PodProcess> pod;
    std::unique_ptr<TestHost> host;
};

void addLinkRows()
{
    QTest::addColumn<QByteArray>("kind");
    for (const char *kind : {"tcp", "udp", "pty"})
        QTest::newRow(kind) << QByteArray(kind);
}

struct CommandSample
{
    const char *name;
    const char *length;
    const char *area;
    const char *crc;
    int mode; ///< that is reported afterwards
    const char *feedback;
    const char *line;
};

// clang-format off
constexpr CommandSample kSamples[] = {
    {"calibrate", "48", "01", "1B 0E", 0x12, "01 00",
     "command 0x01 calibrate: success"},
    {"recentre", "48", "03", "3B 4C", 0x12, "03 00",
     "command 0x03 recentre: success"},
    {"OSD position", "49", "06 02", "74 96", 0x12, "06 00",
     "OSD position set to 2"},
    {"image flip", "49", "07 01", "77 C4", 0x12, "07 00",
     "image flip set to 1"},
    {"time zone west", "49", "08 FB", "29 AF", 0x12, "08 00",
     "time zone set to -5"},
    {"angle control", "48", "10", "19 1E", 0x10, "10 00",
     "mode 0x10 angle control"},
    {"lock", "48", "11", "09 3F", 0x11, "11 00",
     "mode 0x11 lock"},
    {"follow", "48", "12", "39 5C", 0x12, "12 00",
     "command 0x12 follow: success"},
    {"look down", "48", "13", "29 7D", 0x13, "13 00",
     "mode 0x13 look down"},
    {"Euler angle control", "48", "14", "59 9A", 0x14, "14 00",
     "mode 0x14 Euler angle control"},
    {"stare at a place", "54", "15 24 F2 DF 65 16 EE AA 16 A3 A0 00 00", "A0 1E", 0x16, "15 00",
     "longitude=1709175332 latitude=380300822 height=41123"},
    {"place cut short", "53", "15 24 F2 DF 65 16 EE AA 16 A3 A0 00", "F5 92", 0x12, "15 01",
     "payload of 11 bytes where 12 are needed: failure"},
    {"stare", "48", "16", "79 D8", 0x16, "16 00",
     "mode 0x16 stare"},
    {"track", "52", "17 01 01 E8 03 D0 07 B8 0B A0 0F", "F4 45", 0x17, "17 00",
     "on=1 x0=1000 y0=2000 x1=3000 y1=4000: success"},
    {"end of tracking", "52", "17 01 00 00 00 00 00 00 00 00 00", "02 15", 0x12, "17 00",
     "on=0 x0=0 y0=0 x1=0 y1=0: success"},
    {"point", "4D", "1A 01 64 00 C8 00", "81 B4", 0x12, "1A 00",
     "command 0x1A point fixed=1 x0=100 y0=200: success"},
    {"track from outside", "4E", "1B 01 10 00 F0 FF 01", "65 A7", 0x17, "1B 00",
     "camera=1 right=16 down=-16 on=1: success"},
    {"FPV", "48", "1C", "D8 92", 0x1C, "1C 00",
     "mode 0x1C FPV"},
    {"photo", "49", "20 01", "E8 B5", 0x12, "20 00",
     "photo 1"},
    {"photo without its byte", "48", "20", "2F 4D", 0x12, "20 01",
     "payload of 0 bytes where 1 are needed: failure"},
    {"record", "49", "21 01", "DB 84", 0x12, "21 00",
     "recording on"},
    {"zoom in", "49", "22 01", "8E D7", 0x12, "22 00",
     "camera 1 zooming in from 1.0"},
    {"zoom out", "49", "23 02", "8D 85", 0x12, "23 00",
     "camera 2 zooming out from 1.0"},
    {"stop zoom of both", "49", "24 03", "04 33", 0x12, "24 00",
     "camera 2 zoom 1.0"},
    {"no such camera", "49", "24 04", "74 D4", 0x12, "24 01",
     "command 0x24 stop zoom camera=4: failure"},
    {"zoom to", "4B", "25 01 9B 00", "16 74", 0x12, "25 00",
     "camera 1 zoom 15.5"},
    {"zoom to a negative value", "4B", "25 02 E7 FF", "1C E0", 0x12, "25 00",
     "camera 2 zoom 2.5"},
    {"zoom beyond the limit", "4B", "25 02 E8 03", "22 4D", 0x12, "25 00",
     "camera 2 zoom 8.0"},
    {"focus", "49", "26 01", "42 13", 0x12, "26 00",
     "command 0x26 focus fixed=1: success"},
    {"palette", "4A", "2A 02 2C", "20 B0", 0x12, "2A 00",
     "palette set to 44"},
    {"night view", "4A", "2B 01 01", "B7 1C", 0x12, "2B 00",
     "night view set to 1"},
    {"temperature area", "52", "30 01 01 01 00 02 00 03 00 04 00", "F1 7A", 0x12, "30 00",
     "temperature area camera=1 on=1 x0=1 y0=2 x1=3 y1=4: success"},
    {"temperature alarm", "4E", "31 01 01 C8 00 CE FF", "BB 54", 0x12, "31 00",
     "temperature alarm camera=1 on=1 upper=200 lower=-50: success"},
    {"isotherm", "4E", "32 01 02 C8 00 32 00", "C5 58", 0x12, "32 00",
     "isotherm camera=1 type=2 upper=200 lower=50: success"},
    {"temperature point", "4E", "33 01 01 88 13 88 13", "34 D0", 0x12, "33 00",
     "temperature point camera=1 on=1 x0=5000 y0=5000: success"},
    {"OSD", "49", "73 00", "A3 78", 0x12, "73 00",
     "OSD set to 0"},
    {"picture in picture", "49", "74 04", "7A 6B", 0x12, "74 00",
     "picture in picture set to 4"},
    {"target recognition", "49", "75 01", "19 FF", 0x12, "75 00",
     "target recognition set to 1"},
    {"digital zoom", "49", "76 01", "4C AC", 0x12, "76 00",
     "digital zoom set to 1"},
    {"light", "49", "80 FF", "FB 1A", 0x12, "80 00",
     "light set to 255"},
    {"ranging", "49", "81 02", "F6 99", 0x12, "81 00",
     "ranging set to 2"},
    {"longer than needed", "4A", "13 AA BB", "1C 0D", 0x13, "13 00",
     "mode 0x13 look down"},
    {"unknown", "4A", "99 01 02", "17 E0", 0x12, "99 01",
     "command 0x99 unknown: failure"},
};
// clang-format on

} // namespace

class TestPodsim : public QObject
{
    Q_OBJECT

private slots:
    void answersWholeFrames_data() { addLinkRows(); }
    void answersWholeFrames();
    void readsPiecesOfAnySize_data() { addLinkRows(); }
    void readsPiecesOfAnySize();
    void survivesBrokenFrames_data();
    void survivesBrokenFrames();
    void tellsHalfFrames();
    void doesCommands_data();
    void doesCommands();
    void repeatedCommandIsDoneOnce();
    void idleFramesBreakARepeat();
    void turnsWithControlInput();
    void keepsClientsApart();
    void remembersUdpPeers();
    void otherEndOfPtyComesAndGoes();
    void tcpClientsComeAndGo();
    void idleFramesAreCountedNotShown();
    void writesPieces_data();
    void writesPieces();
    void noiseFollowsSeed();
    void spoilsAnswers_data();
    void spoilsAnswers();
    void keepsAnswersBack_data();
    void keepsAnswersBack();
    void givesWantedResult_data();
    void givesWantedResult();
    void tellsExecutingFirst();
    void startsInMode();
    void refusesOptions_data();
    void refusesOptions();
    void showsHelp();
    void portInUse_data();
    void portInUse();
    void ptyLinkInUse();
    void endsOnSignal_data();
    void endsOnSignal();
};

void TestPodsim::answersWholeFrames()
{
    QFETCH(QByteArray, kind);
    Rig rig(kind, {});
    rig.host->send(kEmpty);
    QCOMPARE(hex(rig.host->receive(kPlainSize)), hex(kEmptyAnswer));
    rig.host->send(kPhoto);
    QCOMPARE(hex(rig.host->receive(kFeedbackSize)), hex(kPhotoAnswer));
    rig.host->send(kIdle + kEmpty); // the latter has no position block
    QCOMPARE(hex(rig.host->receive(kPlainSize)), hex(kIdleAnswer));
    QCOMPARE(hex(rig.host->receive(kPlainSize)), hex(kIdleAnswer));
}

void TestPodsim::readsPiecesOfAnySize()
{
    QFETCH(QByteArray, kind);
    Rig rig(kind, {});
    for (const char byte : kEmpty)
        rig.host->send(QByteArray(1, byte));
    QCOMPARE(hex(rig.host->receive(kPlainSize)), hex(kEmptyAnswer));
    rig.host->send(kEmpty + kIdle + kPhoto.left(20));
    rig.host->send(kPhoto.mid(20) + kIdle);
    QCOMPARE(hex(rig.host->receive(kPlainSize)), hex(kEmptyAnswer));
    QCOMPARE(hex(rig.host->receive(kPlainSize)), hex(kIdleAnswer));
    QCOMPARE(hex(rig.host->receive(kFeedbackSize)), hex(kPhotoAnswer));
    QCOMPARE(hex(rig.host->receive(kPlainSize)), hex(kIdleAnswer));
}

void TestPodsim::survivesBrokenFrames_data()
{
    QTest::addColumn<QByteArray>("broken");
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("counts");
    const QByteArray head = bytes("A8 E5 48 00 01") + zeros(25) + bytes("01") + zeros(39);
    const auto withLength = [](const QByteArray &length) {
        return bytes("A8 E5" + length + "01") + zeros(65) + bytes("00 00");
    };
    QTest::newRow("checksum") << head + bytes("28 B3") << "bad checksum 0x28B3 instead of 0x28B2"
                              << "1 broken frames, 0 bytes of noise";
    QTest::newRow("checksum low byte first")
        << head + bytes("B2 28") << "bad checksum 0xB228 instead of 0x28B2"
        << "1 broken frames, 0 bytes of noise";
    QTest::newRow("too short for a frame") << withLength("47 00") << "bad length 71"
                                           << "1 broken frames, 0 bytes of noise";
    QTest::newRow("too long for a frame") << withLength("01 02") << "bad length 513"
                                          << "1 broken frames, 0 bytes of noise";
    QTest::newRow("one byte lost")
        << head.left(60) + head.mid(61) + bytes("28 B2") << "bad checksum"
        << "1 broken frames, 0 bytes of noise";
    QTest::newRow("one byte more") << head + bytes("00 28 B2") << "bad checksum 0x0028"
                                   << "1 broken frames, 0 bytes of noise";
    QTest::newRow("half a byte off")
        << bytes("0A 8E 54 80 00") + zeros(65) << "noise skipped: 70 bytes"
        << "0 broken frames, 70 bytes of noise";
    QTest::newRow("noise with half headers") << bytes("A8 A8 E4 E5 A8") << "noise skipped: 5 bytes"
                                             << "0 broken frames, 5 bytes of noise";
    QTest::newRow("header inside a broken frame")
        << bytes("A8 E5 48 00 01") + zeros(10) << "bad checksum"
        << "1 broken frames, 0 bytes of noise";
}

void TestPodsim::survivesBrokenFrames()
{
    QFETCH(QByteArray, broken);
    QFETCH(QString, line);
    QFETCH(QString, counts);
    Rig rig("tcp", {});
    rig.host->send(broken + kIdle);
    QCOMPARE(hex(rig.host->receive(kPlainSize)), hex(kIdleAnswer));
    QVERIFY2(rig.pod->awaitLine(line), qPrintable(rig.pod->output()));
    rig.pod->stop(SIGTERM);
    QVERIFY2(rig.pod->output().contains(counts), qPrintable(rig.pod->output()));
}

void TestPodsim::tellsHalfFrames()
{
    Rig rig("tcp", {});
    rig.host->send(kIdle.left(50));
    QVERIFY(rig.pod->awaitLine("unfinished frame: 50 of 72 bytes"));
    rig.host->send(kIdle.mid(50));
    QCOMPARE(hex(rig.host->receive(kPlainSize)), hex(kIdleAnswer));
    rig.host->send("xyz");
    QVERIFY(rig.pod->awaitLine("noise skipped: 3 bytes"));
}

void TestPodsim::doesCommands_data()
{
    QTest::addColumn<QByteArray>("frame");
    QTest::addColumn<int>("mode");
    QTest::addColumn<QByteArray>("feedback");
    QTest::addColumn<QString>("line");
    for (const CommandSample &sample : kSamples)
        QTest::newRow(sample.name)
            << hostFrame(sample.length, QByteArray(sample.area) + sample.crc) << sample.mode
            << QByteArray(sample.feedback) << QString(sample.line);
}

void TestPodsim::doesCommands()
{
    QFETCH(QByteArray, frame);
    QFETCH(int, mode);
    QFETCH(QByteArray, feedback);
    QFETCH(QString, line);
    Rig rig("tcp", {});
    rig.host->send(frame);
    const QByteArray answer = rig.host->receive(kFeedbackSize);
    QCOMPARE(hex(answer.left(4)), QByteArray("8A 5E 49 00"));
    QCOMPARE(static_cast<int>(answer[5]), mode);
    QCOMPARE(hex(answer.mid(69, 2)), feedback);
    QVERIFY2(rig.pod->awaitLine(line), qPrintable(rig.pod->output()));
}

void TestPodsim::repeatedCommandIsDoneOnce()
{
    Rig rig("tcp", {});
    rig.host->send(kRecord + kRecord + kRecord);
    for (int i = 0; i < 3; ++i)
        QCOMPARE(hex(rig.host->receive(kFeedbackSize).mid(69, 2)), QByteArray("21 00"));
    rig.pod->stop(SIGTERM);
    QVERIFY(rig.pod->output().contains("recording on"));
    QVERIFY(!rig.pod->output().contains("recording off"));
    QVERIFY(rig.pod->output().contains("3 frames: 0 idle, 1 commands, 2 repeats"));
}

void TestPodsim::idleFramesBreakARepeat()
{
    Rig rig("tcp", {});
    rig.host->send(kRecord + kIdle + kRecord + kPhoto + kRecord);
    rig.host->receive(4 * kFeedbackSize + kPlainSize);
    rig.pod->stop(SIGTERM);
    QCOMPARE(rig.pod->output().count("recording on"), 2);
    QCOMPARE(rig.pod->output().count("recording off"), 1);
}

/// A yaw input of -1500 in Euler control: the answers come nearer to -15 degrees, 345 on the wire,
/// until they are there.
void TestPodsim::turnsWithControlInput()
{
    const QByteArray turn =
        bytes("A8 E5 48 00 01 00 00 00 00 24 FA 05") + kIdle.mid(12, 58) + bytes("97 E4");
    Rig rig("tcp", {"--start-mode", "14"});
    QByteArray relative;
    QByteArray absolute;
    for (int i = 0; i < 1000000 && absolute != "C4 86"; ++i) {
        rig.host->send(turn);
        const QByteArray frame = rig.host->receive(kPlainSize);
        QCOMPARE(frame.size(), kPlainSize);
        relative = hex(frame.mid(16, 2));
        absolute = hex(frame.mid(22, 2));
    }
    QCOMPARE(relative, QByteArray("24 FA"));
    QCOMPARE(absolute, QByteArray("C4 86"));
}

void TestPodsim::keepsClientsApart()
{
    PodProcess pod({"--tcp", "0"});
    TcpHost first(pod.port("tcp"));
    TcpHost second(pod.port("tcp"));
    first.send(kPhoto.left(40));
    second.send(kIdle.left(30));
    first.send(kPhoto.mid(40));
    QCOMPARE(hex(first.receive(kFeedbackSize)), hex(kPhotoAnswer));
    second.send(kIdle.mid(30));
    QCOMPARE(hex(second.receive(kPlainSize)), hex(kIdleAnswer));
}

/// Sixteen peers have room; a seventeenth takes the place of the one that was quiet the longest,
/// and not of one that has lately sent a part of a frame.
void TestPodsim::remembersUdpPeers()
{
    UdpHost first;
    PodProcess pod({"--udp", "0", "--udp-reply", QString::number(first.replyPort())});
    const quint16 port = pod.port("udp");
    first.setPort(port);
    first.send(kPhoto.left(20));
    QVERIFY(pod.awaitCount(": up", 1));
    UdpHost others[16];
    for (int i = 0; i < 16; ++i) {
        if (i == 15)
            first.send(kPhoto.mid(20, 20));
        others[i].setPort(port);
        others[i].send(kIdle);
        QCOMPARE(hex(first.receive(kPlainSize)), hex(kIdleAnswer));
    }
    first.send(kPhoto.mid(40));
    QCOMPARE(hex(first.receive(kFeedbackSize)), hex(kPhotoAnswer));
    QVERIFY(pod.awaitCount(QString("%1: down").arg(others[0].replyPort()), 1));
}

/// What one host leaves behind, sent or unread, doesn't meet the next one.
void TestPodsim::otherEndOfPtyComesAndGoes()
{
    const QTemporaryDir directory;
    const QString link = directory.filePath("pod");
    PodProcess pod({"--pty", link});
    QVERIFY(pod.awaitLine("listening on pty"));
    for (int i = 1; i <= 5; ++i) {
        {
            PtyHost host(link);
            QVERIFY(host.isOpen());
            host.send(kIdle);
            QCOMPARE(hex(host.receive(kPlainSize)), hex(kIdleAnswer));
            host.send(kPhoto + kIdle.left(10));
            QVERIFY(pod.awaitLine(QString("photo %1\n").arg(i)));
        }
        QVERIFY(pod.awaitCount(": down", i));
    }
    PtyHost(link).send(kPhoto);
    QVERIFY(pod.awaitLine("photo 6\n"));
    pod.stop(SIGTERM);
    QVERIFY(!QFileInfo(link).isSymLink());
}

void TestPodsim::tcpClientsComeAndGo()
{
    PodProcess pod({"--tcp", "0"});
    for (int i = 0; i < 5; ++i) {
        TcpHost host(pod.port("tcp"));
        host.send(kIdle + kIdle.left(10));
        QCOMPARE(hex(host.receive(kPlainSize)), hex(kIdleAnswer));
    }
    QVERIFY(pod.awaitCount(": down", 5));
}

void TestPodsim::idleFramesAreCountedNotShown()
{
    for (const bool isVerbose : {false, true}) {
        Rig rig("tcp", isVerbose ? QStringList{"--verbose"} : QStringList{});
        for (int i = 0; i < 20; ++i)
            rig.host->send(kIdle);
        QCOMPARE(rig.host->receive(20 * kPlainSize).size(), 20 * kPlainSize);
        rig.pod->stop(SIGTERM);
        QVERIFY(rig.pod->output().contains("20 frames: 20 idle"));
        QCOMPARE(rig.pod->output().count("idle frame"), isVerbose ? 20 : 0);
    }
}

/// Over UDP, where each piece is a datagram.
void TestPodsim::writesPieces_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QVector<int>>("sizes"); // of the datagrams that answer three idle frames
    QTest::newRow("split") << QStringList{"--split", "30"}
                           << QVector<int>{30, 30, 11, 30, 30, 11, 30, 30, 11};
    QTest::newRow("coalesce") << QStringList{"--coalesce", "3"} << QVector<int>{213};
    QTest::newRow("coalesce, then split")
        << QStringList{"--coalesce", "3", "--split", "100"} << QVector<int>{100, 100, 13};
    QTest::newRow("noise") << QStringList{"--noise", "7"} << QVector<int>{7, 71, 7, 71, 7, 71};
    QTest::newRow("delay") << QStringList{"--delay", "20"} << QVector<int>{71, 71, 71};
    QTest::newRow("drop") << QStringList{"--drop", "2"} << QVector<int>{71, 71};
}

void TestPodsim::writesPieces()
{
    QFETCH(QStringList, options);
    QFETCH(QVector<int>, sizes);
    Rig rig("udp", options);
    auto *host = static_cast<UdpHost *>(rig.host.get());
    host->send(kIdle + kIdle + kIdle);
    QByteArray answers;
    for (const int size : sizes) {
        const QByteArray piece = host->datagram();
        QCOMPARE(piece.size(), size);
        if (size != 7)
            answers += piece;
    }
    QCOMPARE(hex(answers), hex(kIdleAnswer.repeated(answers.size() / kPlainSize)));
}

void TestPodsim::noiseFollowsSeed()
{
    const auto noise = [](const QString &seed) {
        Rig rig("tcp", {"--noise", "32", "--seed", seed});
        rig.host->send(kIdle);
        return rig.host->receive(32);
    };
    const QByteArray first = noise("5");
    QCOMPARE(hex(noise("5")), hex(first));
    QVERIFY(noise("6") != first);
}

void TestPodsim::spoilsAnswers_data()
{
    QTest::addColumn<QString>("option");
    QTest::addColumn<QByteArray>("spoilt");
    QTest::newRow("checksum") << "--bad-crc" << answer("47", kPlace, "0C 6E");
    QTest::newRow("length, with its checksum") << "--bad-length" << answer("48", kPlace, "22 29");
}

void TestPodsim::spoilsAnswers()
{
    QFETCH(QString, option);
    QFETCH(QByteArray, spoilt);
    Rig rig("tcp", {option, "2"});
    rig.host->send(kIdle + kIdle + kIdle);
    QCOMPARE(hex(rig.host->receive(kPlainSize)), hex(kIdleAnswer));
    QCOMPARE(hex(rig.host->receive(kPlainSize)), hex(spoilt));
    QCOMPARE(hex(rig.host->receive(kPlainSize)), hex(kIdleAnswer));
}

void TestPodsim::keepsAnswersBack_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::newRow("silent") << QStringList{"--silent"};
    QTest::newRow("not the first of two") << QStringList{"--coalesce", "2"};
    QTest::newRow("not in this minute") << QStringList{"--delay", "60000"};
    QTest::newRow("every one dropped") << QStringList{"--drop", "1"};
}

void TestPodsim::keepsAnswersBack()
{
    QFETCH(QStringList, options);
    PodProcess pod(QStringList{"--tcp", "0"} + options);
    TcpHost host(pod.port("tcp"));
    host.send(kPhoto);
    QVERIFY(pod.awaitLine("photo 1"));
    pod.stop(SIGTERM);
    QCOMPARE(host.receiveAll(), QByteArray());
    QCOMPARE(pod.exitCode(), 0);
}

void TestPodsim::givesWantedResult_data()
{
    QTest::addColumn<QString>("result");
    QTest::addColumn<QByteArray>("feedback");
    QTest::addColumn<bool>("isDone");
    QTest::newRow("success") << "0" << QByteArray("20 00") << true;
    QTest::newRow("failure") << "1" << QByteArray("20 01") << false;
    QTest::newRow("executing for ever") << "255" << QByteArray("20 FF") << false;
}

void TestPodsim::givesWantedResult()
{
    QFETCH(QString, result);
    QFETCH(QByteArray, feedback);
    QFETCH(bool, isDone);
    Rig rig("tcp", {"--result", result});
    rig.host->send(kPhoto);
    QCOMPARE(hex(rig.host->receive(kFeedbackSize).mid(69, 2)), feedback);
    rig.pod->stop(SIGTERM);
    QCOMPARE(rig.pod->output().contains("photo 1"), isDone);
}

/// The command goes on while the host sends idle frames, and is done with its result.
void TestPodsim::tellsExecutingFirst()
{
    Rig rig("tcp", {"--ack-after", "2"});
    rig.host->send(kPhoto + kIdle);
    QCOMPARE(hex(rig.host->receive(kFeedbackSize).mid(69, 2)), QByteArray("20 02"));
    QCOMPARE(hex(rig.host->receive(kFeedbackSize).mid(69, 2)), QByteArray("20 02"));
    QVERIFY(rig.pod->awaitLine("executing"));
    QVERIFY(!rig.pod->output().contains("photo 1"));
    rig.host->send(kIdle + kIdle);
    QCOMPARE(hex(rig.host->receive(kFeedbackSize).mid(69, 2)), QByteArray("20 00"));
    QCOMPARE(hex(rig.host->receive(kPlainSize)), hex(kIdleAnswer));
    QVERIFY(rig.pod->awaitLine("photo 1"));
}

void TestPodsim::startsInMode()
{
    Rig rig("tcp", {"--start-mode", "1c"});
    rig.host->send(kIdle);
    QCOMPARE(static_cast<int>(rig.host->receive(kPlainSize)[5]), 0x1C);
}

void TestPodsim::refusesOptions_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QString>("reason");
    QTest::newRow("no link") << QStringList{} << "give --tcp [port], --udp [port] or --pty <link>";
    QTest::newRow("faults alone") << QStringList{"--silent"} << "no link";
    QTest::newRow("unknown") << QStringList{"--tpc"} << "tpc";
    QTest::newRow("stray word") << QStringList{"--tcp", "0", "here"} << "unexpected: here";
    QTest::newRow("port too large") << QStringList{"--tcp=65536"} << "--tcp 65536: a number";
    QTest::newRow("port in words") << QStringList{"--udp=any"} << "--udp any: a number";
    QTest::newRow("reply to nobody")
        << QStringList{"--udp", "0", "--udp-reply", "0"} << "--udp-reply 0";
    QTest::newRow("reply without udp")
        << QStringList{"--tcp", "0", "--udp-reply", "5"} << "there is no --udp";
    QTest::newRow("address") << QStringList{"--tcp", "0", "--listen", "pod"}
                             << "--listen pod: not an IP address";
    QTest::newRow("mode") << QStringList{"--tcp", "0", "--start-mode", "15"} << "--start-mode 15";
    QTest::newRow("empty pieces") << QStringList{"--tcp", "0", "--split", "0"} << "--split 0";
    QTest::newRow("result") << QStringList{"--tcp", "0", "--result", "256"} << "--result 256";
    QTest::newRow("value missing") << QStringList{"--tcp", "0", "--noise"} << "noise";
}

void TestPodsim::refusesOptions()
{
    QFETCH(QStringList, options);
    QFETCH(QString, reason);
    PodProcess pod(options);
    QCOMPARE(pod.exitCode(), 2);
    QCOMPARE(pod.output(), QString());
    const QString error = pod.errorText();
    QVERIFY2(error.startsWith("podsim: ") && error.contains(reason), qPrintable(error));
}

void TestPodsim::showsHelp()
{
    PodProcess pod({"--help"});
    QCOMPARE(pod.exitCode(), 0);
    for (const char *option : {"--tcp", "--udp-reply", "--pty", "--bad-length", "--ack-after"})
        QVERIFY2(pod.output().contains(option), option);
}

void TestPodsim::portInUse_data()
{
    QTest::addColumn<QString>("kind");
    QTest::newRow("tcp") << "tcp";
    QTest::newRow("udp") << "udp";
}

void TestPodsim::portInUse()
{
    QFETCH(QString, kind);
    PodProcess first({"--" + kind, "0"});
    const QString port = QString::number(first.port(kind));
    PodProcess second({"--" + kind + "=" + port});
    QCOMPARE(second.exitCode(), 1);
    const QString error = second.errorText();
    QVERIFY2(error.contains("cannot listen on " + kind + " 127.0.0.1:" + port), qPrintable(error));
}

/// Somebody's file or link stays; a link that a killed pod has left gives way.
void TestPodsim::ptyLinkInUse()
{
    const QTemporaryDir directory;
    const QString name = directory.filePath("pod");
    QFile file(directory.filePath("file"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QVERIFY(file.link(name));
    for (const QString &taken : {file.fileName(), name}) {
        PodProcess refused({"--pty", taken});
        QCOMPARE(refused.exitCode(), 1);
        QVERIFY(refused.errorText().contains("cannot open pty " + taken));
        QVERIFY(QFile::exists(taken));
    }
    QVERIFY(QFile::remove(name));

    PodProcess killed({"--pty", name});
    QVERIFY(killed.awaitLine("listening on pty"));
    killed.stop(SIGKILL);
    QVERIFY(QFileInfo(name).isSymLink());
    PodProcess next({"--pty", name});
    QVERIFY(next.awaitLine("listening on pty"));
    PtyHost host(name);
    host.send(kEmpty);
    QCOMPARE(hex(host.receive(kPlainSize)), hex(kEmptyAnswer));
}

void TestPodsim::endsOnSignal_data()
{
    QTest::addColumn<int>("signal");
    QTest::newRow("SIGINT") << SIGINT;
    QTest::newRow("SIGTERM") << SIGTERM;
}

void TestPodsim::endsOnSignal()
{
    QFETCH(int, signal);
    Rig rig("tcp", {});
    rig.host->send(kIdle + kPhoto);
    rig.host->receive(kPlainSize + kFeedbackSize);
    rig.pod->stop(signal);
    QCOMPARE(rig.pod->exitCode(), 0);
    QCOMPARE(rig.pod->output().count("2 frames: 1 idle, 1 commands, 0 repeats; 0 broken frames, 0 "
                                     "bytes of noise; 2 answers\n"),
             1);
}

NACELLE_TEST_MAIN(TestPodsim)
#include "tst_podsim.moc"
