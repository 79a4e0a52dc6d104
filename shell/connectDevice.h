#pragma once

#include "ui_connectDevice.h"

#include <QList>
#include <QSerialPortInfo>
#include <QWidget>

#include <future>

class NacelleBench;

/// The left third of the main window: the form that picks and opens a link, and below it the log
/// of every frame with the buttons that walk through the stored ones. Holds no link and no frame:
/// it checks what the operator typed, calls the main window and shows text.
class connectDevice : public QWidget
{
    Q_OBJECT

public:
    explicit connectDevice(QWidget *parent = nullptr);

    void setMainWindow(NacelleBench *window);

    /// Appends an entry to the log; the view follows.
    void appendLog(const QString &text);

    /// Shows the history buttons for page 1, the console, and hides them for any other. Empties
    /// the log's display.
    void setPageMode(int mode);

    /// Selects a stored entry. Positions count the log's text as if nothing had ever left the
    /// display; `total` is the end of the newest one. Returns -1 when the text is gone, else 0.
    int selectLogRange(int start, int end, int total);

    /// False while the history view is shown.
    bool consoleInFront() const { return m_consoleInFront; }

    /// What the buttons below the log need.
    int buttonRowWidth() const { return ui.widget_3->layout()->minimumSize().width(); }

    /// Renews all texts in the current language.
    void retranslate();

public slots:
    void connectOnlineDevice(bool isConnect);
    void disconnectOnlineDevice();
    void clearData();
    void switchData();
    void upData();
    void nextData();
    void indexChange(int index);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void connectSlots();
    void setEntryRules(std::future<QList<QSerialPortInfo>> &ports);
    void setFixedSizes();
    void appendPorts();
    void refillLinks();
    void openLink();
    void refuse(const char *notice);
    const char *tcpFault() const;
    const char *udpFault() const;

    NacelleBench *m_window = nullptr;
    bool m_consoleInFront = true;
    Ui::connectDeviceClass ui;
    QList<QSerialPortInfo> m_ports;
};
