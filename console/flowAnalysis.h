#pragma once

#include "console/commandframe.h"

#include "ui_flowAnalysis.h"

#include <QHash>
#include <QWidget>

#include <array>
#include <memory>

class NacelleBench;
class QAbstractButton;
class QButtonGroup;
class QLabel;
class QSlider;
struct SendFlags;

/// The flow console: stands in for the carrier aircraft and sends a whole host frame about every
/// 30 ms while it runs. Owned by the main window's page host and thrown away at every page switch.
/// All of it runs on the GUI thread but the worker of a run, which sleeps and emits.
class flowAnalysis : public QWidget
{
    Q_OBJECT

public:
    explicit flowAnalysis(QWidget *parent = nullptr);
    ~flowAnalysis() override;

    /// Must be called before the console is started.
    void setMainWindow(NacelleBench *window);

    /// One whole host frame, CRC included, from the present state of the form. An idle one carries
    /// the empty command whatever is selected. GUI thread only.
    QByteArray buildCommandFrame(bool idle) const;

    /// Offsets 12 to 68 of a frame as hexadecimal text.
    QString carrierBlockText() const;

    /// Texts of the camera number and version fields as they stand.
    QString cameraKkText() const;
    QString versionText() const;

    /// Takes the work mode that the pod reports: shows its control panel, checks its button.
    void setPodMode(qint8 mode);

    /// Clears the selected command.
    void clearPendingCommand();

    /// Ends a run; the page learns it from the worker's last emission.
    void stopRunning();

    /// Ends a run for good: nothing is emitted or sent any more.
    void giveUp();

    /// Renews all texts in the current language.
    void retranslate();

    QString lastSentText; ///< frame that the cycle sent last, as hexadecimal text without blanks

signals:
    void signals_sendCmd(); ///< emitted by the worker of a run

private slots:
    void openVideo();
    void start();
    void slotsSendCmd();
    void horizontalSliderValueChanged(int value);
    void horizontalSlider2ValueChanged(int value);

private:
    void connectSlots();
    void setEntryRules();
    void groupButtons();
    void setUpSliders();
    void setFixedSizes();
    void showPanel(ControlPanel panel);
    void sendFrame(bool idle);
    void startWorker();
    void releaseSlider(const QString &name);
    QWidget *object(const char *name) const;
    QLineEdit *lineEdit(const char *name) const;

    NacelleBench *mainWindow = nullptr;
    std::shared_ptr<SendFlags> m_flags;
    qint8 podMode = kNoMode;
    QHash<QString, QWidget *> m_objects; ///< of the form by name: a frame asks for many, often
    std::array<QAbstractButton *, kConsoleCommandCount> m_buttons = {};
    QButtonGroup *commandGroup = nullptr;
    QButtonGroup *modeGroup = nullptr;
    Ui::flowAnalysisClass ui;
};
