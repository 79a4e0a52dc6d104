#pragma once

#include "ui_controlCmd.h"

#include <QWidget>

#include <array>

class dataPacketAnalysis;

/// The command dialog: a command picked by name, its parameters, and its bytes as a preview. With
/// "确定" the command goes into the host form of the owning workbench. Made anew for each opening
/// without a parent, and gone with its closing.
class controlCmd : public QWidget
{
    Q_OBJECT

public:
    explicit controlCmd(QWidget *parent = nullptr);

    void setDataPacketAnalysis(dataPacketAnalysis *page);

    /// Opens the dialog on a command area given as hexadecimal text. Missing bytes read as zero. A
    /// command that isn't offered leaves the combo box empty and its filled fields disabled.
    void setCommandText(const QString &text);

public slots:
    void ok();
    void indexChange(int index);
    void onText4Changed(QString text);
    // Nothing is connected to these two.
    void onText5Changed(QString text);
    void onText6Changed(QString text);

private:
    void connectSlots();
    void blankRows();
    QByteArray currentBytes() const;
    void showPreview();

    dataPacketAnalysis *m_page = nullptr;
    Ui::controlCmdClass ui;
    std::array<QLabel *, 6> m_labels = {};
    std::array<QLineEdit *, 6> m_edits = {};
};
