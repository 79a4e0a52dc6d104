#pragma once

#include "console/commandframe.h"
#include "shell/FrameHistory.h"

#include "ui_NacelleBench.h"

#include <QByteArray>
#include <QMainWindow>
#include <QPointer>

class QAction;
class QMenu;
class QSerialPort;
class QTcpSocket;
class QUdpSocket;
class connectDevice;
class dataPacketAnalysis;
class flowAnalysis;
class videoFrom;

/// Value of `NacelleBench::connectType`: which link was asked for last.
enum LinkType { kNoLink = -1, kTcpLink = 0, kUdpLink = 1, kSerialLink = 2 };

/// Value of `NacelleBench::currentPageIndex`.
enum PageIndex { kPacketPage = 0, kFlowPage = 1 };

/// The one main window. It owns the connection panel, the one page in front, the link, the frame
/// history and the reassembly cache. Everything in it runs on the main thread; link objects have
/// no parent, a superseded one is kept to the end of the process.
class NacelleBench : public QMainWindow, public FrameHistory
{
    Q_OBJECT

public:
    explicit NacelleBench(QWidget *parent = nullptr);

    /// The one way out: logs a complete frame, stores it in the history and writes it at once on
    /// the link. With no link it stands in log and history all the same.
    void sendData(QByteArray frame);

    /// Makes a fresh page: the console, or the packet page as a view on the stored frames.
    void rebuildPage(bool console);

    /// Steps the history view to the next newer or older group of frames.
    void showHistoryGroup(bool newer);

    /// Empties the display of the traffic log; the stored frames stay.
    void clearLog();

    /// Sets all texts of the window itself in the current language.
    void retranslate();

    // Pages and panel read and write these.
    int currentPageIndex = kPacketPage; ///< the page chosen with the top bar
    int flowRunMode = kDefaultRun;      ///< mode of the console at the start of its last run
    videoFrom *videoWindow = nullptr;   ///< the open one; closing it clears the pointer

private slots:
    void SelectDataPacketAnalysis(bool isSelected);
    void SelectFlowAnalysis(bool isSelected);
    void help();
    void protocol();
    void about();
    void switchChinese();
    void switchEnglish();

public slots:
    void CreateTCP(QString ip, int port1, int port2, bool isFrist = false);
    void CreateUDP(QString ip, int port1, int port2, bool isFrist = false);
    void CreateSerialPort(QString portName, int baudRate, int dataBits, int parity, int stopBits,
                          bool isFrist);
    /// Drains the UDP socket or the serial port.
    void receive();
    /// Takes one chunk of bytes of any size from any link.
    void receiveData(QByteArray ba, QString ip, int connectType = 0);
    /// Takes the device's name out of the enciphered datagrams that wait. Nothing in this program
    /// calls it, and that stays so: it is reached by its name alone.
    void receiveUdpData();
    void ConnectSuccess(QTcpSocket *tcp);
    void ConnectFail(QString ipAddress);
    void Disconnect();

signals:
    void signalsCreateTCP(QString ip, bool isFrist); ///< nothing emits it

protected:
    void resizeEvent(QResizeEvent *event) override;
    void closeEvent(QCloseEvent *event) override;

private:
    void build();
    void connectPageButtons();
    void dressTop();
    void buildMenu();
    QMenu *makeLanguageMenu(QMenu *menu);
    void retitleMenu();
    void switchLanguage(bool chinese);
    void retranslatePage();
    void giveUpPages();
    void placePage(QWidget *page);
    void shareWidth();
    void fillHosts();
    void makePacketPage(int view);
    void makeFlowPage();
    bool showGroup(int index);
    int selectGroup(int index);
    void takeFrame(const QByteArray &frame, quint8 mode);
    void takeAnswer(const QByteArray &frame);

    connectDevice *m_panel = nullptr;
    // A page is gone once it is given up; a frame on the wire must not reach it any more.
    QPointer<dataPacketAnalysis> m_packetPage;
    QPointer<flowAnalysis> m_flowPage;
    QMenu *languageMenu = nullptr;
    QAction *helpAction = nullptr;
    QAction *aboutAction = nullptr;
    QAction *protocolAction = nullptr;
    Ui::NacelleBenchClass ui;
    QString remoteAddress;
    int remotePort = 2337;
    QString serialPortName;
    QSerialPort *serialPort = nullptr;
    QUdpSocket *udpSocket = nullptr;
    QTcpSocket *tcpSocket = nullptr;
    QByteArray receiveCache;
    int connectType = kNoLink;
};
