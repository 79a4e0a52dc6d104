#include "shell/connectDevice.h"

#include "foundation/PopFrame.h"
#include "foundation/QGlobal.h"
#include "foundation/digitfont.h"
#include "foundation/formlook.h"
#include "foundation/readout.h"
#include "foundation/relabel.h"
#include "foundation/scale.h"
#include "protocol/entryrules.h"
#include "shell/NacelleBench.h"

#include <QEvent>
#include <QRegExp>
#include <QRegExpValidator>
#include <QScrollBar>
#include <QTextCursor>

namespace {

enum LinkIndex { kTcpIndex = 0, kUdpIndex = 1 };

constexpr int kLogBlockLimit = 50000;
constexpr int kShownWidth = 10000000;
constexpr int kHighestPort = 65535;
constexpr protocol::Limit kPortLimit{protocol::Limit::Integer, 0, 99999};

constexpr Caption kCaptions[] = {
    {"label", "连接设备"},       {"label_2", "连接方式"},
    {"label_3", "远程"},         {"label_4", "本地"},
    {"label_8", "波特率"},       {"label_10", "数据位"},
    {"label_9", "停止位"},       {"label_11", "奇偶校验"},
    {"label_5", "数据显示区"},   {"pushButton_Clear", "清空显示区"},
    {"pushButton_up", "上一组"}, {"pushButton_next", "下一组"},
};

const char *const kAddressPattern =
    "((2[0-4]\\d|25[0-5]|[01]?\\d\\d?)\\.){3}(2[0-4]\\d|25[0-5]|[01]?\\d\\d?)";
const char *const kPortPattern = "^-?(([1-9]\\d{0,3})|([1-5]\\d{4})|(6[0-4]\\d{3})|(65[0-4]\\d{2})|"
                                 "(655[0-2]\\d)|(6553[0-5])|^0)$";
const char *const kScrollBarStyle =
    "QScrollBar{background-color:white; width:8px; margin:1px 2px 1px 2px;}"
    "QScrollBar::handle{background-color:rgba(61,65,81,120); width:4px; border-radius:2px;}"
    "QScrollBar::handle:hover{background:rgb(61,65,81);}"
    "QScrollBar::add-line,QScrollBar::sub-line{border:none;}";

bool isAddress(const QString &text)
{
    return QRegExp(QLatin1String(kAddressPattern)).exactMatch(text);
}

bool isPort(const QString &text)
{
    const int port = text.toInt();
    return port >= 0 && port <= kHighestPort;
}

} // namespace

connectDevice::connectDevice(QWidget *parent) : QWidget(parent)
{
    // Meanwhile, for the system walks through dozens of its devices: five milliseconds of the
    // start.
    std::future<QList<QSerialPortInfo>> ports =
        std::async(std::launch::async, &QSerialPortInfo::availablePorts);
    ui.setupUi(this);
    for (QWidget *widget : std::initializer_list<QWidget *>{this, ui.label, ui.label_5})
        recolour(widget);
    ui.textEdit->verticalScrollBar()->setStyleSheet(QLatin1String(kScrollBarStyle));
    connectSlots();
    setEntryRules(ports);
    ui.comboBox->setCurrentIndex(kUdpIndex);
    ui.comboBox->installEventFilter(this);
    ui.textEdit->setMaximumBlockCount(kLogBlockLimit);
    // A line of digits has no place to break but anywhere. Looking for a better one takes the
    // square of its length: a second for a datagram of 64 KB.
    ui.textEdit->setWordWrapMode(QTextOption::WrapAnywhere);
    setDigitFont(ui.textEdit);
    setFixedSizes();
    retranslate();
}

void connectDevice::connectSlots()
{
    connect(ui.pushButton_Conn, &QPushButton::toggled, this, &connectDevice::connectOnlineDevice);
    connect(ui.pushButton_Clear, &QPushButton::clicked, this, &connectDevice::clearData);
    connect(ui.pushButton_Switch, &QPushButton::clicked, this, &connectDevice::switchData);
    connect(ui.pushButton_up, &QPushButton::clicked, this, &connectDevice::upData);
    connect(ui.pushButton_next, &QPushButton::clicked, this, &connectDevice::nextData);
}

