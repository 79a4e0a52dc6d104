#include "tests/support/strictmain.h"
#include "tools/podsim/podcommands.h"
#include "tools/podsim/podstate.h"

#include <QTest>

using podsim::Angles;
using podsim::GcuReport;
using podsim::HostFrame;
using podsim::PodMode;
using podsim::PodState;

Q_DECLARE_METATYPE(podsim::Angles)
Q_DECLARE_METATYPE(podsim::ControlInput)
Q_DECLARE_METATYPE(podsim::PodMode)

namespace {

constexpr int kLonger = 60; // steps of a tenth of a second, after which everything stands still

HostFrame frameWith(const Angles &attitude, const podsim::ControlInput &control)
{
    HostFrame host;
    host.inertialValid = true;
    host.attitude = attitude;
    host.hasPosition = true;
    host.position = {0, 0, 100};
    host.control = control;
    return host;
}

const HostFrame kStill = frameWith({0, 0, 0}, {});

void settle(PodState &pod, const HostFrame &host, int steps = kLonger)
{
    for (int i = 0; i < steps; ++i)
        pod.step(0.1, host);
}

void command(PodState &pod, const char *area)
{
    QCOMPARE(podsim::carryOut(pod, QByteArray::fromHex(area)), podsim::kSuccess);
}

/// Relative X, Y, Z and absolute roll, pitch, yaw, as they stand on the wire.
QVector<int> anglesOnWire(const PodState &pod)
{
    const GcuReport r = pod.report();
    return {r.relativeX, r.relativeY, r.relativeZ, r.absoluteRoll, r.absolutePitch, r.absoluteYaw};
}

} // namespace

class TestPodState : public QObject
{
    Q_OBJECT

private slots:
    void settlesAtAngles_data();
    void settlesAtAngles();
    void holdsAgainstCarrier_data();
    void holdsAgainstCarrier();
    void turnsAtRate_data();
    void turnsAtRate();
    void comesBackFromLimitAtOnce();
    void movesWithLimitedRate();
    void rateCountsForShortTimeOnly();
    void recentresInEveryMode_data();
    void recentresInEveryMode();
    void pointsAtPick_data();
    void pointsAtPick();
    void findsTarget_data();
    void findsTarget();
    void staresAtPlace();
    void trackingTellsMiss();
    void zooms_data();
    void zooms();
    void ignoresCarrierWithoutFlags();
};

void TestPodState::settlesAtAngles_data()
{
    QTest::addColumn<PodMode>("mode");
    QTest::addColumn<Angles>("carrier");
    QTest::addColumn<podsim::ControlInput>("control");
    QTest::addColumn<QVector<int>>("expected");
    const auto row = [](const char *name, PodMode mode, const Angles &carrier,
                        const podsim::ControlInput &control, const QVector<int> &expected) {
        QTest::newRow(name) << mode << carrier << control << expected;
    };
    row("angles", PodMode::AngleControl, {0, 0, 0}, {0, -2000, -1500, true},
        {0, -2000, -1500, 0, -2000, 34500});
    row("angles not valid", PodMode::AngleControl, {0, 0, 0}, {0, -2000, -1500, false},
        {0, 0, 0, 0, 0, 0});
    row("upper limits", PodMode::AngleControl, {0, 0, 0}, {0, 18000, 18000, true},
        {0, 3000, 17000, 0, 3000, 17000});
    row("lower limits, over the top", PodMode::AngleControl, {0, 0, 0}, {0, -18000, 0, true},
        {0, -12000, 0, 18000, -6000, 18000});
    row("roll limit", PodMode::Fpv, {0, 0, 0}, {-18000, 0, 0, true}, {-6000, 0, 0, -6000, 0, 0});
    row("angles go with the carrier", PodMode::AngleControl, {0, 0, 90}, {0, 0, 3000, true},
        {0, 0, 3000, 0, 0, 12000});
    row("Euler angles do not", PodMode::EulerControl, {0, 0, 90}, {0, 0, 12000, true},
        {0, 0, 3000, 0, 0, 12000});
    row("FPV rolls with the carrier", PodMode::Fpv, {10, 0, 0}, {}, {0, 0, 0, 1000, 0, 0});
    row("look down", PodMode::LookDown, {0, 0, 0}, {}, {0, -9000, 0, 0, -9000, 0});
    row("look down, nose up", PodMode::LookDown, {0, 5, 0}, {}, {0, -9500, 0, 0, -9000, 0});
    row("look down takes no control", PodMode::LookDown, {0, 0, 0}, {0, 0, 3000, true},
        {0, -9000, 0, 0, -9000, 0});
}

