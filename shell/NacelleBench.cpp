#include "shell/NacelleBench.h"

#include "console/flowAnalysis.h"
#include "foundation/About.h"
#include "foundation/FileUtils.h"
#include "foundation/PopFrame.h"
#include "foundation/QGlobal.h"
#include "foundation/formlook.h"
#include "foundation/relabel.h"
#include "foundation/scale.h"
#include "foundation/stylesheets.h"
#include "protocol/codec.h"
#include "protocol/dataPacketAnalysis.h"
#include "protocol/gcuframe.h"
#include "shell/QMyTcpSocket.h"
#include "shell/connectDevice.h"
#include "shell/devicedatagram.h"
#include "shell/framecut.h"
#include "shell/links.h"
#include "video/videoFrom.h"

#include <QApplication>
#include <QButtonGroup>
#include <QDeadlineTimer>
#include <QDesktopServices>
#include <QFileInfo>
#include <QIcon>
#include <QMenu>
#include <QScreen>
#include <QSerialPort>
#include <QSocketNotifier>
#include <QTcpSocket>
#include <QTime>
#include <QTimer>
#include <QUdpSocket>
#include <QUrl>

#include <algorithm>

namespace {

constexpr double kDesignScreenHeight = 1080.0;
/// Base widths below which buttons or texts of a page don't fit any more.
constexpr int kWorkbenchWidth = 976;
constexpr int kConsoleWidth = 800;
constexpr int kOddParityIndex = 1;
constexpr int kEvenParityIndex = 2;
/// Datagrams may come as fast as they are taken. After so long the window has its turn; the socket
/// calls again for those that wait.
constexpr int kReadTurnMs = 5;
constexpr int kErrorRestMs = 100;

QString pageName()
{
    return QStringLiteral("CurrentPage");
}

/// All widgets below `host` that have the page's name, last first.
template <typename T>
QList<T *> pagesIn(QWidget *host)
{
    QList<T *> pages = host->findChildren<T *>(pageName());
    std::reverse(pages.begin(), pages.end());
    return pages;
}

QString logEntry(const char *direction, const QByteArray &frame)
{
    const QTime now = QTime::currentTime();
    return QString::asprintf("[%02d:%02d:%02d:%03d]", now.hour(), now.minute(), now.second(),
                             now.msec()) +
           translated(direction) + QLatin1String("->\n") + hexDigits(frame);
}

/// A port whose other end has gone reads as ready and empty, again and again without a pause, and
/// takes no byte of what waits to be written. It is kept open and as it is, but after an error it's
/// left alone for a while.
void restAfterErrors(QSerialPort *port)
{
    QObject::connect(port, &QSerialPort::errorOccurred, port, [port](int error) {
        if (error == QSerialPort::NoError)
            return;
        for (QSocketNotifier *notifier : port->findChildren<QSocketNotifier *>()) {
            if (!notifier->isEnabled())
                continue;
            notifier->setEnabled(false);
            QTimer::singleShot(kErrorRestMs, notifier, [notifier] { notifier->setEnabled(true); });
        }
    });
}

QString menuStyle()
{
    return QStringLiteral(
               " QMenu {background-color:%1;color:#ffffff; font-family:'Microsoft Yahei';"
               "font-size:%2px} QMenu::item {height:%3px; width:%4px;padding-left:%5px;"
               "border: 1px solid none;} QMenu::item:selected {background-color:%6;"
               "                        padding-left:%5px;border: 1px solid %6;} "
               "QMenu::separator{height:1px;background-color:20FFFFFF;margin-left:0px;"
               "margin-right:0px;}")
        .arg(colourOf("main"))
        .arg(int(14 * QGlobal::instance()->scaleFactor + 1.5))
        .arg(scaled(42))
        .arg(scaled(140))
        .arg(scaled(20))
        .arg(colourOf("hover"));
}

/// Hands a document beside the program to the desktop; one that is missing gives no message, which
/// not every desktop would see so.
void openDocument(const QString &name)
{
    const QString path = QCoreApplication::applicationDirPath() + QLatin1Char('/') + name;
    if (QFileInfo(path).isFile())
        QDesktopServices::openUrl(QUrl::fromLocalFile(path));
}

struct Datagram
{
    QByteArray bytes;
    QString sender; ///< IPv4 address as text
};

Datagram takeDatagram(QUdpSocket &socket)
{
    QByteArray buffer(int(socket.pendingDatagramSize()), '\0');
    QHostAddress sender;
    socket.readDatagram(buffer.data(), buffer.size(), &sender);
    return {buffer, QHostAddress(sender.toIPv4Address()).toString()};
}

/// One stop bit whatever the panel shows: its choice is taken and ignored on purpose.
QSerialPort *makePort(const QString &name, int baudRate, int dataBits, int parity)
{
    auto *port = new QSerialPort;
    port->setPortName(name);
    port->setBaudRate(baudRate, QSerialPort::AllDirections);
    port->setDataBits(QSerialPort::DataBits(dataBits));
    port->setParity(parity == kOddParityIndex    ? QSerialPort::OddParity
                    : parity == kEvenParityIndex ? QSerialPort::EvenParity
                                                 : QSerialPort::NoParity);
    port->setStopBits(QSerialPort::OneStop);
    return port;
}

} // namespace

