#include "tests/support/strictmain.h"
#include "tools/podsim/picturestamp.h"
#include "tools/podsim/podcommands.h"
#include "tools/podsim/podpainter.h"
#include "tools/podsim/podstate.h"

#include <cmath>

using podsim::HostFrame;
using podsim::PodState;

Q_DECLARE_METATYPE(podsim::PickBox)

namespace {

constexpr QSize kSize(1280, 720);
constexpr QRgb kRed = 0xFFE01818;
constexpr QRgb kBlue = 0xFF1030E0;
constexpr QRgb kCar = 0xFF00E020;
constexpr QRgb kHotCar = 0xFFF2F2F2; // 75 degrees Celsius, white hot
constexpr QRgb kSky = 0xFF78A8D8;
constexpr QRgb kColdSky = 0xFF0C0C0C; // -15 degrees Celsius, white hot

/// A pod that has carried out commands, parted by semicolons.
PodState podAfter(const QByteArray &commands)
{
    PodState pod;
    for (const QByteArray &area : commands.split(';'))
        if (!area.isEmpty() && podsim::carryOut(pod, QByteArray::fromHex(area)) != 0)
            qFatal("not carried out: %s", area.constData());
    return pod;
}

/// A carrier that is rolled by so many degrees.
HostFrame rolled(double roll)
{
    HostFrame host;
    host.inertialValid = true;
    host.attitude = {roll, 0, 0};
    return host;
}

void settle(PodState &pod, const HostFrame &host = {}, int steps = 30)
{
    for (int i = 0; i < steps; ++i)
        pod.step(0.1, host);
}

QImage pictureOf(const PodState &pod)
{
    QImage picture(kSize, QImage::Format_RGB32);
    podsim::paintPicture(picture, pod, 1);
    return picture;
}

/// The middle of all that has one colour, in pick units.
QPointF placeOf(const PodState &pod, QRgb colour)
{
    const QImage picture = pictureOf(pod);
    QPointF sum;
    int count = 0;
    for (int y = 0; y < kSize.height(); ++y)
        for (int x = 0; x < kSize.width(); ++x)
            if (picture.pixel(x, y) == colour) {
                sum += QPointF((x + 0.5) / kSize.width(), (y + 0.5) / kSize.height());
                ++count;
            }
    return count == 0 ? QPointF(-1, -1) : sum / count * 10000;
}

/// Whether a place is nearer to the middle than 2 % of the picture's width.
bool isInTheMiddle(const QPointF &place)
{
    return std::hypot(place.x() - 5000, (place.y() - 5000) * 9 / 16) < 200;
}

QByteArray pickBytes(const QPointF &place)
{
    const int x = qRound(place.x());
    const int y = qRound(place.y());
    const char bytes[] = {char(x), char(x >> 8), char(y), char(y >> 8)};
    return QByteArray(bytes, 4).toHex();
}

} // namespace

class TestPodPicture : public QObject
{
    Q_OBJECT

private slots:
    void picksHitWhatIsSeen_data();
    void picksHitWhatIsSeen();
    void trackingKeepsTheCarInTheMiddle();
    void shows_data();
    void shows();
    void measures_data();
    void measures();
    void stampSurvivesScaling_data();
    void stampSurvivesScaling();
    void nothingIsNoStamp();
};

void TestPodPicture::picksHitWhatIsSeen_data()
{
    QTest::addColumn<QByteArray>("commands");
    QTest::addColumn<double>("roll");
    QTest::addColumn<QRgb>("colour");
    QTest::addColumn<QPointF>("direction"); // azimuth and elevation after 3 s, degrees
    const auto row = [](const char *name, const char *commands, double roll, QRgb colour,
                        const QPointF &direction) {
        QTest::newRow(name) << QByteArray(commands) << roll << colour << direction;
    };
    row("red", "", 0, kRed, {-20, 10});
    row("blue", "", 0, kBlue, {24, 13});
    row("zoomed", "25 01 0E 00", 0, kRed, {-20, 10});
    row("rolled", "1C", 25, kRed, {-20, 10});
    // The car's way to the right: 6 degrees times the sine of 18 degrees.
    row("thermal", "74 02", 0, kHotCar, {-10.146, -6});
    row("thermal, zoomed", "74 04;25 02 0C 00", 0, kHotCar, {-10.146, -6});
}

