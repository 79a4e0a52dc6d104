#include "foundation/relabel.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QLabel>
#include <QLayout>
#include <QLineEdit>
#include <QScrollArea>

#include <algorithm>

QWidget *widgetOf(const QWidget *form, const char *object)
{
    auto *widget = form->findChild<QWidget *>(QLatin1String(object));
    Q_ASSERT_X(widget, "widgetOf", object);
    return widget;
}

QHash<QString, QWidget *> widgetsByName(const QWidget *form)
{
    QHash<QString, QWidget *> widgets;
    for (QWidget *widget : form->findChildren<QWidget *>()) {
        if (!widget->objectName().isEmpty())
            widgets.insert(widget->objectName(), widget);
    }
    return widgets;
}

QString textOf(const QWidget *widget)
{
    return widget ? widget->property("text").toString() : QString();
}

void setTextOf(QWidget *widget, const QString &text)
{
    if (auto *edit = qobject_cast<QLineEdit *>(widget)) {
        if (edit->text() != text)
            edit->setText(text);
    } else if (auto *label = qobject_cast<QLabel *>(widget)) {
        label->setText(text);
    } else if (auto *button = qobject_cast<QAbstractButton *>(widget)) {
        button->setText(text);
    }
}

void relabelItems(QComboBox *list, std::initializer_list<const char *> keys)
{
    const int chosen = list->currentIndex();
    list->clear();
    for (const char *key : keys)
        list->addItem(translated(key));
    list->setCurrentIndex(chosen);
}

/// Outside of its window a widget loses its look, part by part, and a scroll area measures all that
/// it holds for each part that has changed.
static void stopMeasuring(const QWidget *widget)
{
    for (QScrollArea *area : widget->findChildren<QScrollArea *>())
        delete area->widget()->layout();
}

void giveUpChildren(QWidget *host, const QString &name)
{
    QList<QWidget *> widgets = host->findChildren<QWidget *>(name);
    std::reverse(widgets.begin(), widgets.end());
    for (QWidget *widget : widgets) {
        stopMeasuring(widget);
        if (widget->parent())
            widget->setParent(nullptr);
        widget->deleteLater();
    }
}