/// The pictures lie in a static library, which the linker takes only by name.
static void initResources()
{
    Q_INIT_RESOURCE(resources);
}

NacelleBench::NacelleBench(QWidget *parent) : QMainWindow(parent)
{
    initResources();
    ui.setupUi(this);
    setWindowState(Qt::WindowMaximized);
    setWindowTitle(translated("云台报文工作台"));
    setWindowIcon(QIcon(QStringLiteral(":/NacelleBench/Resources/a71dp-jlnoy-001.ico")));
    const double scale = screen()->geometry().height() / kDesignScreenHeight;
    QGlobal::instance()->scaleFactor = scale;
    setBaseFont();
    setStyleSheet("font:" + QString::number(kBaseText * scale, 'g', 6) + "px ");
    build();
}

void NacelleBench::build()
{
    connectPageButtons();
    dressTop();
    dressForm(ui.widgetContent);
    m_panel = new connectDevice(ui.widget_1);
    m_panel->setMainWindow(this);
    m_panel->show();
    SelectDataPacketAnalysis(true);

    ui.menuButton->setStyleSheet(
        QStringLiteral("QPushButton{border-image: url(:/NacelleBench/Resources/setting.png)}"
                       "QPushButton:menu-indicator{image:none;}"));
    buildMenu();
    retranslate();
}

void NacelleBench::connectPageButtons()
{
    auto *pageButtons = new QButtonGroup(this);
    pageButtons->setExclusive(true);
    pageButtons->addButton(ui.pushButton_1);
    pageButtons->addButton(ui.pushButton_2);
    connect(ui.pushButton_1, &QPushButton::toggled, this, &NacelleBench::SelectDataPacketAnalysis);
    connect(ui.pushButton_2, &QPushButton::toggled, this, &NacelleBench::SelectFlowAnalysis);
}

/// The sizes in the form are those of a screen with 1080 lines, as everywhere.
void NacelleBench::dressTop()
{
    ui.widgetTop->setFixedHeight(scaled(50));
    for (QPushButton *button : {ui.pushButton_1, ui.pushButton_2}) {
        button->setFixedSize(scaled(240), scaled(50));
        recolour(button);
        scaleText(button);
    }
    ui.menuButton->setFixedSize(scaled(32), scaled(32));
}

void NacelleBench::buildMenu()
{
    auto *menu = new QMenu(this);
    menu->setStyleSheet(menuStyle());
    languageMenu = makeLanguageMenu(menu);
    menu->addMenu(languageMenu);
    menu->addSeparator();
    menu->addSeparator();
    helpAction = menu->addAction(QString(), this, &NacelleBench::help);
    menu->addSeparator();
    protocolAction = menu->addAction(QString(), this, &NacelleBench::protocol);
    aboutAction = new QAction(this);
    connect(aboutAction, &QAction::triggered, this, &NacelleBench::about);
    // The entry needs a language file that names a version with a 1 in it: a delivery hides the box
    // by leaving that line out.
    if (QGlobal::instance()->firstLanguageText(QStringLiteral("版本1")).contains('1')) {
        menu->addSeparator();
        menu->addAction(aboutAction);
    }
    retitleMenu();
    ui.menuButton->setMenu(menu);
}

