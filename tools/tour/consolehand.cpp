#include "tools/tour/consolehand.h"

#include "foundation/QGlobal.h"
#include "protocol/codec.h"
#include "tools/tour/tour.h"

#include <QPushButton>
#include <QSlider>
#include <QStyle>
#include <QStyleOptionSlider>
#include <QTest>

namespace tour {

namespace {

constexpr int kFlagDigit = 11 * 2;
constexpr int kNextPressMs = 500;

QPoint handleOf(QSlider *slider)
{
    QStyleOptionSlider option;
    option.initFrom(slider);
    option.minimum = slider->minimum();
    option.maximum = slider->maximum();
    option.sliderPosition = slider->sliderPosition();
    option.sliderValue = slider->value();
    option.subControls = QStyle::SC_All;
    option.state |= QStyle::State_Horizontal;
    return slider->style()
        ->subControlRect(QStyle::CC_Slider, &option, QStyle::SC_SliderHandle, slider)
        .center();
}

/// Until then an answer still on its way would clear what is pressed next.
void awaitIdle(Tour &tour)
{
    tour.awaitSent(QStringLiteral("frames are idle again"), kCommandDigit, QStringLiteral("00"));
}

} // namespace

bool isChecked(Tour &tour, const char *button)
{
    return tour.page<QPushButton>(button)->isChecked();
}

void startRun(Tour &tour)
{
    click(tour.page("pushButton_start"));
    tour.awaitPageText("pushButton_start", translated("停止"));
}

void stopRun(Tour &tour)
{
    click(tour.page("pushButton_start"));
    tour.awaitPageText("pushButton_start", translated("启动"));
    int sent = -1;
    await(QStringLiteral("no more frames go out"), [&tour, &sent] {
        const int before = sent;
        sent = tour.logged("发").size();
        return sent == before;
    });
}

void giveCommand(Tour &tour, const char *button, const char *command)
{
    const int mark = tour.podMark(QLatin1String(command));
    click(tour.page(button));
    tour.awaitPod(QLatin1String(command), mark);
    awaitIdle(tour);
}

/// A report that comes in before the next frame goes out checks the old mode's button again: the
/// press is lost then, and the operator presses once more.
void enterMode(Tour &tour, const char *button, const char *command)
{
    const int mark = tour.podMark(QLatin1String(command));
    const auto isTaken = [&] { return tour.podMark(QLatin1String(command)) > mark; };
    await(QStringLiteral("the pod says \"%1\"").arg(QLatin1String(command)), [&] {
        click(tour.page(button));
        return QTest::qWaitFor(isTaken, kNextPressMs);
    });
    awaitIdle(tour);
    await(QStringLiteral("the button of the reported mode is checked"),
          [&] { return isChecked(tour, button); });
}

void holdYawSlider(Tour &tour)
{
    auto *slider = tour.page<QSlider>("horizontalSlider1");
    const QPoint handle = handleOf(slider);
    pressAt(slider, handle);
    moveTo(slider, handle + QPoint(slider->width() / 4, 0));
    await(QStringLiteral("the slider follows the mouse"), [slider] { return slider->value() > 0; });
    tour.awaitSent(QStringLiteral("frames say that control inputs are valid"), kFlagDigit,
                   QStringLiteral("05"));
    tour.awaitSent(QStringLiteral("frames carry the yaw rate"), kYawDigit,
                   hexDigits(encodeU16(quint16(slider->value()))));
}

void releaseYawSlider(Tour &tour)
{
    auto *slider = tour.page<QSlider>("horizontalSlider1");
    releaseAt(slider, handleOf(slider));
    await(QStringLiteral("the slider springs back"), [slider] { return slider->value() == 0; });
}

} // namespace tour
