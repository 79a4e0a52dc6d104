#pragma once

#include "bench/measure.h"

#include <QApplication>
#include <QEvent>
#include <QMainWindow>

#include <cstdio>

/// Ends the program at the first paint of a window, and prints its resident memory in kilobytes.
class FirstPaint : public QObject
{
public:
    using QObject::QObject;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::Paint && qobject_cast<QMainWindow *>(watched))
            QTimer::singleShot(0, qApp, tell);
        return false;
    }

private:
    static void tell()
    {
        std::printf("%s\n", qPrintable(QString::number(residentBytes() / 1024)));
        std::fflush(stdout);
        QCoreApplication::quit();
    }
};