QMenu *NacelleBench::makeLanguageMenu(QMenu *menu)
{
    auto *languages = new QMenu(menu);
    languages->setStyleSheet(menuStyle());
    languages->addAction(QStringLiteral("简体中文"), this, &NacelleBench::switchChinese);
    languages->addSeparator();
    languages->addAction(QStringLiteral("English"), this, &NacelleBench::switchEnglish);
    return languages;
}

void NacelleBench::retitleMenu()
{
    languageMenu->setTitle(translated("语言"));
    helpAction->setText(translated("帮助"));
    aboutAction->setText(translated("关于"));
    protocolAction->setText(translated("协议"));
}

void NacelleBench::help()
{
    openDocument(QStringLiteral("Help.pdf"));
}

void NacelleBench::protocol()
{
    openDocument(QGlobal::instance()->languageChinese ? QStringLiteral("GCU私有通信协议.pdf")
                                                      : QStringLiteral("GCUPrivateProtocol.pdf"));
}

void NacelleBench::about()
{
    auto *dialog = new About(nullptr);
    dialog->show();
}

void NacelleBench::switchChinese()
{
    switchLanguage(true);
}

void NacelleBench::switchEnglish()
{
    switchLanguage(false);
}

/// Only here is the saved file written, and even when the language is the one it was.
void NacelleBench::switchLanguage(bool chinese)
{
    QGlobal::instance()->languageChinese = chinese;
    retitleMenu();
    retranslate();
    m_panel->retranslate();
    retranslatePage();
    FileUtils().saveControlConfig();
}

void NacelleBench::retranslatePage()
{
    const bool console = !ui.pushButton_1->isChecked() && m_panel->consoleInFront();
    if (console && m_flowPage)
        m_flowPage->retranslate();
    else if (!console && m_packetPage)
        m_packetPage->retranslate();
}

void NacelleBench::retranslate()
{
    setWindowTitle(translated("云台报文工作台"));
    ui.pushButton_1->setText(translated("数据包解析"));
    ui.pushButton_2->setText(translated("流程解析"));
    if (videoWindow)
        videoWindow->retranslate();
}

void NacelleBench::SelectDataPacketAnalysis(bool isSelected)
{
    if (!isSelected)
        return;
    giveUpPages();
    makePacketPage(dataPacketAnalysis::kWholeView);
    currentPageIndex = kPacketPage;
    m_panel->setPageMode(kPacketPage);
    fillHosts();
}

void NacelleBench::SelectFlowAnalysis(bool isSelected)
{
    if (!isSelected)
        return;
    giveUpPages();
    makeFlowPage();
    currentPageIndex = kFlowPage;
    m_panel->setPageMode(kFlowPage);
    fillHosts();
}

/// Takes every page out of the window at once; the event loop deletes them later. A console's run
/// ends here, so that an emission still on its way finds nothing to send.
void NacelleBench::giveUpPages()
{
    m_packetPage = nullptr;
    m_flowPage = nullptr;
    for (flowAnalysis *page : pagesIn<flowAnalysis>(ui.widget_2))
        page->giveUp();
    giveUpChildren(ui.widget_2, pageName());
}

void NacelleBench::placePage(QWidget *page)
{
    page->setObjectName(pageName());
    page->setGeometry(0, 0, ui.widget_2->width(), ui.widget_2->height());
}

void NacelleBench::makePacketPage(int view)
{
    m_packetPage = new dataPacketAnalysis(ui.widget_2);
    placePage(m_packetPage);
    m_packetPage->setMainWindow(this);
    m_packetPage->setHistoryView(view);
    m_packetPage->show();
}

void NacelleBench::makeFlowPage()
{
    m_flowPage = new flowAnalysis(ui.widget_2);
    placePage(m_flowPage);
    m_flowPage->setMainWindow(this);
    m_flowPage->show();
}