void connectDevice::setEntryRules(std::future<QList<QSerialPortInfo>> &ports)
{
    const auto *pattern = new QRegExpValidator(QRegExp(QLatin1String(kPortPattern)), this);
    ui.LineEdit_Port1->setValidator(pattern);
    ui.LineEdit_Port2->setValidator(pattern);
    // Not among the others: the rule above must stand, and the list be without ports, at this
    // point.
    connect(ui.comboBox, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
            &connectDevice::indexChange);
    m_ports = ports.get();
    appendPorts();
    // This rule takes the place of the pattern and lets ports up to 99999 be typed; the press of
    // the connect button says what is wrong with them.
    for (QLineEdit *port : {ui.LineEdit_Port1, ui.LineEdit_Port2})
        setEntryRule(port, kPortLimit);
}

void connectDevice::setFixedSizes()
{
    ui.widget_10->setFixedWidth(scaled(80));
    ui.pushButton_Conn->setFixedWidth(scaled(80));
    for (QLabel *label :
         {ui.label_2, ui.label_3, ui.label_4, ui.label_8, ui.label_9, ui.label_10, ui.label_11})
        label->setFixedWidth(scaled(90));
    ui.widget_3->setFixedHeight(scaled(50));
    for (QPushButton *button :
         {ui.pushButton_Clear, ui.pushButton_up, ui.pushButton_next, ui.pushButton_Switch})
        button->setFixedSize(scaled(120), scaled(40));
}

void connectDevice::setMainWindow(NacelleBench *window)
{
    m_window = window;
}

void connectDevice::appendPorts()
{
    for (const QSerialPortInfo &port : qAsConst(m_ports))
        ui.comboBox->addItem(port.portName());
}

void connectDevice::appendLog(const QString &text)
{
    ui.textEdit->append(text);
}

void connectDevice::setPageMode(int mode)
{
    const bool console = mode == kFlowPage;
    if (console) {
        ui.pushButton_Switch->setText(translated("数据解析"));
        m_consoleInFront = true;
    }
    for (QPushButton *button : {ui.pushButton_Switch, ui.pushButton_next, ui.pushButton_up})
        button->setVisible(console);
    clearData();
}

int connectDevice::selectLogRange(int start, int end, int total)
{
    ui.textEdit->settle();
    // Measured back from the end of the text: it is the top that older entries fall off.
    const int length = ui.textEdit->document()->characterCount() - 1;
    int anchor = start - total + length;
    const int position = end - total + length;
    if (position < 0)
        return -1;
    if (anchor < 2)
        anchor = 0;
    QTextCursor cursor = ui.textEdit->textCursor();
    cursor.setPosition(anchor);
    ui.textEdit->setTextCursor(cursor);
    cursor.setPosition(position, QTextCursor::KeepAnchor);
    ui.textEdit->setTextCursor(cursor);
    return 0;
}

void connectDevice::indexChange(int index)
{
    const bool network = index == kTcpIndex || index == kUdpIndex;
    ui.widget_9->setMaximumWidth(network ? kShownWidth : 0);
    ui.widget_11->setMaximumWidth(network ? 0 : kShownWidth);
    // What has no width must not take the keyboard either.
    ui.widget_9->setEnabled(network);
    ui.widget_11->setEnabled(!network);
    ui.pushButton_Conn->setEnabled(true);
    if (index == kTcpIndex) {
        ui.LineEdit_Port1->setText(QStringLiteral("2332"));
        ui.LineEdit_Port2->clear();
    } else if (index == kUdpIndex) {
        ui.LineEdit_Port1->setText(QStringLiteral("2337"));
        ui.LineEdit_Port2->setText(QStringLiteral("2338"));
    } else {
        ui.comboBox_s1->setCurrentText(QStringLiteral("115200"));
    }
}

bool connectDevice::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == ui.comboBox && event->type() == QEvent::MouseButtonPress)
        refillLinks();
    return QWidget::eventFilter(watched, event);
}

