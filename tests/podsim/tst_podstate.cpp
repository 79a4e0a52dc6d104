#include "tests/support/strictmain.h"
#include "tools/podsim/podcommands.h"
#include "tools/podsim/podstate.h"

using podsim::Angles;
using podsim::ControlInput;
using podsim::HostFrame;
using podsim::PodState;
using Mode = podsim::PodMode;
using Wire = QVector<int>;

/// A turn of the carrier or of the camera: until all stands still, or for a number of steps.
struct Turn
{
    Mode mode;
    Angles carrier;
    ControlInput control;
    int steps;
    Wire expected;
};
Q_DECLARE_METATYPE(Turn)

static HostFrame frameWith(const Angles &attitude, const ControlInput &control)
{
    HostFrame host;
    host.inertialValid = host.hasPosition = true;
    host.attitude = attitude;
    host.position = {0, 0, 100};
    host.control = control;
    return host;
}

static const HostFrame kStill = frameWith({0, 0, 0}, {});

/// Steps of a tenth of a second; after sixty everything stands still.
static void settle(PodState &pod, const HostFrame &host = kStill, int steps = 60)
{
    for (int i = 0; i < steps; ++i)
        pod.step(0.1, host);
}

static int command(PodState &pod, const QByteArray &area)
{
    return podsim::carryOut(pod, QByteArray::fromHex(area));
}

/// Relative X, Y, Z and absolute roll, pitch, yaw, as they stand on the wire.
static Wire anglesOnWire(const PodState &pod)
{
    const podsim::GcuReport r = pod.report();
    return {r.relativeX, r.relativeY, r.relativeZ, r.absoluteRoll, r.absolutePitch, r.absoluteYaw};
}

class TestPodState : public QObject
{
    Q_OBJECT

private slots:
    void carriesOut_data();
    void carriesOut();
    void turns_data();
    void turns();
    void comesBackFromLimitAtOnce();
    void movesWithLimitedRate();
    void recentresInEveryMode();
    void pointsAtPick_data();
    void pointsAtPick();
    void findsTarget_data();
    void findsTarget();
    void staresAtPlace();
    void trackingTellsMiss();
    void tracksWhatMoves();
    void zooms_data();
    void zooms();
    void ignoresCarrierWithoutFlags();
};

void TestPodState::carriesOut_data()
{
    QTest::addColumn<Wire>("expected"); // result and mode afterwards
    const auto row = [](const char *area, int result, int mode) {
        QTest::newRow(area) << Wire{result, mode};
    };
    row("10", 0, 0x10);
    row("11", 0, 0x11);
    row("13 AA BB", 0, 0x13); // longer than needed
    row("14", 0, 0x14);
    row("15 24 F2 DF 65 16 EE AA 16 A3 A0 00 00", 0, 0x16);
    row("15 24 F2 DF 65 16 EE AA 16 A3 A0 00", 1, 0x12); // cut short
    row("16", 0, 0x16);
    row("17 01 01 E8 03 D0 07 B8 0B A0 0F", 0, 0x17);
    row("17 01 00 00 00 00 00 00 00 00 00", 0, 0x12);
    row("1B 01 10 00 F0 FF 01", 0, 0x17);
    row("1C", 0, 0x1C);
    row("20", 1, 0x12);    // without its byte
    row("24 04", 1, 0x12); // no such camera
    row("33 01 01 88 13 88 13", 0, 0x12);
    row("99 01 02", 1, 0x12); // unknown
}

void TestPodState::carriesOut()
{
    QFETCH(Wire, expected);
    PodState pod;
    const int result = command(pod, QTest::currentDataTag());
    QCOMPARE((Wire{result, int(pod.motion.mode())}), expected);
}