/// The hosts stand 1 to 2. On a screen that is nearly square the buttons of one side would lie over
/// each other then: it takes what the other side can spare.
void NacelleBench::shareWidth()
{
    const int width = ui.widget_1->width() + ui.widget_2->width();
    const int panel = m_panel->buttonRowWidth();
    const int page = scaled(currentPageIndex == kPacketPage ? kWorkbenchWidth : kConsoleWidth);
    const int third = width / 3;
    const int share = panel + page <= width ? qBound(panel, third, width - page) : third;
    ui.horizontalLayout_2->setStretch(0, share == third ? 1 : share);
    ui.horizontalLayout_2->setStretch(1, share == third ? 2 : width - share);
    ui.horizontalLayout_2->activate();
}

void NacelleBench::resizeEvent(QResizeEvent *)
{
    fillHosts();
}

/// Panel and page aren't in a layout: they follow their hosts here.
void NacelleBench::fillHosts()
{
    shareWidth();
    m_panel->setFixedSize(ui.widget_1->size());
    for (QWidget *page : pagesIn<QWidget>(ui.widget_2))
        page->setFixedSize(ui.widget_2->size());
}

void NacelleBench::closeEvent(QCloseEvent *)
{
    QApplication::exit(0);
}

void NacelleBench::clearLog()
{
    m_panel->clearData();
}

void NacelleBench::rebuildPage(bool console)
{
    giveUpPages();
    if (console) {
        makeFlowPage();
        return;
    }
    makePacketPage(dataPacketAnalysis::kHistoryView);
    showGroup(historyIndex);
}

void NacelleBench::showHistoryGroup(bool newer)
{
    const int target = nextGroup(newer);
    if (m_panel->consoleInFront())
        return;
    if (showGroup(target))
        historyIndex = target;
}

/// Selects the stored group in the log: the i-th newest sent entry, together with the received one
/// if that follows at once. Returns -1 when the text has left the display.
int NacelleBench::selectGroup(int index)
{
    if (index >= sentFrames.size())
        return 0;
    const Range range = groupRange(index);
    return m_panel->selectLogRange(range.start, range.end, logEnd());
}

bool NacelleBench::showGroup(int index)
{
    if (selectGroup(index) != 0)
        return false;
    if (m_packetPage && index < sentFrames.size())
        m_packetPage->showHostFrame(sentFrames.at(index));
    if (m_packetPage && index < receivedFrames.size())
        m_packetPage->showGcuFrame(receivedFrames.at(index));
    return true;
}

void NacelleBench::CreateTCP(QString ip, int port1, int, bool isFrist)
{
    connectType = kTcpLink;
    remoteAddress = ip;
    auto *link = new QMyTcpSocket;
    connect(link, &QMyTcpSocket::signals_ReceiveTcpData, this, &NacelleBench::receiveData);
    connect(link, &QMyTcpSocket::signals_ConnectFail, this, &NacelleBench::ConnectFail);
    connect(link, &QMyTcpSocket::signals_ConnectSuccess, this, &NacelleBench::ConnectSuccess);
    // This window has no such slot, so that a lost connection is never made again by itself: the
    // operator presses the connect button. A link that came back unasked would send a running
    // console's commands to a pod that has just been started.
    connect(link, SIGNAL(signals_CreateMyTcpSocket(QString, int, bool)), this,
            SLOT(CreateTCP(QString, int, bool)));
    link->createSocket(ip, port1, isFrist);
}

void NacelleBench::CreateUDP(QString ip, int port1, int port2, bool)
{
    connectType = kUdpLink;
    remoteAddress = ip;
    remotePort = port1;
    udpSocket = new QUdpSocket;
    const QHostAddress local = localAddressFor(ip);
    if (local.isNull())
        udpSocket->bind(quint16(port2));
    else
        udpSocket->bind(local, quint16(port2));
    connect(udpSocket, &QUdpSocket::readyRead, this, &NacelleBench::receive);
    // The notice says that the objects were made, not that the port is open.
    showNotice("创建UDP通信成功！");
    QGlobal::instance()->deviceName.clear();
}

