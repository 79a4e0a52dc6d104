#pragma once

#include "protocol/gcuframe.h"
#include "protocol/hostframe.h"

#include "ui_dataPacketAnalysis.h"

#include <QByteArray>
#include <QWidget>

#include <vector>

class NacelleBench;

/// The frame workbench: a host frame on the left and a GCU frame on the right, each taken apart
/// field by field. It holds no frame: the texts of the form are the data, and a frame is built
/// from them at the moment of need.
class dataPacketAnalysis : public QWidget
{
    Q_OBJECT

public:
    static constexpr int kWholeView = 0;
    static constexpr int kHistoryView = 1;

    explicit dataPacketAnalysis(QWidget *parent = nullptr);

    void setMainWindow(NacelleBench *window);

    /// With `kHistoryView`, hides frame texts and buttons, so that the page shows a stored frame as
    /// a form only.
    void setHistoryView(int view);

    /// Puts a frame from the link into the right text box and form.
    void showReceivedFrame(const QByteArray &frame);

    /// Fills a form from a frame of any length, which is shown as it says of itself.
    void showHostFrame(const QByteArray &frame);
    void showGcuFrame(const QByteArray &frame);

    /// The frame that the form says, CRC included.
    QByteArray buildHostFrame() const;

    /// Takes over a command by its name and parameter texts.
    void applyCommand(const QString &name, const QString &p1, const QString &p2, const QString &p3,
                      const QString &p4, const QString &p5, const QString &p6);

    /// Renews all texts in the current language; what was typed stays.
    void retranslate();

public slots:
    void openCmd();
    void sendCmd();
    void analysisSend();
    void analysisRev();
    void createData();
    void sendNull();
    void lineEditReturnPressed();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    /// The objects of the form that stand for one field; null where it has none.
    struct FieldWidgets
    {
        const protocol::Field *field;
        QLabel *bytes;
        QWidget *name;
        QWidget *value;
        QWidget *hex;
    };
    using Form = std::vector<FieldWidgets>;

    template <typename Rows>
    Form bindForm(const Rows &rows);
    void connectSlots();
    void setFixedSizes();
    void showFields(const Form &form, const QByteArray &frame);
    void nameRow(const FieldWidgets &row);
    void showVerdict(QLabel *label, const QByteArray &frame);

    NacelleBench *m_window = nullptr;
    Ui::dataPacketAnalysisClass ui;
    Form m_hostForm;
    Form m_gcuForm;
};