void TestPodState::settlesAtAngles()
{
    QFETCH(PodMode, mode);
    QFETCH(Angles, carrier);
    QFETCH(podsim::ControlInput, control);
    QFETCH(QVector<int>, expected);
    PodState pod;
    pod.enter(mode);
    settle(pod, frameWith(carrier, control));
    QCOMPARE(anglesOnWire(pod), expected);
}

void TestPodState::holdsAgainstCarrier_data()
{
    QTest::addColumn<PodMode>("mode");
    QTest::addColumn<Angles>("carrier");
    QTest::addColumn<QVector<int>>("expected");
    QTest::newRow("lock, carrier turns")
        << PodMode::Lock << Angles{0, 0, 40} << QVector<int>{0, 0, -4000, 0, 0, 0};
    QTest::newRow("lock, carrier turns too far")
        << PodMode::Lock << Angles{0, 0, 175} << QVector<int>{0, 0, -17000, 0, 0, 500};
    QTest::newRow("follow, carrier turns")
        << PodMode::Follow << Angles{0, 0, 40} << QVector<int>{0, 0, 0, 0, 0, 4000};
    QTest::newRow("follow, carrier climbs")
        << PodMode::Follow << Angles{0, 10, 0} << QVector<int>{0, -1000, 0, 0, 0, 0};
    QTest::newRow("follow, carrier rolls")
        << PodMode::Follow << Angles{20, 0, 0} << QVector<int>{-2000, 0, 0, 0, 0, 0};
    QTest::newRow("angle control, carrier turns")
        << PodMode::AngleControl << Angles{0, 0, 40} << QVector<int>{0, 0, 0, 0, 0, 4000};
}

void TestPodState::holdsAgainstCarrier()
{
    QFETCH(PodMode, mode);
    QFETCH(Angles, carrier);
    QFETCH(QVector<int>, expected);
    PodState pod;
    settle(pod, kStill);
    pod.enter(mode);
    settle(pod, frameWith(carrier, {}));
    QCOMPARE(anglesOnWire(pod), expected);
}

/// An input of 1500 is 15 degrees a second, at any zoom.
void TestPodState::turnsAtRate_data()
{
    QTest::addColumn<PodMode>("mode");
    QTest::addColumn<int>("pitch");
    QTest::addColumn<int>("yaw");
    QTest::addColumn<int>("steps");
    QTest::addColumn<QVector<int>>("expected");
    QTest::newRow("lock, right") << PodMode::Lock << 0 << 1500 << 20
                                 << QVector<int>{0, 0, 3000, 0, 0, 3000};
    QTest::newRow("lock, left") << PodMode::Lock << 0 << -1500 << 20
                                << QVector<int>{0, 0, -3000, 0, 0, 33000};
    QTest::newRow("follow, up") << PodMode::Follow << 1500 << 0 << 10
                                << QVector<int>{0, 1500, 0, 0, 1500, 0};
    QTest::newRow("follow, down to the ground")
        << PodMode::Follow << -1500 << 0 << 100 << QVector<int>{0, -9000, 0, 0, -9000, 0};
    QTest::newRow("not in stare") << PodMode::Stare << 1500 << 1500 << 20
                                  << QVector<int>{0, 0, 0, 0, 0, 0};
}

void TestPodState::turnsAtRate()
{
    QFETCH(PodMode, mode);
    QFETCH(int, pitch);
    QFETCH(int, yaw);
    QFETCH(int, steps);
    QFETCH(QVector<int>, expected);
    PodState pod;
    command(pod, "25 01 2C 01");
    pod.enter(mode);
    const auto control = podsim::ControlInput{0, qint16(pitch), qint16(yaw), true};
    settle(pod, frameWith({0, 0, 0}, control), steps);
    settle(pod, kStill);
    QCOMPARE(anglesOnWire(pod), expected);
}

void TestPodState::comesBackFromLimitAtOnce()
{
    PodState pod;
    pod.enter(PodMode::Lock);
    settle(pod, frameWith({0, 0, 0}, {0, 0, 1500, true}), 1000);
    QVERIFY(pod.report().relativeZ >= 16850 && pod.report().relativeZ <= 17000);
    const int atLimit = pod.report().relativeZ;
    settle(pod, frameWith({0, 0, 0}, {0, 0, -1500, true}), 20);
    settle(pod, kStill);
    QCOMPARE(int(pod.report().relativeZ), atLimit - 3000);
}