void TestPodPicture::picksHitWhatIsSeen()
{
    QFETCH(QByteArray, commands);
    QFETCH(double, roll);
    QFETCH(QRgb, colour);
    QFETCH(QPointF, direction);
    PodState pod = podAfter(commands);
    settle(pod, rolled(roll));
    const QPointF place = placeOf(pod, colour);
    QVERIFY(place.x() > 0);
    const podsim::Angles seen = podsim::anglesOf(pod.lineOfSight(place.x(), place.y()));
    QVERIFY2(std::hypot(seen.yaw - direction.x(), seen.pitch - direction.y()) < 0.1,
             qPrintable(QString("%1 %2").arg(seen.yaw).arg(seen.pitch)));
    podsim::carryOut(pod, QByteArray::fromHex("1A 01") + QByteArray::fromHex(pickBytes(place)));
    for (int i = 0; i < 10; ++i)
        pod.step(0.1, {});
    QVERIFY(isInTheMiddle(placeOf(pod, colour)));
}

/// For ten seconds from the end of the first one on, at zoom 4; then it drives away.
void TestPodPicture::trackingKeepsTheCarInTheMiddle()
{
    PodState pod = podAfter("17 01 01 28 0A D4 17 74 0E 20 1C;25 01 28 00");
    settle(pod, {}, 10);
    for (int second = 0; second < 10; ++second) {
        settle(pod, {}, 10);
        QVERIFY(isInTheMiddle(placeOf(pod, kCar)));
        const podsim::GcuReport report = pod.report();
        QVERIFY(std::abs(report.missHorizontal) < 100 && std::abs(report.missVertical) < 100);
    }
    QCOMPARE(podsim::carryOut(pod, QByteArray::fromHex("17 01 00 00 00 00 00 00 00 00 00")), 0);
    settle(pod, {}, 150);
    QVERIFY(!isInTheMiddle(placeOf(pod, kCar)));
}

void TestPodPicture::shows_data()
{
    QTest::addColumn<QPoint>("pixel");
    QTest::addColumn<QRgb>("colour");
    const auto row = [](const char *commands, const QPoint &pixel, QRgb colour) {
        QTest::newRow(commands) << pixel << colour;
    };
    const QPoint main(500, 300);
    const QPoint inset(880, 100);
    row("74 01", main, kSky);
    row("74 01;74 01", inset, kSky);
    row("74 02", main, kColdSky);
    row("74 02;74 02", inset, kColdSky);
    row("74 03", main, kSky);
    row("74 03;74 03", inset, kColdSky);
    row("74 04", main, kColdSky);
    row("74 04;74 04", inset, kSky);
    row("74 02;2A 02 01", main, 0xFFF2F2F2);
    row("74 02;2A 02 02", main, 0xFF100036);
    row("74 02;2A 02 03", main, 0xFF0023C6);
    row("74 02;2A 02 04", main, kColdSky);
    row("2B 01 01", main, 0xFF1AAB1A);
    row("2B 01 01;74 02", main, kColdSky);
    row("73 01", {670, 360}, 0xFFFFFFFF); // the crosshair
    row("73 00;25 01 0A 00", {20, 24}, kSky);
    row("73 01;25 01 0A 00", {20, 24}, 0xFFFFFFFF); // the text's first letter
    row("33 01 01 C4 09 C4 09", {320, 180}, 0xFFFF40FF);
    row("33 01 01 C4 09 C4 09;33 01 00 00 00 00 00", {320, 180}, kSky);
    row("30 01 01 C4 09 C4 09 88 13 A0 0F", {320, 230}, 0xFFFF40FF);
    row("30 01 01 C4 09 C4 09 88 13 A0 0F;73 00", {500, 180}, 0xFFFF40FF);
    row("17 01 01 28 0A D4 17 74 0E 20 1C", {404 - 48, 479}, 0xFFFF40FF); // round the car
    row("75 01", {404 - 48, 479}, 0xFFFFFFFF);
}

