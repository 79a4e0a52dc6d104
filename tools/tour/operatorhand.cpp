#include "tools/tour/operatorhand.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QPointer>
#include <QScreen>
#include <QScrollArea>
#include <QStyle>
#include <QStyleOptionButton>
#include <QTest>
#include <QWindow>

namespace tour {

namespace {

constexpr int kPatienceMs = 30000;
constexpr int kWindowManagerMs = 5000;

QString nameOf(const QWidget *widget)
{
    return widget->objectName().isEmpty() ? QLatin1String(widget->metaObject()->className())
                                          : widget->objectName();
}

QWindow *windowOf(const QWidget *widget)
{
    return widget->window()->windowHandle();
}

QPoint placeInWindow(QWidget *widget, const QPoint &place)
{
    return widget->mapTo(widget->window(), place);
}

/// Whether a press at that place of the widget would reach it.
bool isReachable(QWidget *widget, const QPoint &place)
{
    const QWidget *modal = QApplication::activeModalWidget();
    if (modal && modal->window() != widget->window() && !QApplication::activePopupWidget())
        return false;
    const QWidget *child = widget->window()->childAt(placeInWindow(widget, place));
    const QWidget *hit = child ? child : widget->window();
    return widget->isVisible() && widget->isEnabled() &&
           (hit == widget || widget->isAncestorOf(hit));
}

void awaitReachable(QWidget *widget, const QPoint &place)
{
    reveal(widget);
    await(QStringLiteral("%1 can be clicked").arg(nameOf(widget)),
          [&] { return isReachable(widget, place); });
}

/// The part of the widget that takes a click: a check box is wider than its box and text.
QRect targetOf(QWidget *widget)
{
    if (!qobject_cast<QCheckBox *>(widget))
        return widget->rect();
    QStyleOptionButton option;
    option.initFrom(widget);
    return widget->style()->subElementRect(QStyle::SE_CheckBoxIndicator, &option, widget);
}

void selectAll(QWidget *field)
{
    click(field);
    press(field, Qt::Key_A, Qt::ControlModifier);
}

QWidget *listOf(QComboBox *box)
{
    QWidget *popup = QApplication::activePopupWidget();
    return popup && popup->isAncestorOf(box->view()) ? popup : nullptr;
}

} // namespace

void await(const QString &claim, const std::function<bool()> &holds)
{
    if (!QTest::qWaitFor(holds, kPatienceMs))
        throw TourFailure(QStringLiteral("this didn't come true: ") + claim);
}

QWidget *findWidget(QWidget *scope, const char *name)
{
    if (auto *found = scope->findChild<QWidget *>(QLatin1String(name)))
        return found;
    throw TourFailure(
        QStringLiteral("there is no %1 in %2").arg(QLatin1String(name), nameOf(scope)));
}

void fillScreen(QWidget *window)
{
    window->show();
    if (!QTest::qWaitForWindowExposed(window))
        throw TourFailure(QStringLiteral("the window doesn't show"));
    const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
    const auto isWide = [&] { return window->frameGeometry().width() >= screen.width(); };
    if (QTest::qWaitFor(isWide, kWindowManagerMs))
        return;
    window->setGeometry(screen); // no window manager has granted it
    await(QStringLiteral("the window fills the screen"),
          [&] { return window->width() == screen.width(); });
}

void reveal(QWidget *widget)
{
    for (QWidget *up = widget->parentWidget(); up; up = up->parentWidget())
        if (auto *area = qobject_cast<QScrollArea *>(up))
            area->ensureWidgetVisible(widget);
}

void click(QWidget *widget)
{
    clickAt(widget, targetOf(widget).center());
}

void clickAt(QWidget *widget, const QPoint &place)
{
    awaitReachable(widget, place);
    QTest::mouseClick(windowOf(widget), Qt::LeftButton, Qt::NoModifier,
                      placeInWindow(widget, place));
}

void pressAt(QWidget *widget, const QPoint &place)
{
    awaitReachable(widget, place);
    QTest::mousePress(windowOf(widget), Qt::LeftButton, Qt::NoModifier,
                      placeInWindow(widget, place));
}

void moveTo(QWidget *widget, const QPoint &place)
{
    QTest::mouseMove(windowOf(widget), placeInWindow(widget, place));
}

void releaseAt(QWidget *widget, const QPoint &place)
{
    QTest::mouseRelease(windowOf(widget), Qt::LeftButton, Qt::NoModifier,
                        placeInWindow(widget, place));
}

void clickToClose(QWidget *button)
{
    const QPointer<QWidget> window = button->window();
    const QString name = nameOf(window);
    click(button);
    await(name + QStringLiteral(" closes"), [&] { return !window || !window->isVisible(); });
}

void rest(QWidget *window)
{
    if (QGuiApplication::mouseButtons() == Qt::NoButton && !QApplication::activePopupWidget())
        QTest::mouseMove(windowOf(window), window->rect().bottomRight());
}

void press(QWidget *widget, Qt::Key key, Qt::KeyboardModifiers modifiers)
{
    QTest::keyClick(windowOf(widget), key, modifiers);
}

void type(QWidget *field, const QString &text)
{
    selectAll(field);
    press(field, Qt::Key_Delete);
    for (const QChar letter : text)
        QTest::keyClick(windowOf(field), letter.toLatin1());
}

void paste(QWidget *field, const QString &text)
{
    QApplication::clipboard()->setText(text);
    selectAll(field);
    press(field, Qt::Key_V, Qt::ControlModifier);
}

void openList(QComboBox *box)
{
    click(box);
    await(QStringLiteral("the list of %1 opens").arg(nameOf(box)),
          [box] { return listOf(box) != nullptr; });
    // A real mouse goes over to the list; without this the box would look pointed at for good.
    QEvent leave(QEvent::Leave);
    QCoreApplication::sendEvent(box, &leave);
}

void takeFromList(QComboBox *box, const QString &entry)
{
    const int wanted = box->findText(entry);
    if (wanted < 0)
        throw TourFailure(QStringLiteral("%1 doesn't offer \"%2\"").arg(nameOf(box), entry));
    QWidget *list = listOf(box);
    for (int row = box->view()->currentIndex().row(); row != wanted; row += row < wanted ? 1 : -1)
        press(list, row < wanted ? Qt::Key_Down : Qt::Key_Up);
    press(list, Qt::Key_Return);
    await(QStringLiteral("%1 reads \"%2\"").arg(nameOf(box), entry),
          [&] { return !listOf(box) && box->currentText() == entry; });
}

} // namespace tour
