#pragma once

#include "foundation/QGlobal.h"

#include <QHash>
#include <QString>

class QComboBox;
class QWidget;

/// A widget of a form by its object name, and the key of its text.
struct Caption
{
    const char *object;
    const char *key;
};

/// The widget of that name in a form, which must have one.
QWidget *widgetOf(const QWidget *form, const char *object);

/// All widgets of a form by their object names. For a table's worth of names: each search by name
/// goes through half of the form.
QHash<QString, QWidget *> widgetsByName(const QWidget *form);

/// Text of a label, a button or a line edit; empty for none.
QString textOf(const QWidget *widget);

/// Sets the text of a label, a button or a line edit. One that is there already costs nothing.
void setTextOf(QWidget *widget, const QString &text);

/// Sets each caption of a table in the current language.
template <typename Captions>
void relabel(const QWidget *form, const Captions &captions)
{
    for (const Caption &caption : captions)
        setTextOf(widgetOf(form, caption.object), translated(caption.key));
}

/// Renews the items of a list in the current language; the chosen one stays.
void relabelItems(QComboBox *list, std::initializer_list<const char *> keys);

/// Takes all widgets of that name out of a widget at once, the last first; the event loop deletes
/// them later.
void giveUpChildren(QWidget *host, const QString &name);