void TestPodPicture::shows()
{
    QFETCH(QPoint, pixel);
    QFETCH(QRgb, colour);
    const QImage picture = pictureOf(podAfter(QTest::currentDataTag()));
    QCOMPARE(QColor(picture.pixel(pixel)).name(), QColor(colour).name());
}

/// Degrees Celsius in a box of the first picture.
void TestPodPicture::measures_data()
{
    QTest::addColumn<podsim::PickBox>("box");
    QTest::addColumn<double>("temperature");
    const auto row = [](const char *name, const podsim::PickBox &box, double temperature) {
        QTest::newRow(name) << box << temperature;
    };
    row("on red", {1848, 2111, 1848, 2111}, 60);
    row("on its edge", {1970, 2111, 1970, 2111}, 60);
    row("beside it", {2200, 2111, 2200, 2111}, -15);
    row("ground", {4000, 6000, 4100, 6100}, 15);
    row("on blue, colder than the air behind other marks", {8856, 1109, 8856, 1109}, -5);
    row("red and yellow", {1500, 1000, 5500, 2500}, 60);
    row("from the other corner", {5500, 2500, 1500, 1000}, 60);
}

void TestPodPicture::measures()
{
    QFETCH(podsim::PickBox, box);
    QTEST(PodState().temperatureIn(box), "temperature");
}

void TestPodPicture::stampSurvivesScaling_data()
{
    QTest::addColumn<QSize>("from");
    QTest::addColumn<QSize>("to");
    QTest::newRow("as it is") << kSize << kSize;
    QTest::newRow("half") << kSize << QSize(640, 360);
    QTest::newRow("odd") << kSize << QSize(1165, 655);
    QTest::newRow("small") << kSize << QSize(320, 180);
    QTest::newRow("larger") << QSize(640, 360) << QSize(1600, 900);
}

void TestPodPicture::stampSurvivesScaling()
{
    QFETCH(QSize, from);
    QFETCH(QSize, to);
    QImage picture(from, QImage::Format_RGB32);
    podsim::paintPicture(picture, PodState(), 1);
    podsim::writeStamp(picture, {0xFEDC0A55, 0x1234F00F});
    const auto stamp =
        podsim::readStamp(picture.scaled(to, Qt::IgnoreAspectRatio, Qt::SmoothTransformation));
    QVERIFY(stamp.has_value());
    QCOMPARE(stamp->milliseconds, 0xFEDC0A55U);
    QCOMPARE(stamp->number, 0x1234F00FU);
}

void TestPodPicture::nothingIsNoStamp()
{
    QImage picture = pictureOf(PodState());
    QVERIFY(!podsim::readStamp(picture).has_value());
    QVERIFY(!podsim::readStamp(QImage()).has_value());
    podsim::writeStamp(picture, {1, 2});
    const QRect block(0, 688, 32, 16); // the first bit of the time, which is 0
    for (int x = block.left(); x <= block.right(); ++x)
        for (int y = block.top(); y <= block.bottom(); ++y)
            picture.setPixel(x, y, 0xFFFFFFFF);
    QVERIFY(!podsim::readStamp(picture).has_value());
    picture.fill(Qt::black);
    QVERIFY(!podsim::readStamp(picture).has_value());
}

NACELLE_TEST_MAIN(TestPodPicture)
#include "tst_podpicture.moc"
