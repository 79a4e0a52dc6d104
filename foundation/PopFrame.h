#pragma once

#include "ui_PopFrame.h"

#include <QWidget>

/// The message box: every notice to the operator goes through it. Used as new without a parent,
/// `setMessage`, `show`; nobody keeps the pointer. A closed box stays allocated to the end of the
/// process, so that a caller that still holds it never meets a freed box; the screen's window and
/// picture under it are given back.
class PopFrame : public QWidget
{
    Q_OBJECT

public:
    explicit PopFrame(QWidget *parent);

    void setMessage(const QString &message);
    void setContext(void *context) { m_context = context; }

public slots:
    void ok();

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    // Nothing reads these four.
    void *m_context = nullptr;
    int m_kind = 1;
    QString m_detail;
    int m_result = 0;
    Ui::PopFrameClass ui;
};

/// Shows the translation of `key` in a new message box.
void showNotice(const char *key);
