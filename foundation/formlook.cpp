#include "foundation/formlook.h"

#include "foundation/QGlobal.h"
#include "foundation/stylesheets.h"

#include <QApplication>
#include <QWidget>

namespace {

void changeSheet(QWidget *widget, const QString &sheet)
{
    if (sheet == widget->styleSheet())
        return;
    // Of a second sheet that comes before this, the toolkit loses the font.
    widget->ensurePolished();
    widget->setStyleSheet(sheet);
}

} // namespace

void setBaseFont()
{
    QFont font = QApplication::font();
    font.setPixelSize(kBaseText);
    QApplication::setFont(font);
}

void dressForm(QWidget *form)
{
    const QGlobal *global = QGlobal::instance();
    changeSheet(form, formSheet(form->styleSheet(), *global->palette, global->scaleFactor));
}

void dressPage(QWidget *page, const char *rules)
{
    changeSheet(page->parentWidget() ? page->parentWidget() : page,
                recoloured(QLatin1String(rules), *QGlobal::instance()->palette));
}

void scaleText(QWidget *widget)
{
    changeSheet(widget, widget->styleSheet() + textRule(QGlobal::instance()->scaleFactor));
}

void recolour(QWidget *widget)
{
    changeSheet(widget, recoloured(widget->styleSheet(), *QGlobal::instance()->palette));
}
