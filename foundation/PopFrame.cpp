#include "foundation/PopFrame.h"

#include "foundation/QGlobal.h"

#include <QTimer>

PopFrame::PopFrame(QWidget *parent) : QWidget(parent)
{
    ui.setupUi(this);
    setWindowTitle(translated("提示"));
    setWindowModality(Qt::ApplicationModal);
    ui.label_1->setWordWrap(true);
    ui.pushButtonOK->setText(translated("确定"));
    ui.pushButtonCancel->setText(translated("取消"));
    setWindowFlags(Qt::FramelessWindowHint);

    setStyleSheet("background-color:" + colourOf("main"));
    ui.label_1->setStyleSheet("color:" + colourOf("bright"));
    ui.pushButtonOK->setStyleSheet("QPushButton{background-color:" + colourOf("main") +
                                   ";color:" + colourOf("bright") + ";border:1px solid" +
                                   colourOf("monitor") + ";}");
    ui.pushButtonCancel->setStyleSheet("QPushButton{background-color:" + colourOf("monitor") +
                                       "; color:" + colourOf("bright") + "; border:1px solid" +
                                       colourOf("monitor") + "; }");

    connect(ui.pushButtonOK, &QPushButton::clicked, this, &PopFrame::ok);
    connect(ui.pushButtonCancel, &QPushButton::clicked, this, &PopFrame::close);
}

void PopFrame::setMessage(const QString &message)
{
    ui.label_1->setText(message);
}

void PopFrame::ok()
{
    close();
}

/// A closed box stays, but not the 300 KB of its picture, which a day's notices would add up to
/// much.
void PopFrame::closeEvent(QCloseEvent *event)
{
    QWidget::closeEvent(event);
    QTimer::singleShot(0, this, [this] {
        if (!isVisible())
            destroy();
    });
}

void showNotice(const char *key)
{
    auto *box = new PopFrame(nullptr);
    box->setMessage(translated(key));
    box->show();
}
