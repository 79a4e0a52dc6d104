#include "shell/NacelleBench.h"
#include "video/VLCWidget.h"

#include <QApplication>

namespace {

VLCWidget *anySurface()
{
    for (QWidget *widget : QApplication::allWidgets())
        if (auto *surface = qobject_cast<VLCWidget *>(widget))
            return surface;
    return nullptr;
}

} // namespace

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    NacelleBench window;
    window.show();
    const int code = QApplication::exec();
    // A closed window stops no player. One that still draws while its window and the graphics
    // libraries are taken down would bring the process down with them.
    while (VLCWidget *surface = anySurface())
        delete surface;
    return code;
}