void NacelleBench::CreateSerialPort(QString portName, int baudRate, int dataBits, int parity, int,
                                    bool)
{
    connectType = kSerialLink;
    serialPortName = portName;
    serialPort = makePort(portName, baudRate, dataBits, parity);
    if (!serialPort->open(QIODevice::ReadWrite)) {
        showNotice("打开串口失败！");
        return;
    }
    connect(serialPort, &QSerialPort::readyRead, this, &NacelleBench::receive);
    // This window has no such slot, so that errors of an open port go unnoticed: a cable that is
    // pulled and put back would otherwise stop a run with a box on the screen.
    connect(serialPort, SIGNAL(errorOccurred(QSerialPort::SerialPortError)), this,
            SLOT(SerialErrorOccurred(QSerialPort::SerialPortError)));
    restAfterErrors(serialPort);
    showNotice("打开串口成功！");
    QGlobal::instance()->deviceName.clear();
}

void NacelleBench::ConnectSuccess(QTcpSocket *tcp)
{
    tcpSocket = tcp;
    showNotice("TCP连接成功！");
}

void NacelleBench::ConnectFail(QString)
{
    showNotice("TCP连接失败！");
}

void NacelleBench::Disconnect()
{
    if (connectType == kTcpLink && tcpSocket)
        tcpSocket->close();
    else if (connectType == kUdpLink && udpSocket)
        udpSocket->close();
    else if (connectType == kSerialLink && serialPort)
        serialPort->close();
    connectType = kNoLink;
}

void NacelleBench::sendData(QByteArray frame)
{
    const QString entry = logEntry("发", frame);
    recordSent(frame, entry.size());
    m_panel->appendLog(entry);

    if (connectType == kTcpLink && tcpSocket)
        tcpSocket->write(frame);
    else if (connectType == kUdpLink)
        // From a fresh port each time: the bound socket only receives.
        QUdpSocket().writeDatagram(frame, QHostAddress(remoteAddress), quint16(remotePort));
    else if (connectType == kSerialLink)
        serialPort->write(frame);
}

void NacelleBench::receive()
{
    if (connectType == kUdpLink) {
        const QDeadlineTimer turn(kReadTurnMs);
        while (udpSocket->hasPendingDatagrams()) {
            const Datagram datagram = takeDatagram(*udpSocket);
            receiveData(datagram.bytes, datagram.sender, 0);
            // Not before the first one: a socket that nothing was read from doesn't call again.
            if (turn.hasExpired())
                break;
        }
    } else if (connectType == kSerialLink) {
        receiveData(serialPort->readAll(), QString(), 0);
    }
}

void NacelleBench::receiveUdpData()
{
    // Whoever calls by name may do so at any time; a socket that isn't bound would warn.
    while (udpSocket && udpSocket->state() == QAbstractSocket::BoundState &&
           udpSocket->hasPendingDatagrams()) {
        const Datagram datagram = takeDatagram(*udpSocket);
        if (datagram.sender != remoteAddress)
            continue;
        // The ones that still wait are left to the next call.
        if (!readDeviceDatagram(datagram.bytes, QGlobal::instance()->deviceName))
            return;
    }
}

void NacelleBench::receiveData(QByteArray ba, QString, int)
{
    cutChunk(receiveCache, ba,
             [this](const QByteArray &frame, quint8 mode) { takeFrame(frame, mode); });
}

void NacelleBench::takeFrame(const QByteArray &frame, quint8 mode)
{
    const QString entry = logEntry("收", frame);
    recordReceived(frame, entry.size());
    m_panel->appendLog(entry);

    if (currentPageIndex == kPacketPage && m_packetPage)
        m_packetPage->showReceivedFrame(frame);
    // In the history view the flow page is chosen but gone.
    if (currentPageIndex == kFlowPage && m_flowPage) {
        m_flowPage->setPodMode(qint8(mode));
        takeAnswer(frame);
    }
}

/// Ends a repeated command once the pod has shown its code back.
void NacelleBench::takeAnswer(const QByteArray &frame)
{
    if (!isAnswer(hexTextToBytes(m_flowPage->lastSentText), frame))
        return;
    if (flowRunMode == kLearningRun)
        m_flowPage->stopRunning();
    else if (flowRunMode == kDefaultRun)
        m_flowPage->clearPendingCommand();
}
