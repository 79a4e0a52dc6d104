#include "foundation/formlook.h"

#include "foundation/QGlobal.h"
#include "foundation/stylesheets.h"

#include <QApplication>
#include <QWidget>

void setBaseFont()
{
    QFont font = QApplication::font();
    font.setPixelSize(kBaseText);
    QApplication::setFont(font);
}

void dressForm(QWidget *form)
{
    const QGlobal *global = QGlobal::instance();
    // Of a second sheet that comes before this, the toolkit loses the font.
    form->ensurePolished();
    form->setStyleSheet(formSheet(form->styleSheet(), *global->palette, global->scaleFactor));
}

void scaleText(QWidget *widget)
{
    widget->setStyleSheet(widget->styleSheet() + textRule(QGlobal::instance()->scaleFactor));
}

void recolour(QWidget *widget)
{
    widget->setStyleSheet(recoloured(widget->styleSheet(), *QGlobal::instance()->palette));
}
