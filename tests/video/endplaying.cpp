// The program, played by itself: opens the video window on an address, presses play and closes the
// main window after so many milliseconds.

#include "foundation/QGlobal.h"
#include "shell/NacelleBench.h"
#include "video/videoFrom.h"

#include <QApplication>
#include <QLineEdit>
#include <QPushButton>
#include <QTimer>

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    NacelleBench window;
    const QStringList arguments = QCoreApplication::arguments();
    QGlobal::instance()->ffmpegEngine = arguments.at(1) == QLatin1String("ffmpeg");
    window.show();
    window.findChild<QPushButton *>(QStringLiteral("pushButton_2"))->click();
    window.findChild<QPushButton *>(QStringLiteral("pushButton_video"))->click();
    window.videoWindow->findChild<QLineEdit *>(QStringLiteral("lineEdit"))
        ->setText(arguments.at(2));
    window.videoWindow->findChild<QPushButton *>(QStringLiteral("pushButton_Refresh"))->click();
    QTimer::singleShot(arguments.at(3).toInt(), &window, &QWidget::close);
    return QApplication::exec();
}
