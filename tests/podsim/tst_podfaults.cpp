#include "tests/podsim/podrig.h"
#include "tests/support/strictmain.h"
#include "tools/podsim/podfaults.h"
#include "tools/podsim/podsession.h"

#include <csignal>

namespace {

const QByteArray kRecentreAnswer = answer("49", kPlace, "03 00 E0 85");
const QByteArray kUnknown = hostFrame("48", "7F 84 57");
const QByteArray kShortPhoto = hostFrame("48", "20 2F 4D");
const QByteArray kZoomNoCamera = hostFrame("49", "22 04 DE 72");
const QByteArray kRecentre = hostFrame("48", "03 3B 4C");
const QByteArray kBadChecksum = kPhoto.left(71) + bytes("B4");
const QByteArray kBadLength = bytes("A8 E5 01 02 01") + zeros(67);

/// The answer to an idle frame with other bytes at `offset` and another checksum.
QByteArray idleWith(int offset, const QByteArray &other, const QByteArray &checksum)
{
    QByteArray frame = kIdleAnswer.left(69) + bytes(checksum);
    return frame.replace(offset, bytes(other).size(), bytes(other));
}

podsim::PodOptions optionsOf(const QString &line)
{
    return podsim::parseOptions(QString("podsim --tcp " + line).split(' ')).options;
}

} // namespace

class TestPodFaults : public QObject
{
    Q_OBJECT

private slots:
    void answers_data();
    void answers();
    void ignoresCommands();
    void takesEachReadByItself();
    void runsAway();
    void leaves_data();
    void leaves();
    void falsifiesAngles_data();
    void falsifiesAngles();
    void isLateAtRandom();
    void turnsSlowly();
};

/// Some host frames, and all that comes of them.
void TestPodFaults::answers_data()
{
    QTest::addColumn<QByteArray>("sent");
    QTest::addColumn<QByteArray>("expected");
    const auto row = [](const char *options, const QByteArray &sent, const QByteArray &expected) {
        QTest::newRow(options) << sent << expected;
    };
    row("--version-byte 2", kIdle, idleWith(4, "02", "7A 44"));
    row("--lie-mode 17", kIdle, idleWith(5, "17", "64 E8"));
    row("--flags 8001", kIdle, idleWith(6, "80 01", "B3 59"));
    row("--reserved A5", kIdle,
        idleWith(30, "A5 A5 A5 A5 A5 A5 A5", "E3 00").replace(63, 6, QByteArray(6, '\xA5')));
    row("--no-subframe", kIdle, idleWith(37, zeros(26).toHex(), "45 27"));
    row("--angle-offset 1.5", kIdle, idleWith(12, "96 00 96 00 96 00 96 00 96 00", "68 95"));
    row("--angle-offset -360", kIdle, idleWith(12, "00 80 00 80 00 80 00 80 00 80", "1D 9C"));
    row("--pitch-offset -2.5", kIdle, idleWith(20, "06 FF", "7E 29"));

    row("--pad 3", kIdle + kPhoto,
        answer("4A", kPlace, "00 00 00 BF 94") + answer("4C", kPlace, "20 00 00 00 00 0A BA"));
    row("--wrong-code", kIdle + kPhoto, kIdleAnswer + answer("49", kPlace, "21 00 80 01"));
    row("--no-ack", kPhoto + kRecentre, kIdleAnswer + kIdleAnswer);
    row("--accept-unknown", kUnknown + kShortPhoto + kZoomNoCamera,
        answer("49", kPlace, "7F 00 AD B1") + kPhotoAnswer + answer("49", kPlace, "22 01 C5 73"));

    row("--double 2", kIdle + kPhoto + kIdle,
        kIdleAnswer + kPhotoAnswer + kPhotoAnswer + kIdleAnswer);
    row("--swap 1", kIdle + kPhoto + kRecentre, kPhotoAnswer + kIdleAnswer);
    row("--swap 2", kIdle + kPhoto + kRecentre + kPhoto,
        kIdleAnswer + kRecentreAnswer + kPhotoAnswer);
    row("--late 2:60000", kIdle + kPhoto + kRecentre, kIdleAnswer);
    row("--hang-after 2", kIdle + kPhoto + kRecentre, kIdleAnswer + kPhotoAnswer);

    const QByteArray idle3 = kIdle + kIdle + kIdle;
    row("--answer-broken", kIdle + kBadChecksum + kBadLength + kRecentre,
        kIdleAnswer + kIdleAnswer + kIdleAnswer + kRecentreAnswer);
    row("--deaf-after-broken", kIdle + kBadChecksum + idle3 + kRecentre,
        kIdleAnswer + kRecentreAnswer);
    row("--deaf-after-broken --bad-crc 9", "noise" + idle3 + kRecentre, kRecentreAnswer);
}