/// Offers the ports that the system has now. Clearing and filling the list runs `indexChange`, so
/// that what was typed into the port fields is overwritten; it is this program's way.
void connectDevice::refillLinks()
{
    const int index = ui.comboBox->currentIndex();
    ui.comboBox->clear();
    ui.comboBox->addItem(QStringLiteral("TCP Client"));
    ui.comboBox->addItem(QStringLiteral("UDP"));
    m_ports = QSerialPortInfo::availablePorts();
    appendPorts();
    if (index < ui.comboBox->count())
        ui.comboBox->setCurrentIndex(index);
}

void connectDevice::connectOnlineDevice(bool isConnect)
{
    if (isConnect) {
        ui.pushButton_Conn->setText(translated("断开"));
        openLink();
        return;
    }
    ui.pushButton_Conn->setText(translated("连接"));
    m_window->Disconnect();
}

void connectDevice::disconnectOnlineDevice()
{
    m_window->Disconnect();
}

void connectDevice::openLink()
{
    const int index = ui.comboBox->currentIndex();
    const QString address = ui.LineEdit_RemoteIp->text();
    const int remotePort = ui.LineEdit_Port1->text().toInt();
    if (index == kTcpIndex) {
        if (const char *fault = tcpFault())
            return refuse(fault);
        m_window->CreateTCP(address, remotePort, 0, true);
    } else if (index == kUdpIndex) {
        if (const char *fault = udpFault())
            return refuse(fault);
        m_window->CreateUDP(address, remotePort, ui.LineEdit_Port2->text().toInt(), true);
    } else {
        m_window->CreateSerialPort(
            ui.comboBox->currentText(), ui.comboBox_s1->currentText().toInt(),
            ui.comboBox_s2->currentText().toInt(), ui.comboBox_s4->currentIndex(),
            ui.comboBox_s3->currentIndex(), true);
    }
}

/// The first thing that is wrong with the fields of a link, or null.
const char *connectDevice::tcpFault() const
{
    if (!isAddress(ui.LineEdit_RemoteIp->text()))
        return "IP格式错误！";
    if (ui.LineEdit_Port1->text().isEmpty())
        return "远程端口不能为空！";
    if (!isPort(ui.LineEdit_Port1->text()))
        return "远程端口设置不正确！";
    return nullptr;
}

const char *connectDevice::udpFault() const
{
    if (!isAddress(ui.LineEdit_RemoteIp->text()))
        return "IP格式错误！";
    if (ui.LineEdit_Port1->text().isEmpty())
        return "远程端口不能为空！";
    if (ui.LineEdit_Port2->text().isEmpty())
        return "本地端口不能为空！";
    if (!isPort(ui.LineEdit_Port1->text()))
        return "远程端口设置不正确！";
    if (!isPort(ui.LineEdit_Port2->text()))
        return "本地端口设置不正确！";
    return nullptr;
}

void connectDevice::refuse(const char *notice)
{
    showNotice(notice);
    ui.pushButton_Conn->setChecked(false);
}

void connectDevice::clearData()
{
    ui.textEdit->clear();
}

void connectDevice::switchData()
{
    const bool toHistory = m_consoleInFront;
    ui.pushButton_Switch->setText(translated(toHistory ? "控制命令" : "数据解析"));
    m_window->rebuildPage(!toHistory);
    m_consoleInFront = !toHistory;
    if (toHistory)
        return;
    QTextCursor cursor = ui.textEdit->textCursor();
    cursor.clearSelection();
    ui.textEdit->setTextCursor(cursor);
}

void connectDevice::upData()
{
    if (!m_consoleInFront)
        m_window->showHistoryGroup(false);
}

void connectDevice::nextData()
{
    if (!m_consoleInFront)
        m_window->showHistoryGroup(true);
}

void connectDevice::retranslate()
{
    relabel(this, kCaptions);
    const QString port = QLatin1Char(' ') + translated("端口");
    nameReadout(ui.LineEdit_Port1, ui.label_3->text() + port);
    nameReadout(ui.LineEdit_Port2, ui.label_4->text() + port);
    nameReadout(ui.textEdit, ui.label_5->text());
    ui.pushButton_Switch->setText(translated(m_consoleInFront ? "数据解析" : "控制命令"));
    ui.pushButton_Conn->setText(translated(ui.pushButton_Conn->isChecked() ? "断开" : "连接"));
    relabelItems(ui.comboBox_s4, {"无", "奇校验", "偶校验"});
}