void TestPodState::turns_data()
{
    QTest::addColumn<Turn>("turn");
    const auto row = [](const char *name, const Turn &turn) { QTest::newRow(name) << turn; };
    // clang-format off
    row("angles", {Mode(0x10), {}, {0, -2000, -1500, true}, 0, {0, -2000, -1500, 0, -2000, 34500}});
    row("not valid", {Mode(0x10), {}, {0, -2000, -1500, false}, 0, {0, 0, 0, 0, 0, 0}});
    row("upper", {Mode(0x10), {}, {0, 18000, 18000, true}, 0, {0, 3000, 17000, 0, 3000, 17000}});
    row("over", {Mode(0x10), {}, {0, -18000, 0, true}, 0, {0, -12000, 0, 18000, -6000, 18000}});
    row("roll limit", {Mode(0x1C), {}, {-18000, 0, 0, true}, 0, {-6000, 0, 0, -6000, 0, 0}});
    row("carried", {Mode(0x10), {0, 0, 90}, {0, 0, 3000, true}, 0, {0, 0, 3000, 0, 0, 12000}});
    row("Euler", {Mode(0x14), {0, 0, 90}, {0, 0, 12000, true}, 0, {0, 0, 3000, 0, 0, 12000}});
    row("FPV rolls", {Mode(0x1C), {10, 0, 0}, {}, 0, {0, 0, 0, 1000, 0, 0}});
    row("look down", {Mode(0x13), {0, 5, 0}, {0, 0, 3000, true}, 0, {0, -9500, 0, 0, -9000, 0}});
    row("lock holds", {Mode(0x11), {0, 0, 40}, {}, 0, {0, 0, -4000, 0, 0, 0}});
    row("lock at its limit", {Mode(0x11), {0, 0, 175}, {}, 0, {0, 0, -17000, 0, 0, 500}});
    row("follow turns", {Mode(0x12), {0, 0, 40}, {}, 0, {0, 0, 0, 0, 0, 4000}});
    row("follow holds pitch", {Mode(0x12), {0, 10, 0}, {}, 0, {0, -1000, 0, 0, 0, 0}});
    row("follow holds roll", {Mode(0x12), {20, 0, 0}, {}, 0, {-2000, 0, 0, 0, 0, 0}});
    row("rate left", {Mode(0x11), {}, {0, 0, -1500, true}, 20, {0, 0, -3000, 0, 0, 33000}});
    row("rate not valid", {Mode(0x11), {}, {0, 0, -1500, false}, 20, {0, 0, 0, 0, 0, 0}});
    row("rate up", {Mode(0x12), {}, {0, 1500, 0, true}, 10, {0, 1500, 0, 0, 1500, 0}});
    row("rate down", {Mode(0x12), {}, {0, -1500, 0, true}, 100, {0, -9000, 0, 0, -9000, 0}});
    row("no rate in stare", {Mode(0x16), {}, {0, 1500, 1500, true}, 20, {0, 0, 0, 0, 0, 0}});
    // clang-format on
}

void TestPodState::turns()
{
    QFETCH(Turn, turn);
    PodState pod;
    settle(pod);
    command(pod, "25 01 2C 01"); // a rate is the same at any zoom
    pod.enter(turn.mode);
    settle(pod, frameWith(turn.carrier, turn.control), turn.steps ? turn.steps : 60);
    if (turn.steps)
        settle(pod);
    QCOMPARE(anglesOnWire(pod), turn.expected);
}

void TestPodState::comesBackFromLimitAtOnce()
{
    PodState pod;
    pod.enter(Mode::Lock);
    settle(pod, frameWith({}, {0, 0, 1500, true}), 1000);
    const int atLimit = pod.report().relativeZ;
    QVERIFY(atLimit >= 16850 && atLimit <= 17000);
    settle(pod, frameWith({}, {0, 0, -1500, true}), 20);
    settle(pod);
    QCOMPARE(int(pod.report().relativeZ), atLimit - 3000);
}

/// 150 degrees a second at most; and a rate counts for a tenth of a second, however long a step is.
void TestPodState::movesWithLimitedRate()
{
    PodState pod;
    pod.enter(Mode::AngleControl);
    settle(pod, frameWith({}, {0, 0, 18000, true}), 5);
    QCOMPARE(int(pod.report().relativeZ), 7500);
    QCOMPARE(int(pod.report().rateZ), 1500);
    PodState late;
    late.step(3600, frameWith({}, {0, 0, 1500, true}));
    settle(late);
    QCOMPARE(int(late.report().relativeZ), 150);
}

