// The program, played by itself: opens the video window on an address, presses play and closes the
// main window after so many milliseconds. With a further argument it does so beside a run of the
// console, in a pool of one thread, with a surface that has just been replaced. The rest of it is
// the program's own main().

#include "foundation/QGlobal.h"
#include "shell/NacelleBench.h"
#include "video/videoFrom.h"

#include <QApplication>
#include <QLineEdit>
#include <QPushButton>
#include <QThreadPool>
#include <QTimer>

#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/lsan_interface.h>

// The process ends while libVLC's threads come and go. The search for leaks falls over one of them
// now and then.
int __lsan_is_turned_off()
{
    return 1;
}
#endif

static NacelleBench *theWindow()
{
    for (QWidget *widget : QApplication::topLevelWidgets())
        if (auto *window = qobject_cast<NacelleBench *>(widget))
            return window;
    qFatal("the program has no window");
}

static void playAndClose()
{
    NacelleBench *window = theWindow();
    const QStringList arguments = QCoreApplication::arguments();
    QGlobal::instance()->ffmpegEngine = arguments.at(1) == QLatin1String("ffmpeg");
    window->findChild<QPushButton *>(QStringLiteral("pushButton_2"))->click();
    window->findChild<QPushButton *>(QStringLiteral("pushButton_video"))->click();
    const QWidget *video = window->videoWindow;
    video->findChild<QLineEdit *>(QStringLiteral("lineEdit"))->setText(arguments.at(2));
    auto *play = video->findChild<QPushButton *>(QStringLiteral("pushButton_Refresh"));
    play->click();
    if (arguments.size() > 4) {
        QThreadPool::globalInstance()->setMaxThreadCount(1);
        window->findChild<QPushButton *>(QStringLiteral("pushButton_start"))->click();
        play->click();
    }
    QTimer::singleShot(arguments.at(3).toInt(), window, &QWidget::close);
}

static void atStart()
{
    QTimer::singleShot(0, playAndClose);
}
Q_COREAPP_STARTUP_FUNCTION(atStart)