/// 150 degrees a second at most: from 0 towards 170 in half a second.
void TestPodState::movesWithLimitedRate()
{
    PodState pod;
    pod.enter(PodMode::AngleControl);
    const HostFrame turn = frameWith({0, 0, 0}, {0, 0, 18000, true});
    pod.step(0.0, turn);
    QCOMPARE(int(pod.report().relativeZ), 0);
    for (int i = 0; i < 5; ++i)
        pod.step(0.1, turn);
    QCOMPARE(int(pod.report().relativeZ), 7500);
    QCOMPARE(int(pod.report().rateZ), 1500);
}

void TestPodState::rateCountsForShortTimeOnly()
{
    PodState pod;
    pod.step(3600, frameWith({0, 0, 0}, {0, 0, 1500, true}));
    settle(pod, kStill);
    QCOMPARE(int(pod.report().relativeZ), 150);
}

void TestPodState::recentresInEveryMode_data()
{
    QTest::addColumn<QByteArray>("modeCommand");
    QTest::addColumn<PodMode>("mode");
    QTest::newRow("angle control") << QByteArray("10") << PodMode::AngleControl;
    QTest::newRow("lock") << QByteArray("11") << PodMode::Lock;
    QTest::newRow("follow") << QByteArray("12") << PodMode::Follow;
    QTest::newRow("look down") << QByteArray("13") << PodMode::LookDown;
    QTest::newRow("Euler control") << QByteArray("14") << PodMode::EulerControl;
    QTest::newRow("stare") << QByteArray("16") << PodMode::Stare;
    QTest::newRow("tracking") << QByteArray("17 01 01 88 13 88 13 88 13 88 13")
                              << PodMode::Tracking;
    QTest::newRow("FPV") << QByteArray("1C") << PodMode::Fpv;
}

void TestPodState::recentresInEveryMode()
{
    QFETCH(QByteArray, modeCommand);
    QFETCH(PodMode, mode);
    PodState pod;
    pod.enter(PodMode::AngleControl);
    settle(pod, frameWith({0, 0, 0}, {0, -2000, 3000, true}));
    command(pod, modeCommand.constData());
    settle(pod, kStill);
    command(pod, "03");
    settle(pod, kStill);
    QCOMPARE(anglesOnWire(pod), (QVector<int>{0, 0, 0, 0, 0, 0}));
    QCOMPARE(pod.motion.mode(), mode);
}

/// Camera 1 covers 60 degrees across at zoom 1. Its half height is atan(9/16 tan 30) = 17.99
/// degrees; at zoom 2 its half width is atan(tan 30 / 2) = 16.10 degrees.
void TestPodState::pointsAtPick_data()
{
    QTest::addColumn<PodMode>("mode");
    QTest::addColumn<QByteArray>("zoom");
    QTest::addColumn<QByteArray>("pick");
    QTest::addColumn<int>("pitch");
    QTest::addColumn<int>("yaw");
    const QByteArray wide = "25 01 0A 00";
    const QByteArray near = "25 01 14 00";
    const QByteArray centre = "1A 01 88 13 88 13";
    const QByteArray right = "1A 01 10 27 88 13";
    const QByteArray top = "1A 01 88 13 00 00";
    for (const PodMode mode : {PodMode::Lock, PodMode::Follow, PodMode::AngleControl}) {
        const int code = static_cast<int>(mode);
        QTest::addRow("centre, mode %x", code) << mode << wide << centre << 0 << 0;
        QTest::addRow("right, mode %x", code) << mode << wide << right << 0 << 3000;
        QTest::addRow("top, mode %x", code) << mode << wide << top << 1799 << 0;
        QTest::addRow("right at zoom 2, mode %x", code) << mode << near << right << 0 << 1610;
    }
}

void TestPodState::pointsAtPick()
{
    QFETCH(PodMode, mode);
    QFETCH(QByteArray, zoom);
    QFETCH(QByteArray, pick);
    QFETCH(int, pitch);
    QFETCH(int, yaw);
    PodState pod;
    settle(pod, kStill);
    pod.enter(mode);
    command(pod, zoom.constData());
    command(pod, pick.constData());
    settle(pod, kStill);
    QCOMPARE(int(pod.report().absolutePitch), pitch);
    QCOMPARE(int(pod.report().absoluteYaw), yaw);
    QCOMPARE(pod.motion.mode(), mode);
}