void TestPodFaults::answers()
{
    QFETCH(QByteArray, sent);
    QFETCH(QByteArray, expected);
    Rig rig("tcp", QString(QTest::currentDataTag()).split(' '));
    rig.host->send(sent);
    QCOMPARE(hex(rig.host->receive(expected.size())), hex(expected));
    rig.pod->stop(SIGTERM);
    QCOMPARE(hex(static_cast<TcpHost *>(rig.host.get())->receiveAll()), QByteArray());
}

/// Also while another command is being carried out.
void TestPodFaults::ignoresCommands()
{
    Rig rig("tcp", {"--ignore", "20,21", "--ack-after", "1"});
    rig.host->send(kPhoto + kPhoto + kRecentre + kRecord + kIdle);
    const QByteArray expected = kIdleAnswer + kIdleAnswer + answer("49", kPlace, "03 02 C0 C7") +
                                kRecentreAnswer + kIdleAnswer;
    QCOMPARE(hex(rig.host->receive(expected.size())), hex(expected));
    rig.pod->stop(SIGTERM);
    QVERIFY(!rig.pod->output().contains("photo 1"));
    QVERIFY(!rig.pod->output().contains("recording on"));
    QVERIFY(rig.pod->output().contains("5 frames: 1 idle, 3 commands, 1 repeats"));
}

/// Over UDP, where each datagram is one read.
void TestPodFaults::takesEachReadByItself()
{
    Rig rig("udp", {"--no-reassembly"});
    rig.host->send(kPhoto.left(40));
    rig.host->send(kPhoto.mid(40));
    rig.host->send(kIdle + kPhoto);
    rig.host->send("noise" + kPhoto);
    rig.host->send(kRecentre);
    const QByteArray expected = kIdleAnswer + kRecentreAnswer;
    QCOMPARE(hex(rig.host->receive(expected.size())), hex(expected));
}

/// The yaw goes down from 0, so that it is on the far side of the turn at once.
void TestPodFaults::runsAway()
{
    Rig rig("tcp", {"--drift", "-20"});
    QByteArray frame = kIdleAnswer;
    for (int i = 0; i < 100000 && hex(frame.mid(22, 2)) == "00 00"; ++i) {
        rig.host->send(kIdle);
        frame = rig.host->receive(kPlainSize);
    }
    QVERIFY2(quint8(frame[23]) > 0x80 && quint8(frame[23]) <= 0x8C, hex(frame));
}

void TestPodFaults::leaves_data()
{
    QTest::addColumn<QByteArray>("kind");
    for (const char *kind : {"tcp", "udp", "pty"})
        QTest::newRow(kind) << QByteArray(kind);
}

/// With the second answer on its way for some time. A terminal that hangs up takes along what a
/// host on a busy machine hasn't read in time.
void TestPodFaults::leaves()
{
    QFETCH(QByteArray, kind);
    Rig rig(kind, {"--leave-after", "2", "--late", "2:50"});
    rig.host->send(kIdle);
    QCOMPARE(hex(rig.host->receive(kPlainSize)), hex(kIdleAnswer));
    rig.host->send(kPhoto + kRecord);
    if (kind != "pty")
        QCOMPARE(hex(rig.host->receive(kFeedbackSize)), hex(kPhotoAnswer));
    QCOMPARE(rig.pod->exitCode(), 0);
    QVERIFY(rig.pod->output().endsWith("gone, as --leave-after 2 asks\n"));
    QVERIFY(rig.pod->output().contains("recording on"));
    QVERIFY(!QFile::exists(rig.directory.filePath("pod")));
}

