#pragma once

#include "foundation/PopFrame.h"
#include "shell/NacelleBench.h"

#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRegularExpression>
#include <QTest>

#include <memory>

/// A window of the real program with access to its widgets by object name, as its user has it.
class Bench
{
public:
    Bench() : m_window(std::make_unique<NacelleBench>())
    {
        m_window->show();
        if (!QTest::qWaitForWindowExposed(m_window.get()))
            qFatal("the window doesn't show");
    }

    NacelleBench *operator->() { return m_window.get(); }
    NacelleBench *window() { return m_window.get(); }

    template <typename T>
    T *find(const char *name)
    {
        T *found = m_window->findChild<T *>(QLatin1String(name));
        if (!found)
            qFatal("no widget %s", name);
        return found;
    }

    void click(const char *button) { QTest::mouseClick(find<QPushButton>(button), Qt::LeftButton); }

    QString log() { return find<QPlainTextEdit>("textEdit")->toPlainText(); }

    QString selection() { return find<QPlainTextEdit>("textEdit")->textCursor().selectedText(); }

    /// Opens a link to this machine as the operator does, and closes the notice of its success.
    bool plug(const QString &link, const QString &port1 = {}, const QString &port2 = {})
    {
        auto *links = find<QComboBox>("comboBox");
        if (links->findText(link) < 0)
            links->addItem(link);
        links->setCurrentText(link);
        find<QLineEdit>("LineEdit_RemoteIp")->setText(QStringLiteral("127.0.0.1"));
        find<QLineEdit>("LineEdit_Port1")->setText(port1);
        find<QLineEdit>("LineEdit_Port2")->setText(port2);
        if (link != QLatin1String("UDP")) { // the others are connected to a slot that isn't there
            expectWarning("No such slot");
            expectWarning("receiver name");
        }
        click("pushButton_Conn");
        return QTest::qWaitFor([] { return takeNotices().join(QString()).contains("成功"); });
    }

    static void expectWarning(const char *pattern)
    {
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QString::fromLatin1(pattern)));
    }

    /// Texts of the message boxes on screen, which are closed by their own button.
    static QStringList takeNotices()
    {
        QStringList notices;
        for (QWidget *widget : QApplication::topLevelWidgets()) {
            auto *box = qobject_cast<PopFrame *>(widget);
            if (!box || !box->isVisible())
                continue;
            notices << box->findChild<QLabel *>(QStringLiteral("label_1"))->text();
            QTest::mouseClick(box->findChild<QPushButton *>(QStringLiteral("pushButtonOK")),
                              Qt::LeftButton);
        }
        return notices;
    }

private:
    std::unique_ptr<NacelleBench> m_window;
};