/// From 100 m up on the equator; a degree is 111319.4908 m. At -30 degrees the ground is 200 m
/// away, 173.205 m off, which is 0.0015559 degrees; at -1 degree it would be 5730 m away.
void TestPodState::findsTarget_data()
{
    QTest::addColumn<int>("pitch");
    QTest::addColumn<int>("yaw");
    QTest::addColumn<QVector<int>>("target"); // distance, longitude, latitude, altitude
    QTest::newRow("below") << -9000 << 0 << QVector<int>{1000, 0, 0, 0};
    QTest::newRow("north") << -3000 << 0 << QVector<int>{2000, 0, 15559, 0};
    QTest::newRow("west") << -3000 << -9000 << QVector<int>{2000, -15559, 0, 0};
    QTest::newRow("above the horizon") << 1000 << 0 << QVector<int>{0, 0, 0, 100000};
    QTest::newRow("too far") << -100 << 0 << QVector<int>{0, 0, 0, 100000};
}

void TestPodState::findsTarget()
{
    QFETCH(int, pitch);
    QFETCH(int, yaw);
    QFETCH(QVector<int>, target);
    PodState pod;
    pod.enter(PodMode::AngleControl);
    settle(pod, frameWith({0, 0, 0}, {0, qint16(pitch), qint16(yaw), true}));
    const GcuReport r = pod.report();
    QCOMPARE(
        (QVector<int>{r.targetDistance, r.targetLongitude, r.targetLatitude, r.targetAltitude}),
        target);
}

/// A place 100 m east and 100 m below, while the carrier turns and then flies over it.
void TestPodState::staresAtPlace()
{
    PodState pod;
    settle(pod, kStill);
    command(pod, "15 17 23 00 00 00 00 00 00 00 00 00 00"); // 0.0008983 degrees east
    settle(pod, frameWith({0, 0, 30}, {}));
    QCOMPARE(int(pod.report().mode), 0x16);
    QCOMPARE(int(pod.report().absolutePitch), -4500);
    QCOMPARE(int(pod.report().absoluteYaw), 9000);
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
    settle(pod, kStill);
    command(pod, "17 01 01 88 13 88 13 10 27 10 27");
    pod.step(0, kStill);
    QCOMPARE(int(pod.report().missHorizontal), 2500);
    QCOMPARE(int(pod.report().missVertical), 2500);
    settle(pod, kStill);
    QCOMPARE(int(pod.report().missHorizontal), 0);
    QCOMPARE(int(pod.report().missVertical), 0);
    QCOMPARE(int(pod.report().mode), 0x17);

    command(pod, "1B 01 C8 00 38 FF 01");
    QCOMPARE(int(pod.report().missHorizontal), 200);
    QCOMPARE(int(pod.report().missVertical), -200);
    command(pod, "17 01 00 00 00 00 00 00 00 00 00");
    QCOMPARE(int(pod.report().mode), 0x12);
    QCOMPARE(int(pod.report().missHorizontal), 0);
}

/// A factor of 2 in a second and a half.
void TestPodState::zooms_data()
{
    QTest::addColumn<QByteArray>("first");
    QTest::addColumn<QByteArray>("then");
    QTest::addColumn<int>("steps");
    QTest::addColumn<int>("zoom1");
    QTest::addColumn<int>("zoom2");
    QTest::newRow("in") << QByteArray("25 01 0A 00") << QByteArray("22 01") << 15 << 20 << 10;
    QTest::newRow("out") << QByteArray("25 01 50 00") << QByteArray("23 01") << 30 << 20 << 10;
    QTest::newRow("to the upper limits")
        << QByteArray("25 03 14 00") << QByteArray("22 03") << 200 << 300 << 80;
    QTest::newRow("to the lower limits")
        << QByteArray("25 03 14 00") << QByteArray("23 03") << 200 << 10 << 10;
    QTest::newRow("stopped") << QByteArray("22 01") << QByteArray("24 01") << 15 << 10 << 10;
}

void TestPodState::zooms()
{
    QFETCH(QByteArray, first);
    QFETCH(QByteArray, then);
    QFETCH(int, steps);
    QFETCH(int, zoom1);
    QFETCH(int, zoom2);
    PodState pod;
    command(pod, first.constData());
    command(pod, then.constData());
    settle(pod, kStill, steps);
    QCOMPARE(int(pod.report().zoom1), zoom1);
    QCOMPARE(int(pod.report().zoom2), zoom2);
}

void TestPodState::ignoresCarrierWithoutFlags()
{
    PodState pod;
    pod.enter(PodMode::Fpv);
    settle(pod, frameWith({0, 0, 20}, {}));
    HostFrame bare;
    settle(pod, bare);
    QCOMPARE(int(pod.report().absoluteYaw), 2000);
    QCOMPARE(int(pod.report().targetAltitude), 100000);
}

NACELLE_TEST_MAIN(TestPodState)
#include "tst_podstate.moc"