void TestPodState::recentresInEveryMode()
{
    const char *const tracking = "17 01 01 88 13 88 13 88 13 88 13";
    for (const char *mode : {"10", "11", "12", "13", "14", "16", tracking, "1C"}) {
        PodState pod;
        pod.enter(Mode::AngleControl);
        settle(pod, frameWith({}, {0, -2000, 3000, true}));
        for (const char *area : {mode, "03"}) {
            QCOMPARE(command(pod, area), 0);
            settle(pod);
        }
        QCOMPARE(anglesOnWire(pod), Wire(6, 0));
        QCOMPARE(int(pod.motion.mode()), QByteArray(mode).left(2).toInt(nullptr, 16));
    }
}

/// Camera 1 covers 60 degrees across at zoom 1. Its half height is atan(9/16 tan 30) = 17.99
/// degrees; at zoom 2 its half width is atan(tan 30 / 2) = 16.10 degrees.
void TestPodState::pointsAtPick_data()
{
    QTest::addColumn<QByteArray>("zoom");
    QTest::addColumn<QByteArray>("pick");
    QTest::addColumn<Wire>("expected");
    const auto row = [](const char *zoom, const char *pick, int pitch, int yaw) {
        QTest::addRow("%s, %s", zoom, pick)
            << QByteArray(zoom) << QByteArray(pick) << Wire{pitch, yaw};
    };
    row("25 01 0A 00", "1A 01 88 13 88 13", 0, 0);
    row("25 01 0A 00", "1A 01 10 27 88 13", 0, 3000);
    row("25 01 0A 00", "1A 01 88 13 00 00", 1799, 0);
    row("25 01 14 00", "1A 01 10 27 88 13", 0, 1610);
}

void TestPodState::pointsAtPick()
{
    QFETCH(QByteArray, zoom);
    QFETCH(QByteArray, pick);
    QFETCH(Wire, expected);
    for (const Mode mode : {Mode::Lock, Mode::Follow, Mode::AngleControl}) {
        PodState pod;
        settle(pod);
        pod.enter(mode);
        command(pod, zoom);
        command(pod, pick);
        settle(pod);
        QCOMPARE(anglesOnWire(pod).mid(4), expected);
        QVERIFY(pod.motion.mode() == mode);
    }
}

/// From 100 m up on the equator; a degree is 111319.4908 m. At -30 degrees the ground is 200 m
/// away, 173.205 m off, which is 0.0015559 degrees; at -1 degree it would be 5730 m away.
void TestPodState::findsTarget_data()
{
    QTest::addColumn<Wire>("numbers"); // pitch, yaw; distance, longitude, latitude, altitude
    QTest::newRow("below") << Wire{-9000, 0, 1000, 0, 0, 0};
    QTest::newRow("north") << Wire{-3000, 0, 2000, 0, 15559, 0};
    QTest::newRow("west") << Wire{-3000, -9000, 2000, -15559, 0, 0};
    QTest::newRow("above the horizon") << Wire{1000, 0, 0, 0, 0, 100000};
    QTest::newRow("too far") << Wire{-100, 0, 0, 0, 0, 100000};
}

void TestPodState::findsTarget()
{
    QFETCH(Wire, numbers);
    PodState pod;
    pod.enter(Mode::AngleControl);
    settle(pod, frameWith({}, {0, qint16(numbers[0]), qint16(numbers[1]), true}));
    const podsim::GcuReport r = pod.report();
    QCOMPARE((Wire{r.targetDistance, r.targetLongitude, r.targetLatitude, r.targetAltitude}),
             numbers.mid(2));
}

/// A place 100 m east and 100 m below, while the carrier turns and then flies over it.
void TestPodState::staresAtPlace()
{
    PodState pod;
    settle(pod);
    command(pod, "15 17 23 00 00 00 00 00 00 00 00 00 00"); // 0.0008983 degrees east
    settle(pod, frameWith({0, 0, 30}, {}));
    QCOMPARE(anglesOnWire(pod).mid(4), (Wire{-4500, 9000}));
    QCOMPARE(int(pod.report().targetLongitude), 8983);
    HostFrame above = kStill;
    above.position = {0.0008983, 0, 100};
    settle(pod, above);
    QCOMPARE(int(pod.report().absolutePitch), -9000);
}

