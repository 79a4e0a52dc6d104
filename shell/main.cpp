#include "shell/NacelleBench.h"

#include <QApplication>

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    NacelleBench window;
    window.show();
    return QApplication::exec();
}
