#include "foundation/QGlobal.h"
#include "tools/tour/consolehand.h"
#include "tools/tour/tour.h"

#include <QComboBox>
#include <QPlainTextEdit>
#include <QPushButton>

namespace tour {

namespace {

void openConsole(Tour &tour)
{
    click(find<QPushButton>(tour.window(), "pushButton_2"));
    await(QStringLiteral("the console is in front"),
          [&tour] { return tour.window()->findChild<QWidget *>("pushButton_start"); });
    tour.awaitPageText("pushButton_start", translated("启动"));
    tour.awaitPanelText("pushButton_Switch", translated("数据解析"));
}

void run(Tour &tour)
{
    startRun(tour);
    tour.awaitLogged("发", 5);
    tour.awaitLogged("收", 5);
    await(QStringLiteral("the pod reports that it follows"), [&tour] {
        return isChecked(tour, "pushButton_follow") && tour.page("widget_14")->height() > 0;
    });
}

void takePhoto(Tour &tour)
{
    releaseYawSlider(tour);
    giveCommand(tour, "pushButton_photo", "command 0x20");
    await(QStringLiteral("the answer clears the selection"),
          [&tour] { return !isChecked(tour, "pushButton_photo"); });
}

void lock(Tour &tour)
{
    enterMode(tour, "pushButton_lock", "command 0x11");
}

void followAgain(Tour &tour)
{
    enterMode(tour, "pushButton_follow", "command 0x12");
}

void changeMode(Tour &tour)
{
    click(tour.page("pushButton_euler"));
    await(QStringLiteral("the pod reports Euler angle control"), [&tour] {
        return isChecked(tour, "pushButton_euler") && tour.page("widget_3")->height() > 0 &&
               tour.page("widget_14")->height() == 0;
    });
    type(tour.page("lineEdit_312"), QStringLiteral("-1500"));
    tour.awaitSent(QStringLiteral("frames carry the yaw input"), kYawDigit,
                   QStringLiteral("24FA05"));
}

/// Whether the group in front is the one that is selected in the log.
bool isGroupSelected(Tour &tour)
{
    const QString command = tour.pageText("label294").remove(' ');
    const QString crc = tour.pageText("label304").remove(' ');
    const QString selected = tour.panel<QPlainTextEdit>("textEdit")->textCursor().selectedText();
    return !command.isEmpty() && selected.contains(command + crc);
}

void openHistory(Tour &tour)
{
    click(tour.panel("pushButton_Switch"));
    tour.awaitPanelText("pushButton_Switch", translated("控制命令"));
    tour.awaitPageText("label293", translated("空命令"));
    await(QStringLiteral("the newest group is selected in the log"),
          [&tour] { return isGroupSelected(tour); });
}

/// Steps through the groups until the host frame carries the command.
void walkTo(Tour &tour, const char *button, const char *command)
{
    const int groups = tour.logged("发").size();
    for (int i = 0; i < groups && tour.pageText("label293") != translated(command); ++i)
        click(tour.panel(button));
    tour.awaitPageText("label293", translated(command));
    await(QStringLiteral("the group is selected in the log"),
          [&tour] { return isGroupSelected(tour); });
}

void walkBack(Tour &tour)
{
    walkTo(tour, "pushButton_up", "拍照");
    tour.awaitPageText("label294", QStringLiteral("20 01 "));
}

void walkForward(Tour &tour)
{
    walkTo(tour, "pushButton_next", "欧拉角控制");
    tour.awaitPageText("label294", QStringLiteral("14 "));
}

void learn(Tour &tour)
{
    click(tour.panel("pushButton_Switch"));
    tour.awaitPanelText("pushButton_Switch", translated("数据解析"));
    auto *runs = tour.page<QComboBox>("comboBox");
    openList(runs);
    takeFromList(runs, translated("学习模式"));
    click(tour.page("pushButton_record"));
    click(tour.page("pushButton_start"));
    tour.awaitPageText("pushButton_start", translated("启动"));
    tour.awaitSent(QStringLiteral("the run closes with an idle frame"), kCommandDigit,
                   QStringLiteral("00"));
    await(QStringLiteral("the log holds the exchange of the command"), [&tour] {
        return !tour.logged("发").filter(QRegExp("2101[0-9A-F]{4}$")).isEmpty() &&
               !tour.logged("收").filter(QRegExp("2100[0-9A-F]{4}$")).isEmpty();
    });
}

} // namespace

QVector<Step> consoleSteps()
{
    return {
        {"console", "The flow console stands in for the carrier aircraft", "流程解析：模拟载机",
         openConsole},
        {"run-started", "A run sends a frame about every 30 ms; the pod reports its mode",
         "启动后约每30毫秒发送一帧，吊舱报告工作模式", run},
        {"slider-held", "A rate slider is held; frames carry the rate",
         "按住角速率滑块，数据帧携带角速率", holdYawSlider},
        {"photo", "The photo command goes out until the pod answers",
         "拍照命令重复发送，直到吊舱应答", takePhoto},
        {"locked", "The pod locks its line of sight", "吊舱切换到指向锁定", lock},
        {"follow-again", "And follows the carrier again", "再回到指向跟随", followAgain},
        {"mode-changed", "The pod changes its mode; angles are typed", "吊舱切换模式，输入控制量",
         changeMode},
        {"run-stopped", "The run is stopped", "停止", stopRun},
        {"history", "The history view shows the newest group", "历史数据：显示最新一组",
         openHistory},
        {"history-older", "The walk back finds the photo command", "向前翻到拍照命令", walkBack},
        {"history-newer", "The walk forward finds the change of mode", "向后翻到模式切换",
         walkForward},
        {"learning-run", "A learning run ends by itself with the pod's answer",
         "学习模式：收到应答后自动停止", learn},
    };
}

} // namespace tour
