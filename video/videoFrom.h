#pragma once

#include "video/pickframe.h"

#include "ui_videoFrom.h"

#include <QString>
#include <QWidget>

class NacelleBench;
class flowAnalysis;

/// The operator's window on the pod's picture: plays a typed address and turns picks into
/// commands, which take what they need from the console page. It has no parent; a closed one is
/// kept to the end of the process, with its player running. GUI thread.
class videoFrom : public QWidget
{
    Q_OBJECT

public:
    explicit videoFrom(QWidget *parent = nullptr);

    void setOwners(NacelleBench *window, flowAnalysis *page);
    void setFrameTexts(const QString &carrier, const QString &cameraKk, const QString &version);
    /// Commands are possible only while a console page is in front.
    void setCommandButtonsEnabled(bool enabled);
    /// Shows a pick, each value in parts of 10000 of the picture's width or height.
    void showCoordinates(quint16 x0, quint16 y0, quint16 x1, quint16 y1);
    /// Whether a drag shows a rubber band.
    bool rectangleMode() const { return m_rectangleMode; }
    /// Renews all texts in the current language, but for the captions of the read-outs.
    void retranslate();

public slots:
    void SelectPointing(bool isSelected);
    void SelectTracking(bool isSelected);
    void send();
    void quit();
    void refreshURL();
    void switchMode();

protected:
    /// Puts the surface in the middle of its area at 16:9; `event` may be null.
    void resizeEvent(QResizeEvent *event) override;
    void closeEvent(QCloseEvent *event) override;

private:
    void connectSlots();
    video::Pick chosenPick() const;
    void readFrameTexts();
    FrameTexts frameTexts() const;
    void sendPick(bool start);

    NacelleBench *m_mainWindow = nullptr;
    flowAnalysis *m_flowPage = nullptr; ///< gone while the buttons are disabled
    QString m_carrierText;
    QString m_cameraKkText;
    QString m_versionText;
    bool m_rectangleMode = false;
    int m_pipStep = 1; ///< 1 to 4
    Ui::videoFromClass ui;
};