/// A box in the picture's lower right quarter: its middle at 7500 is 2500 off, until the camera
/// has come there. Ending it leaves follow mode.
void TestPodState::trackingTellsMiss()
{
    PodState pod;
    const auto told = [&pod] {
        const podsim::GcuReport r = pod.report();
        return Wire{r.mode, r.missHorizontal, r.missVertical};
    };
    settle(pod);
    command(pod, "17 01 01 88 13 88 13 10 27 10 27");
    pod.step(0, kStill);
    QCOMPARE(told(), (Wire{0x17, 2500, 2500}));
    settle(pod);
    QCOMPARE(told(), (Wire{0x17, 0, 0}));
    command(pod, "1B 01 C8 00 38 FF 01");
    QCOMPARE(told(), (Wire{0x17, 200, -200}));
    command(pod, "17 01 00 00 00 00 00 00 00 00 00");
    QCOMPARE(told(), (Wire{0x12, 0, 0}));
}

/// The car is seen at 3159, 6654, being 12 degrees to the left and 6 down; in 15 s it comes to 6
/// degrees to the left, where it turns. A click on its edge will do.
void TestPodState::tracksWhatMoves()
{
    for (const char *box : {"28 0A D4 17 74 0E 20 1C", "F3 0B FE 19 F3 0B FE 19"}) {
        PodState pod;
        command(pod, QByteArray("17 01 01 ") + box);
        const podsim::GcuReport r = pod.report();
        QCOMPARE((Wire{r.mode, r.missHorizontal, r.missVertical}), (Wire{0x17, -1841, 1654}));
        settle(pod, kStill, 150);
        QCOMPARE(anglesOnWire(pod).mid(4), (Wire{-600, 35400}));
        command(pod, "17 01 00 00 00 00 00 00 00 00 00");
        settle(pod, kStill, 150);
        QCOMPARE(anglesOnWire(pod).mid(4), (Wire{-600, 35400}));
    }
}

/// A factor of 2 in a second and a half.
void TestPodState::zooms_data()
{
    QTest::addColumn<QByteArray>("first");
    QTest::addColumn<Wire>("expected"); // steps, then the zooms of both cameras
    QTest::newRow("22 01") << QByteArray("25 01 0A 00") << Wire{15, 20, 10};
    QTest::newRow("23 01") << QByteArray("25 01 50 00") << Wire{30, 20, 10};
    QTest::newRow("22 03") << QByteArray("25 03 14 00") << Wire{200, 300, 80};
    QTest::newRow("23 03") << QByteArray("25 03 14 00") << Wire{200, 10, 10};
    QTest::newRow("24 01") << QByteArray("22 01") << Wire{15, 10, 10};
    QTest::newRow("25 02 E7 FF") << QByteArray("25 01 9B 00") << Wire{1, 155, 25}; // minus 25
    QTest::newRow("25 02 E8 03") << QByteArray("25 01 14 00") << Wire{1, 20, 80};
}

void TestPodState::zooms()
{
    QFETCH(QByteArray, first);
    QFETCH(Wire, expected);
    PodState pod;
    command(pod, first);
    command(pod, QTest::currentDataTag());
    settle(pod, kStill, expected[0]);
    QCOMPARE((Wire{pod.report().zoom1, pod.report().zoom2}), expected.mid(1));
}

void TestPodState::ignoresCarrierWithoutFlags()
{
    PodState pod;
    pod.enter(Mode::Fpv);
    settle(pod, frameWith({0, 0, 20}, {}));
    settle(pod, HostFrame());
    QCOMPARE(int(pod.report().absoluteYaw), 2000);
    QCOMPARE(int(pod.report().targetAltitude), 100000);
}

NACELLE_TEST_MAIN(TestPodState)
#include "tst_podstate.moc"