using Wire = QVector<int>;

/// Relative X, Y, Z and absolute roll, pitch and yaw of the third answer. The report says 100 to
/// 600 at first, and everywhere -20000 (a yaw of 16000) 2 and 4 seconds later.
void TestPodFaults::falsifiesAngles_data()
{
    QTest::addColumn<Wire>("expected");
    QTest::newRow("--seed 1") << Wire{-20000, -20000, -20000, -20000, -20000, 16000};
    QTest::newRow("--stuck") << Wire{100, 200, 300, 400, 500, 600};
    QTest::newRow("--stuck --drift 90") << Wire{100, 200, 300, 400, 500, 600};
    QTest::newRow("--drift 90") << Wire{-20000, -20000, -20000, -20000, -20000, 16000};
    QTest::newRow("--drift 50.004") << Wire{-20000, -20000, -20000, -20000, -20000, 2};
    QTest::newRow("--drift -41") << Wire{-20000, -20000, -20000, -20000, -20000, 35600};
    QTest::newRow("--drift-pitch 1") << Wire{-20000, -19600, -20000, -20000, -19600, 16000};
    QTest::newRow("--pitch-offset 200") << Wire{-20000, -20000, -20000, -20000, 0, 16000};
    QTest::newRow("--angle-offset -200") << Wire{-32768, -32768, -32768, -32768, -32768, 16000};
}

void TestPodFaults::falsifiesAngles()
{
    QFETCH(Wire, expected);
    podsim::ReportFaults faults(optionsOf(QTest::currentDataTag()).faults);
    podsim::GcuReport report;
    const auto put = [&report](const Wire &values) {
        report.relativeX = qint16(values[0]);
        report.relativeY = qint16(values[1]);
        report.relativeZ = qint16(values[2]);
        report.absoluteRoll = qint16(values[3]);
        report.absolutePitch = qint16(values[4]);
        report.absoluteYaw = quint16(values[5]);
    };
    put({100, 200, 300, 400, 500, 600});
    faults.told(report, 0);
    put({-20000, -20000, -20000, -20000, -20000, 16000});
    faults.told(report, 2);
    const podsim::GcuReport r = faults.told(report, 4);
    QCOMPARE((Wire{r.relativeX, r.relativeY, r.relativeZ, r.absoluteRoll, r.absolutePitch,
                   r.absoluteYaw}),
             expected);
}

/// The generator's first numbers from 1 are 1791095845, 4282876139 and 3093770124, and the
/// milliseconds what is left of them after division by 60001.
void TestPodFaults::isLateAtRandom()
{
    podsim::PodFaults faults(optionsOf("--jitter 60000 --late 3:1000").faults);
    Wire late;
    for (int i = 0; i < 3; ++i)
        late.append(faults.take(kIdleAnswer).late);
    QCOMPARE(late, (Wire{5994, 4759, 59563}));
}

/// A tenth of a second at 150 degrees a second turns the gimbal by 15 degrees, or by so much of it.
void TestPodFaults::turnsSlowly()
{
    const std::pair<const char *, int> kRows[] = {{"--slow 1", 1500}, {"--slow 0.1", 150}};
    for (const auto &row : kRows) {
        podsim::PodContext context(optionsOf(row.first));
        podsim::HostFrame host;
        host.control = {0, 0, 9000, true};
        context.state.enter(podsim::PodMode::EulerControl);
        context.state.step(0.1, host);
        QCOMPARE(int(context.state.report().relativeZ), row.second);
    }
}

NACELLE_TEST_MAIN(TestPodFaults)
#include "tst_podfaults.moc"
