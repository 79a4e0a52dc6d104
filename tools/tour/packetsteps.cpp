#include "foundation/QGlobal.h"
#include "tools/tour/tour.h"

#include <QComboBox>
#include <QPushButton>

namespace tour {

namespace {

const QString kHere = QStringLiteral("127.0.0.1");

void start(Tour &tour)
{
    tour.awaitPanelText("comboBox", QStringLiteral("UDP"));
    tour.awaitPanelText("pushButton_Conn", translated("连接"));
    tour.awaitPageText("label33", QStringLiteral("72"));
    tour.awaitPageText("lineEdit213", QStringLiteral("170.9175332"));
}

void refuseAddress(Tour &tour)
{
    type(tour.panel("LineEdit_RemoteIp"), QStringLiteral("192.168.144.256"));
    click(tour.panel("pushButton_Conn"));
    tour.expectNotice("IP格式错误！");
    tour.awaitPanelText("pushButton_Conn", translated("连接"));
}

void chooseTcp(Tour &tour)
{
    tour.closeNotice();
    auto *links = tour.panel<QComboBox>("comboBox");
    openList(links);
    takeFromList(links, QStringLiteral("TCP Client"));
    tour.awaitPanelText("LineEdit_Port1", QStringLiteral("2332"));
    type(tour.panel("LineEdit_RemoteIp"), kHere);
    type(tour.panel("LineEdit_Port1"), QString::number(tour.pod().tcpPort()));
}

void connectTcp(Tour &tour)
{
    click(tour.panel("pushButton_Conn"));
    tour.expectNotice("TCP连接成功！");
    tour.awaitPanelText("pushButton_Conn", translated("断开"));
    tour.awaitPod(QStringLiteral(": up"), 0);
}

void composeFrame(Tour &tour)
{
    tour.closeNotice();
    const struct
    {
        const char *field;
        const char *value;
        const char *hexLabel;
        const char *hex;
    } rows[] = {{"lineEdit73", "-1500", "label74", "24 FA "},
                {"lineEdit93", "-15.25", "label94", "0B FA "},
                {"lineEdit113", "270.5", "label114", "AA 69 "},
                {"lineEdit213", "116.3912757", "label214", "35 E6 5F 45 "},
                {"lineEdit273", "1.5", "label274", "DC 05 00 00 "}};
    for (const auto &row : rows) {
        type(tour.page(row.field), QLatin1String(row.value));
        press(tour.page(row.field), Qt::Key_Return);
        tour.awaitPageText(row.hexLabel, QLatin1String(row.hex));
    }
    click(tour.page("checkBox_1"));
    tour.awaitPageText("label84", QStringLiteral("05 "));
    tour.awaitPageText("label303", translated("通过"));
}

QComboBox *commandList(Tour &tour)
{
    return find<QComboBox>(tour.dialog("controlCmd"), "comboBox_Cmd");
}

void openCommands(Tour &tour)
{
    click(tour.page("pushButton_Cmd"));
    openList(commandList(tour));
}

void chooseCommand(Tour &tour)
{
    QWidget *dialog = tour.dialog("controlCmd");
    takeFromList(commandList(tour), translated("指定倍率"));
    type(findWidget(dialog, "lineEdit_5"), QStringLiteral("25"));
    await(QStringLiteral("the preview follows"), [dialog] {
        const QVariant text = findWidget(dialog, "textEdit_16")->property("plainText");
        return text.toString() == QLatin1String("25 01 19 00 ");
    });
}

void takeCommand(Tour &tour)
{
    clickToClose(findWidget(tour.dialog("controlCmd"), "pushButton_Ok"));
    tour.awaitPageText("label293", translated("指定倍率"));
    tour.awaitPageText("label294", QStringLiteral("25 01 19 00 "));
    tour.awaitPageText("label33", QStringLiteral("75"));
}

void createFrame(Tour &tour)
{
    click(tour.page("pushButton_Create"));
    await(QStringLiteral("the frame stands in the text box"), [&tour] {
        const QString text = tour.pageText("textEdit_Send");
        return text.startsWith(QLatin1String("A8 E5 4B 00 01 ")) &&
               text.contains(QLatin1String(" 25 01 19 00 ")) && text.size() == 75 * 3;
    });
}

void sendFrame(Tour &tour)
{
    const int told = tour.podMark(QStringLiteral("command 0x25"));
    click(tour.page("pushButton_Send"));
    tour.awaitPod(QStringLiteral("command 0x25"), told);
    tour.awaitLogged("发", 1);
    tour.awaitLogged("收", 1);
    tour.awaitPageText("lineEdit53_2", translated("指向跟随模式"));
    reveal(tour.page("label34_2"));
}

void readAnswer(Tour &tour)
{
    reveal(tour.page("label313_2"));
    tour.awaitPageText("label303_2", translated("指定倍率") + translated("成功"));
    tour.awaitPageText("label304_2", QStringLiteral("25 00 "));
    tour.awaitPageText("label313_2", translated("通过"));
}

void sendEmpty(Tour &tour)
{
    const int received = tour.logged("收").size();
    click(tour.page("pushButton_Send_Null"));
    tour.awaitLogged("收", received + 1);
    await(QStringLiteral("the empty command is what went out"),
          [&tour] { return tour.logged("发").last().endsWith(QLatin1String("0028B2")); });
    tour.awaitPageText("label313_2", translated("通过"));
}

/// The frame of the text box with one digit of its longitude changed.
QString brokenFrame(Tour &tour)
{
    QString text = tour.pageText("textEdit_Send");
    const int place = 38 * 3;
    return text.replace(place, 2, text.mid(place, 2) == QLatin1String("00") ? "01" : "00");
}

void refuseFrame(Tour &tour)
{
    paste(tour.page("textEdit_Send"), brokenFrame(tour));
    click(tour.page("pushButton_Analysis"));
    tour.expectNotice("CRC校验失败！");
}

void sendBroken(Tour &tour)
{
    tour.closeNotice();
    const QString told = QStringLiteral("broken frame: bad checksum");
    const int mark = tour.podMark(told);
    const int sent = tour.logged("发").size();
    click(tour.page("pushButton_Send"));
    tour.awaitPod(told, mark);
    tour.awaitLogged("发", sent + 1);
}

void disconnectTcp(Tour &tour)
{
    const int mark = tour.podMark(QStringLiteral(": down"));
    click(tour.panel("pushButton_Conn"));
    tour.awaitPod(QStringLiteral(": down"), mark);
    tour.awaitPanelText("pushButton_Conn", translated("连接"));
}

void connectUdp(Tour &tour)
{
    auto *links = tour.panel<QComboBox>("comboBox");
    openList(links);
    takeFromList(links, QStringLiteral("UDP"));
    type(tour.panel("LineEdit_RemoteIp"), kHere);
    type(tour.panel("LineEdit_Port1"), QString::number(tour.pod().udpPort()));
    type(tour.panel("LineEdit_Port2"), QString::number(tour.pod().replyPort()));
    click(tour.panel("pushButton_Conn"));
    tour.expectNotice("创建UDP通信成功！");
}

void sendOverUdp(Tour &tour)
{
    tour.closeNotice();
    click(tour.panel("pushButton_Clear"));
    tour.awaitPanelText("textEdit", QString());
    click(tour.page("pushButton_Create"));
    click(tour.page("pushButton_Send"));
    tour.awaitPod(QStringLiteral("udp 127.0.0.1"), 0);
    tour.awaitLogged("收", 1);
    tour.awaitPageText("label313_2", translated("通过"));
}

} // namespace

QVector<Step> packetSteps()
{
    return {
        {"start", "The bench stands ready: link, log and frame workbench",
         "程序启动：连接、数据显示区和数据包解析", start},
        {"address-refused", "An address that is none is refused", "错误的IP地址被拒绝",
         refuseAddress},
        {"tcp-chosen", "TCP is chosen, address and port are typed", "选择TCP，输入地址和端口",
         chooseTcp},
        {"tcp-connected", "The TCP link is up", "TCP连接成功", connectTcp},
        {"frame-composed", "Values are typed; Return refreshes bytes and checksum",
         "输入数值，回车后更新字节和校验", composeFrame},
        {"command-list", "The command dialog offers its commands", "命令对话框列出全部命令",
         openCommands},
        {"command-chosen", "A command is chosen, its parameter typed; the preview follows",
         "选择命令并输入参数，字节实时预览", chooseCommand},
        {"command-taken", "The command stands in the form", "命令已写入表单", takeCommand},
        {"frame-created", "The form's frame stands in the text box", "由表单生成数据包",
         createFrame},
        {"frame-answered", "The frame is sent; the pod's answer is taken apart",
         "发送数据包，解析吊舱应答", sendFrame},
        {"answer-read", "Feedback and checksum of the answer", "应答中的命令反馈和CRC校验",
         readAnswer},
        {"empty-command", "The empty command is sent and answered", "发送空指令并收到应答",
         sendEmpty},
        {"frame-refused", "A broken frame is pasted; its checksum is refused",
         "粘贴损坏的数据包，CRC校验不通过", refuseFrame},
        {"broken-sent", "The broken frame is sent on purpose; the pod finds it broken",
         "有意发送损坏的数据包，吊舱报告校验错误", sendBroken},
        {"disconnected", "The TCP link is closed", "断开TCP连接", disconnectTcp},
        {"udp-connected", "The UDP link is made", "创建UDP通信", connectUdp},
        {"udp-answered", "The same frame goes out and is answered over UDP",
         "通过UDP发送同一数据包并收到应答", sendOverUdp},
    };
}

} // namespace tour
