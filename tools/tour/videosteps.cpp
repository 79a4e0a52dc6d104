#include "foundation/QGlobal.h"
#include "protocol/codec.h"
#include "tools/tour/consolehand.h"
#include "tools/tour/marks.h"
#include "tools/tour/tour.h"

#include <QComboBox>
#include <QElapsedTimer>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QWindow>

namespace tour {

namespace {

constexpr int kHoldMs = 4000;
constexpr int kHalfBox = 40;      // pixels
constexpr int kReadingSpan = 150; // parts of 10000
const QPointF kCentre(0.5, 0.5);
// Where marks are seen when the pod looks north and level.
const QPointF kYellowAhead(0.5, 0.1446);
const QPointF kBlueAhead(0.8856, 0.1109);
// What is measured: all of the sky between the marks.
const QRectF kMeasuredArea(0.25, 0.3, 0.1, 0.1);
const QRectF kAroundMeasured(0.2, 0.25, 0.25, 0.25);

QWidget *part(Tour &tour, const char *name)
{
    return findWidget(tour.dialog("videoFrom"), name);
}

QWidget *surface(Tour &tour)
{
    return part(tour, "vlc");
}

QImage seen(Tour &tour)
{
    return surface(tour)->grab().toImage();
}

QPoint onSurface(Tour &tour, const QPointF &place)
{
    const QSize size = surface(tour)->size();
    return {int(place.x() * size.width()), int(place.y() * size.height())};
}

void awaitAt(Tour &tour, const QString &what, const QColor &colour, const QPointF &place)
{
    await(QStringLiteral("%1 is seen at its place").arg(what),
          [&] { return isAt(seen(tour), colour, place); });
}

void awaitAhead(Tour &tour)
{
    awaitAt(tour, QStringLiteral("the yellow mark"), kYellowMark, kYellowAhead);
    awaitAt(tour, QStringLiteral("the blue mark"), kBlueMark, kBlueAhead);
}

void follow(Tour &tour)
{
    enterMode(tour, "pushButton_follow", "command 0x12");
}

void recentre(Tour &tour)
{
    giveCommand(tour, "pushButton_mid", "command 0x03");
}

void makeReady(Tour &tour)
{
    auto *runs = tour.page<QComboBox>("comboBox");
    openList(runs);
    takeFromList(runs, translated("默认模式"));
    startRun(tour);
    follow(tour);
    recentre(tour);
    giveCommand(tour, "pushButton_ratio", "command 0x25 zoom to camera=1 tenths=-10");
    stopRun(tour);
    click(tour.panel("pushButton_Clear"));
}

void openVideo(Tour &tour)
{
    click(tour.page("pushButton_video"));
    await(QStringLiteral("the window has its title"),
          [&tour] { return tour.dialog("videoFrom")->windowTitle() == translated("视频"); });
}

void play(Tour &tour)
{
    type(part(tour, "lineEdit"), tour.pod().streamAddress());
    click(part(tour, "pushButton_Refresh"));
    awaitAhead(tour);
}

int reading(Tour &tour, const char *label)
{
    return find<QLabel>(tour.dialog("videoFrom"), label)->text().toInt();
}

void pickPoint(Tour &tour, const QPointF &place)
{
    clickAt(surface(tour), onSurface(tour, place));
    await(QStringLiteral("the read-outs show the point"), [&] {
        return qAbs(reading(tour, "label_X0") - place.x() * 10000) < kReadingSpan &&
               qAbs(reading(tour, "label_Y0") - place.y() * 10000) < kReadingSpan;
    });
}

/// Drags a box; a picture shows it before it is let go.
void pickBox(Tour &tour, const QPoint &from, const QPoint &to)
{
    pressAt(surface(tour), from);
    moveTo(surface(tour), to);
    tour.takePicture("drag", Shown::VideoWindow);
    releaseAt(surface(tour), to);
    await(QStringLiteral("the read-outs show both corners"), [&tour] {
        return reading(tour, "label_X1") > reading(tour, "label_X0") &&
               reading(tour, "label_Y1") > reading(tour, "label_Y0");
    });
}

/// Presses a button of the window; a frame goes out whose command begins with `digits` and has
/// that many of the read-outs after them, and the pod takes it.
void command(Tour &tour, const char *button, QString digits, int values)
{
    const char *const labels[] = {"label_X0", "label_Y0", "label_X1", "label_Y1"};
    const QString told = QStringLiteral("command 0x") + digits.left(2);
    const int mark = tour.podMark(told);
    for (int i = 0; i < values; ++i)
        digits += hexDigits(encodeU16(quint16(reading(tour, labels[i]))));
    click(part(tour, button));
    tour.awaitSent(QStringLiteral("a frame carries %1").arg(digits), kCommandDigit, digits);
    tour.awaitPod(told, mark);
}

void pickMark(Tour &tour)
{
    click(part(tour, "pushButton_Pointing"));
    pickPoint(tour, placeOf(seen(tour), kBlueMark));
}

void centreMark(Tour &tour)
{
    command(tour, "pushButton_Send", QStringLiteral("1A01"), 2);
    awaitAt(tour, QStringLiteral("the blue mark"), kBlueMark, kCentre);
}

void lookAheadAgain(Tour &tour)
{
    startRun(tour);
    recentre(tour);
    stopRun(tour);
    awaitAhead(tour);
}

void frameCar(Tour &tour)
{
    click(part(tour, "pushButton_Tracking"));
    const QPoint car = onSurface(tour, placeOf(seen(tour), kCar));
    const QPoint half(kHalfBox, kHalfBox);
    pickBox(tour, car - half, car + half);
}

void holdCar(Tour &tour)
{
    command(tour, "pushButton_Send", QStringLiteral("170101"), 4);
    awaitAt(tour, QStringLiteral("the car"), kCar, kCentre);
    QElapsedTimer held;
    held.start();
    await(QStringLiteral("time passes"), [&] {
        if (!isAt(seen(tour), kCar, kCentre))
            throw TourFailure(QStringLiteral("the car leaves the middle while it is tracked"));
        return held.elapsed() > kHoldMs;
    });
}

void leaveCar(Tour &tour)
{
    command(tour, "pushButton_Quit", QStringLiteral("170100"), 4);
    await(QStringLiteral("the car goes its way"),
          [&tour] { return !isAt(seen(tour), kCar, kCentre); });
}

void turnByHand(Tour &tour)
{
    startRun(tour);
    recentre(tour);
    awaitAhead(tour);
    enterMode(tour, "pushButton_lock", "command 0x11");
    holdYawSlider(tour);
    await(QStringLiteral("the scene passes to the left"), [&tour] {
        const QPointF blue = placeOf(seen(tour), kBlueMark);
        return blue.x() < kBlueAhead.x() - 0.2;
    });
    tour.takePicture("video", Shown::VideoWindow);
}

void endTurn(Tour &tour)
{
    releaseYawSlider(tour);
    follow(tour);
    recentre(tour);
    stopRun(tour);
    awaitAhead(tour);
}

void awaitMeasured(Tour &tour, bool isMeasured)
{
    await(isMeasured ? QStringLiteral("the temperature stands in the picture")
                     : QStringLiteral("the temperature is gone"),
          [&] { return (countOf(seen(tour), kMeasured, kAroundMeasured) > 20) == isMeasured; });
}

void measureArea(Tour &tour)
{
    click(part(tour, "pushButton_Region"));
    pickBox(tour, onSurface(tour, kMeasuredArea.topLeft()),
            onSurface(tour, kMeasuredArea.bottomRight()));
    command(tour, "pushButton_Send", QStringLiteral("300101"), 4);
    awaitMeasured(tour, true);
}

void endArea(Tour &tour)
{
    command(tour, "pushButton_Quit", QStringLiteral("300100"), 4);
    awaitMeasured(tour, false);
}

void measureSpot(Tour &tour)
{
    click(part(tour, "pushButton_Cursor"));
    pickPoint(tour, kMeasuredArea.center());
    command(tour, "pushButton_Send", QStringLiteral("330101"), 2);
    awaitMeasured(tour, true);
}

void endSpot(Tour &tour)
{
    command(tour, "pushButton_Quit", QStringLiteral("330100"), 2);
    awaitMeasured(tour, false);
}

/// The four arrangements: which part of the picture the thermal camera fills, which is grey.
struct Arrangement
{
    const char *digits;
    bool isThermal;
    bool isInsetThermal;
};
constexpr Arrangement kArrangements[] = {
    {"7401", false, false}, {"7402", true, true}, {"7403", false, true}, {"7404", true, false}};

template <int Index>
void arrange(Tour &tour)
{
    const Arrangement &wanted = kArrangements[Index];
    command(tour, "pushButton_Switch", QLatin1String(wanted.digits), 0);
    await(QStringLiteral("the cameras are arranged so"), [&] {
        const QImage picture = seen(tour);
        return isGrey(picture, {0.05, 0.6, 0.4, 0.35}) == wanted.isThermal &&
               isGrey(picture, {0.68, 0.06, 0.26, 0.26}) == wanted.isInsetThermal;
    });
}

void awaitButtons(Tour &tour, bool areEnabled)
{
    for (const char *name :
         {"pushButton_Send", "pushButton_Quit", "pushButton_Switch", "pushButton_Refresh"})
        await(QStringLiteral("%1 is switched").arg(QLatin1String(name)),
              [&] { return part(tour, name)->isEnabled() == areEnabled; });
}

void leavePage(Tour &tour)
{
    click(findWidget(tour.window(), "pushButton_1"));
    awaitButtons(tour, false);
}

void comeBack(Tour &tour)
{
    click(findWidget(tour.window(), "pushButton_2"));
    awaitButtons(tour, true);
    arrange<0>(tour);
}

void closeVideo(Tour &tour)
{
    QWidget *window = tour.dialog("videoFrom");
    window->windowHandle()->close();
    await(QStringLiteral("the window is closed"), [window] { return !window->isVisible(); });
}

void playAgain(Tour &tour)
{
    openVideo(tour);
    play(tour);
}

} // namespace

QVector<Step> videoSteps()
{
    constexpr Shown video = Shown::VideoWindow;
    return {
        {"pod-ahead", "The pod looks straight ahead, its first camera as wide as it goes",
         "吊舱回中，1号相机调到最小倍率", makeReady},
        {"video", "The video window opens", "打开视频窗口", openVideo},
        {"picture-plays", "The pod's address is typed and played; its picture comes",
         "输入吊舱的视频地址并播放，出现图像", play, video},
        {"point-picked", "A mark is clicked; the read-outs show the point",
         "点击图像中的标志，显示其坐标", pickMark, video},
        {"point-centred", "The point is sent; the pod brings it to the middle",
         "发送指点坐标，吊舱将该点移到画面中心", centreMark, video},
        {"ahead-again", "The console recentres the pod", "控制台使吊舱回中", lookAheadAgain, video},
        {"target-framed", "A box is dragged over the moving car", "拖动鼠标框选移动的车辆",
         frameCar, video},
        {"target-held", "The box is sent; the pod holds the car in the middle",
         "发送跟踪坐标，吊舱将车辆保持在画面中心", holdCar, video},
        {"target-left", "Tracking is ended; the car goes its way", "退出跟踪，车辆离开画面中心",
         leaveCar, video},
        {"turned-by-hand", "A rate slider of the console turns the locked pod; the video shows it",
         "锁定模式下按住角速率滑块，视频随之转动", turnByHand, Shown::MainWindow},
        {"turn-ended", "The slider springs back; the pod looks ahead again",
         "松开滑块，吊舱再次回中", endTurn, video},
        {"area-measured", "A box is dragged and sent; the pod measures its temperature",
         "框选区域并发送，吊舱测量区域温度", measureArea, video},
        {"area-ended", "The measurement is ended", "退出区域测温", endArea, video},
        {"spot-measured", "A point is clicked and sent; the pod measures its temperature",
         "点击并发送，吊舱测量该点温度", measureSpot, video},
        {"spot-ended", "The measurement is ended", "退出光标测温", endSpot, video},
        {"pip-1", "Picture-in-picture, first press: the first camera alone",
         "画中画第一次切换：仅1号相机", arrange<0>, video},
        {"pip-2", "Second press: the thermal camera alone", "第二次切换：仅热像相机", arrange<1>,
         video},
        {"pip-3", "Third press: the thermal camera in the corner", "第三次切换：热像在角上",
         arrange<2>, video},
        {"pip-4", "Fourth press: the first camera in the corner", "第四次切换：1号相机在角上",
         arrange<3>, video},
        {"page-left", "The other page takes the video's commands away",
         "切换到数据包解析页，视频命令按钮停用", leavePage},
        {"page-back", "The console gives them back", "回到流程解析页，按钮恢复", comeBack},
        {"video-closed", "The video window is closed", "关闭视频窗口", closeVideo},
        {"video-again", "And opened again; the picture comes again", "再次打开，图像再次出现",
         playAgain, video},
    };
}

} // namespace tour
