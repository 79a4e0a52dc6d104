#pragma once

#include <QString>
#include <QWidget>

#include <functional>
#include <stdexcept>

class QComboBox;
class QPoint;

namespace tour {

/// What a step claims and what didn't come true.
class TourFailure : public std::runtime_error
{
public:
    explicit TourFailure(const QString &reason) : std::runtime_error(reason.toStdString()) {}
};

/// Runs the event loop until `holds` does. Throws a `TourFailure` with `claim` if it doesn't within
/// a generous time.
void await(const QString &claim, const std::function<bool()> &holds);

/// The widget of that name and kind below `scope`; throws if there is none.
QWidget *findWidget(QWidget *scope, const char *name);
template <typename T>
T *find(QWidget *scope, const char *name)
{
    if (T *found = qobject_cast<T *>(findWidget(scope, name)))
        return found;
    throw TourFailure(QStringLiteral("%1 is of another kind").arg(QLatin1String(name)));
}

/// Shows a window that asks to be maximised, on the whole screen in any case.
void fillScreen(QWidget *window);

/// Scrolls so far that the widget can be seen.
void reveal(QWidget *widget);

// Mouse and keys go to the window and not to the widget: what is covered, disabled or behind a
// modal box doesn't get them, and a press that would go nowhere is a failure.
void click(QWidget *widget);
void clickAt(QWidget *widget, const QPoint &place);
void pressAt(QWidget *widget, const QPoint &place);
void moveTo(QWidget *widget, const QPoint &place);
void releaseAt(QWidget *widget, const QPoint &place);
/// Clicks a button that closes its window and waits until that is closed. It may be gone then.
void clickToClose(QWidget *button);
/// Moves the idle mouse into a corner of the window, so that nothing shows as pointed at.
void rest(QWidget *window);
/// Presses a key in the widget that has the focus in this one's window.
void press(QWidget *widget, Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
/// Clicks into a field and types in place of what it holds.
void type(QWidget *field, const QString &text);
/// Clicks into a field and pastes in place of what it holds.
void paste(QWidget *field, const QString &text);
/// Opens the list of a combo box.
void openList(QComboBox *box);
/// Goes through the open list of a combo box by the arrow keys and takes an entry.
void takeFromList(QComboBox *box, const QString &entry);

} // namespace tour
