#include "video/videoFrom.h"

#include "foundation/PopFrame.h"
#include "foundation/QGlobal.h"
#include "foundation/formlook.h"
#include "foundation/readout.h"
#include "foundation/relabel.h"
#include "shell/NacelleBench.h"
#include "shell/videolink.h"
#include "video/VLCWidget.h"

#include <QButtonGroup>

#include <algorithm>

namespace {

constexpr int kPictureWidth = 16;
constexpr int kPictureHeight = 9;
constexpr int kPipSteps = 4;
constexpr char kNoValue[] = "-";

constexpr Caption kCaptions[] = {
    {"pushButton_Refresh", "播放"},
    {"pushButton_Switch", "画中画切换"},
    {"pushButton_Cursor", "光标测温坐标生成"},
    {"pushButton_Pointing", "指点坐标生成"},
    {"pushButton_Tracking", "跟踪坐标生成"},
    {"pushButton_Region", "区域测温坐标生成"},
    {"pushButton_Send", "发送"},
    {"pushButton_Quit", "命令退出"},
};

QString surfaceName()
{
    return QStringLiteral("vlc");
}

/// The largest 16:9 rectangle in the middle of an area.
QRect pictureIn(const QSize &area)
{
    if (area.height() * kPictureWidth > area.width() * kPictureHeight) {
        const int height = area.width() * kPictureHeight / kPictureWidth;
        return {0, (area.height() - height) / 2, area.width(), height};
    }
    const int width = area.height() * kPictureWidth / kPictureHeight;
    return {(area.width() - width) / 2, 0, width, area.height()};
}

quint16 valueOf(const QLabel *readout)
{
    return readout->text().toUShort();
}

} // namespace

videoFrom::videoFrom(QWidget *parent) : QWidget(parent)
{
    ui.setupUi(this);
    recolour(this);
    setAttribute(Qt::WA_StyledBackground);
    auto *picks = new QButtonGroup(this);
    picks->setExclusive(true);
    for (QPushButton *button : {ui.pushButton_Pointing, ui.pushButton_Tracking,
                                ui.pushButton_Cursor, ui.pushButton_Region})
        picks->addButton(button);
    connectSlots();
    const std::pair<QLabel *, QLabel *> readouts[] = {{ui.label_X0, ui.label_1},
                                                      {ui.label_Y0, ui.label_2},
                                                      {ui.label_X1, ui.label_3},
                                                      {ui.label_Y1, ui.label_4}};
    for (const auto &[readout, caption] : readouts)
        nameReadout(readout, caption->text());
    retranslate();
}

void videoFrom::connectSlots()
{
    connect(ui.pushButton_Pointing, &QPushButton::toggled, this, &videoFrom::SelectPointing);
    connect(ui.pushButton_Cursor, &QPushButton::toggled, this, &videoFrom::SelectPointing);
    connect(ui.pushButton_Tracking, &QPushButton::toggled, this, &videoFrom::SelectTracking);
    connect(ui.pushButton_Region, &QPushButton::toggled, this, &videoFrom::SelectTracking);
    connect(ui.pushButton_Send, &QPushButton::clicked, this, &videoFrom::send);
    connect(ui.pushButton_Quit, &QPushButton::clicked, this, &videoFrom::quit);
    connect(ui.pushButton_Refresh, &QPushButton::clicked, this, &videoFrom::refreshURL);
    connect(ui.pushButton_Switch, &QPushButton::clicked, this, &videoFrom::switchMode);
}

void videoFrom::setOwners(NacelleBench *window, flowAnalysis *page)
{
    m_mainWindow = window;
    m_flowPage = page;
}

void videoFrom::setFrameTexts(const QString &carrier, const QString &cameraKk,
                              const QString &version)
{
    m_carrierText = carrier;
    m_cameraKkText = cameraKk;
    m_versionText = version;
}

void videoFrom::setCommandButtonsEnabled(bool enabled)
{
    for (QPushButton *button :
         {ui.pushButton_Send, ui.pushButton_Quit, ui.pushButton_Switch, ui.pushButton_Refresh})
        button->setEnabled(enabled);
}

void videoFrom::showCoordinates(quint16 x0, quint16 y0, quint16 x1, quint16 y1)
{
    const bool corners = ui.pushButton_Tracking->isChecked() || ui.pushButton_Region->isChecked();
    ui.label_X0->setText(QString::number(x0));
    ui.label_Y0->setText(QString::number(y0));
    ui.label_X1->setText(corners ? QString::number(x1) : QLatin1String(kNoValue));
    ui.label_Y1->setText(corners ? QString::number(y1) : QLatin1String(kNoValue));
}

void videoFrom::retranslate()
{
    setWindowTitle(translated("视频"));
    relabel(this, kCaptions);
}

/// The button that is let go at a change of the selection calls this too, and changes nothing.
void videoFrom::SelectPointing(bool isSelected)
{
    if (isSelected)
        m_rectangleMode = false;
}

void videoFrom::SelectTracking(bool isSelected)
{
    if (isSelected)
        m_rectangleMode = true;
}

video::Pick videoFrom::chosenPick() const
{
    if (ui.pushButton_Pointing->isChecked())
        return video::Pick::Pointing;
    if (ui.pushButton_Cursor->isChecked())
        return video::Pick::Cursor;
    return ui.pushButton_Region->isChecked() ? video::Pick::Region : video::Pick::Tracking;
}

void videoFrom::readFrameTexts()
{
    const FrameTexts texts = frameTextsOf(*m_flowPage);
    setFrameTexts(texts.carrier, texts.cameraKk, texts.version);
}

FrameTexts videoFrom::frameTexts() const
{
    return {m_carrierText, m_cameraKkText, m_versionText};
}

void videoFrom::send()
{
    sendPick(true);
}

void videoFrom::quit()
{
    if (canEnd(chosenPick()))
        sendPick(false);
}

void videoFrom::sendPick(bool start)
{
    readFrameTexts();
    const PickCorners corners = {valueOf(ui.label_X0), valueOf(ui.label_Y0), valueOf(ui.label_X1),
                                 valueOf(ui.label_Y1)};
    m_mainWindow->sendData(pickFrame(chosenPick(), start, corners, frameTexts()));
}

void videoFrom::switchMode()
{
    readFrameTexts();
    m_mainWindow->sendData(pictureInPictureFrame(m_pipStep, frameTexts()));
    m_pipStep = m_pipStep % kPipSteps + 1;
}

void videoFrom::refreshURL()
{
    const QString url = ui.lineEdit->text().trimmed();
    if (url.isEmpty()) {
        showNotice("URL不能为空！");
        return;
    }
    giveUpChildren(this, surfaceName()); // its player goes later
    auto *surface = new VLCWidget(ui.widget);
    surface->setOwner(this);
    surface->setObjectName(surfaceName());
    surface->setGeometry(0, 0, ui.widget->width(), ui.widget->height());
    surface->show();
    surface->setUrl(url, false, 0, true);
    resizeEvent(nullptr);
}

void videoFrom::resizeEvent(QResizeEvent *)
{
    const QRect picture = pictureIn(ui.widget->size());
    for (QWidget *child : findChildren<QWidget *>()) {
        if (!child->objectName().contains(surfaceName()))
            continue;
        child->setFixedSize(picture.size());
        child->setGeometry(picture);
    }
}

/// The window and a player in it go on, unseen; the next one is made anew.
void videoFrom::closeEvent(QCloseEvent *)
{
    if (m_mainWindow)
        m_mainWindow->videoWindow = nullptr;
}
