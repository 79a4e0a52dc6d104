#include "tools/tour/places.h"

#include "foundation/PopFrame.h"
#include "shell/NacelleBench.h"
#include "tools/tour/operatorhand.h"

#include <QApplication>
#include <QWindow>

#include <cstdio>

namespace tour {

namespace {

/// The nearest class of ours that a widget belongs to.
const char *ownClass(const QWidget *widget)
{
    const QWidget *up = widget->parentWidget();
    while (up->parentWidget() && up->metaObject()->className()[0] == 'Q')
        up = up->parentWidget();
    return up->metaObject()->className();
}

void tellWidgets(const QWidget *window)
{
    for (const QWidget *widget : window->findChildren<QWidget *>()) {
        const QPoint place = widget->mapTo(window, widget->rect().center());
        if (widget->isVisible() && !widget->objectName().isEmpty())
            std::printf("%s %s %d %d\n", ownClass(widget), qPrintable(widget->objectName()),
                        place.x(), place.y());
    }
}

/// The open window of that class.
QWidget *opened(const char *className)
{
    QWidget *found = nullptr;
    await(QStringLiteral("a %1 opens").arg(QLatin1String(className)), [&] {
        for (QWidget *window : QApplication::topLevelWidgets())
            if (window->inherits(className) && window->isVisible())
                found = window;
        return found && found->windowHandle()->isExposed();
    });
    return found;
}

} // namespace

void printPlaces()
{
    NacelleBench bench;
    fillScreen(&bench);
    click(findWidget(&bench, "pushButton_2"));
    await(QStringLiteral("the console is in front"),
          [&] { return bench.findChild<QWidget *>("pushButton_video"); });
    tellWidgets(&bench);
    click(findWidget(&bench, "pushButton_video"));
    tellWidgets(opened("videoFrom"));
    showNotice("TCP连接成功！");
    tellWidgets(opened("PopFrame"));
}

} // namespace tour
