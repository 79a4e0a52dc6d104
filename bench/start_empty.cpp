// An empty window as the toolkit starts it by default, up to its first paint.

#include "bench/firstpaint.h"

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    application.installEventFilter(new FirstPaint(&application));
    QMainWindow window;
    window.showMaximized();
    return QApplication::exec();
}
