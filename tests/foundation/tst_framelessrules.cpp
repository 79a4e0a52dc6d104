#include "foundation/framelessrules.h"
#include "tests/support/strictmain.h"

namespace {

/// A window of 200 x 100 with a title bar of 200 x 30.
HitLayout layout()
{
    return {{200, 100}, 8, true, {0, 0, 200, 30}, nullptr};
}

} // namespace

class tst_framelessrules : public QObject
{
    Q_OBJECT

private slots:
    void edges_data();
    void edges();
    void titleBar_data();
    void titleBar();
    void messages_data();
    void messages();
    void hitPoints_data();
    void hitPoints();
};

void tst_framelessrules::edges_data()
{
    QTest::addColumn<QPoint>("point");
    QTest::addColumn<int>("zone");
    QTest::addColumn<int>("edges");
    QTest::newRow("top left") << QPoint(3, 3) << 13 << 3;
    QTest::newRow("last of the top left") << QPoint(7, 7) << 13 << 3;
    QTest::newRow("top beside the corner") << QPoint(8, 7) << 12 << 1;
    QTest::newRow("left below the corner") << QPoint(7, 8) << 10 << 2;
    QTest::newRow("left") << QPoint(3, 50) << 10 << 2;
    QTest::newRow("left bound is inside") << QPoint(8, 50) << 0 << 0;
    QTest::newRow("right bound is inside") << QPoint(192, 50) << 0 << 0;
    QTest::newRow("right") << QPoint(193, 50) << 11 << 4;
    QTest::newRow("bottom bound is inside") << QPoint(100, 92) << 0 << 0;
    QTest::newRow("bottom") << QPoint(100, 93) << 15 << 8;
    QTest::newRow("top right") << QPoint(193, 7) << 14 << 5;
    QTest::newRow("bottom left") << QPoint(7, 93) << 16 << 10;
    QTest::newRow("bottom right") << QPoint(193, 93) << 17 << 12;
    QTest::newRow("outside on the left") << QPoint(-500, 50) << 10 << 2;
}

void tst_framelessrules::edges()
{
    QFETCH(QPoint, point);
    const HitZone zone = hitZone(point, layout());
    QTEST(int(zone), "zone");
    QTEST(int(edgesOf(zone)), "edges");
}

void tst_framelessrules::titleBar_data()
{
    QTest::addColumn<QPoint>("point");
    QTest::addColumn<bool>("resizeEnable");
    QTest::addColumn<QByteArray>("child");
    QTest::addColumn<int>("zone");
    const QByteArray button("QPushButton");
    QTest::newRow("bare") << QPoint(50, 8) << true << QByteArray() << 2;
    QTest::newRow("label") << QPoint(50, 8) << true << QByteArray("QLabel") << 2;
    QTest::newRow("button") << QPoint(50, 8) << true << button << 0;
    QTest::newRow("class derived from a button")
        << QPoint(50, 8) << true << QByteArray("CloseButton") << 2;
    QTest::newRow("edge before the button") << QPoint(50, 7) << true << button << 12;
    QTest::newRow("edge that doesn't resize") << QPoint(3, 3) << false << QByteArray() << 2;
    QTest::newRow("button at such an edge") << QPoint(3, 3) << false << button << 0;
    QTest::newRow("last row") << QPoint(50, 29) << true << QByteArray() << 2;
    QTest::newRow("below") << QPoint(50, 30) << true << QByteArray() << 0;
}

void tst_framelessrules::titleBar()
{
    QFETCH(QPoint, point);
    QFETCH(bool, resizeEnable);
    QFETCH(QByteArray, child);
    HitLayout bar = layout();
    bar.resizeEnable = resizeEnable;
    bar.titleChild = child.isEmpty() ? nullptr : child.constData();
    QTEST(int(hitZone(point, bar)), "zone");
}

void tst_framelessrules::messages_data()
{
    QTest::addColumn<quint32>("message");
    QTest::addColumn<quint64>("wParam");
    QTest::addColumn<int>("action");
    const auto row = [](const char *name, quint32 message, quint64 wParam, MessageAction action) {
        QTest::newRow(name) << message << wParam << int(action);
    };
    row("client area", 0x83, 18, MessageAction::TakeWholeArea);
    row("hit test", 0x84, 18, MessageAction::HitTest);
    row("system key down", 0x104, 18, MessageAction::Pass);
    row("system key up", 0x105, 18, MessageAction::Pass);
    row("suspend", 0x218, 4, MessageAction::Minimise);
    row("another message with its number", 0x100, 4, MessageAction::Pass);
    row("resume", 0x218, 18, MessageAction::Restore);
    row("any message with that number", 0x100, 18, MessageAction::Restore);
    row("other", 0x218, 10, MessageAction::Pass);
}

void tst_framelessrules::messages()
{
    QFETCH(quint32, message);
    QFETCH(quint64, wParam);
    QTEST(int(messageAction(message, wParam)), "action");
}

void tst_framelessrules::hitPoints_data()
{
    QTest::addColumn<qint64>("lParam");
    QTest::addColumn<QPoint>("point");
    QTest::newRow("low word is x") << qint64(0x00020001) << QPoint(1, 2);
    QTest::newRow("a screen on the left and above") << qint64(0xFFFEFFFF) << QPoint(-1, -2);
    QTest::newRow("widened with its sign") << qint64(-1) << QPoint(-1, -1);
}

void tst_framelessrules::hitPoints()
{
    QFETCH(qint64, lParam);
    QTEST(hitPoint(lParam), "point");
}

NACELLE_TEST_MAIN(tst_framelessrules)
#include "tst_framelessrules.moc"
