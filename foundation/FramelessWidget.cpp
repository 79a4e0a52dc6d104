#include "foundation/FramelessWidget.h"

#include <QApplication>
#include <QMouseEvent>
#include <QWindow>

#include <utility>

#ifdef Q_OS_WIN
#include <windows.h>
#endif

FramelessWidget::FramelessWidget(QWidget *parent) : QWidget(parent), flags(windowFlags())
{
    setWindowFlags(flags | Qt::FramelessWindowHint);
    installEventFilter(this);
#ifdef Q_OS_WIN
    const auto window = reinterpret_cast<HWND>(winId());
    SetWindowLongA(window, GWL_STYLE,
                   GetWindowLongA(window, GWL_STYLE) | WS_MAXIMIZEBOX | WS_THICKFRAME);
#endif
}

void FramelessWidget::setPadding(int padding)
{
    this->padding = padding;
}

void FramelessWidget::setMoveEnable(bool moveEnable)
{
    this->moveEnable = moveEnable;
}

void FramelessWidget::setResizeEnable(bool resizeEnable)
{
    this->resizeEnable = resizeEnable;
}

void FramelessWidget::setTitleBar(QWidget *titleBar)
{
    this->titleBar = titleBar;
    if (titleBar)
        titleBar->installEventFilter(this);
}

bool FramelessWidget::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == this && event->type() == QEvent::WindowStateChange)
        followWindowState();
    if (watched == windowHandle() && answerPointer(event))
        return true;
    return QWidget::eventFilter(watched, event);
}

void FramelessWidget::showEvent(QShowEvent *event)
{
    setAttribute(Qt::WA_Mapped, true);
#ifndef Q_OS_WIN // there the system does it by the answered hit test
    // The pointer is looked at before the widgets see it, as the system does with a real frame.
    if (QWindow *window = windowHandle())
        window->installEventFilter(this);
#endif
    QWidget::showEvent(event);
}

bool FramelessWidget::nativeEvent(const QByteArray &eventType, void *message, long *result)
{
#ifdef Q_OS_WIN
    if (eventType == "windows_generic_MSG") {
        const MSG &received = *static_cast<MSG *>(message);
        return answerMessage(messageAction(received.message, received.wParam),
                             hitPoint(received.lParam), result);
    }
#endif
    return QWidget::nativeEvent(eventType, message, result);
}

/// Whether a message of Windows is dealt with; `result` is its answer.
bool FramelessWidget::answerMessage(MessageAction action, const QPoint &globalPoint, long *result)
{
    switch (action) {
    case MessageAction::TakeWholeArea:
        *result = 0;
        return true;
    case MessageAction::HitTest:
        *result = static_cast<long>(zoneAt(mapFromGlobal(globalPoint)));
        return *result != 0;
    case MessageAction::Minimise:
        showMinimized();
        return false;
    case MessageAction::Restore:
        showNormal();
        return false;
    case MessageAction::Pass:
        return false;
    }
    return false;
}

HitZone FramelessWidget::zoneAt(const QPoint &point) const
{
    HitLayout layout{size(), padding, resizeEnable, {}, nullptr};
    if (titleBar) {
        layout.titleBar = titleBar->rect();
        if (const QWidget *child = titleBar->childAt(point))
            layout.titleChild = child->metaObject()->className();
    }
    return hitZone(point, layout);
}

void FramelessWidget::followWindowState()
{
    moveEnable = windowState() == Qt::WindowNoState;
    resizeEnable = moveEnable;
    emit windowStateChange(!moveEnable);
}

bool FramelessWidget::answerPointer(QEvent *event)
{
    switch (event->type()) {
    case QEvent::MouseMove:
        return pointAt(*static_cast<QMouseEvent *>(event));
    case QEvent::MouseButtonPress:
        return press(*static_cast<QMouseEvent *>(event));
    case QEvent::MouseButtonRelease:
        return std::exchange(m_captionPress, {}).has_value();
    case QEvent::MouseButtonDblClick:
        return doubleClick();
    case QEvent::Leave:
        leaveEdges();
        return false;
    default:
        return false;
    }
}

/// Shows the shape of the edge under the pointer; what lies below it doesn't see the pointer then.
bool FramelessWidget::pointAt(const QMouseEvent &event)
{
    if (event.buttons() != Qt::NoButton)
        return dragCaption(event.pos());
    const HitZone zone = zoneAt(event.pos());
    if (edgesOf(zone) == Qt::Edges()) {
        leaveEdges();
        return false;
    }
    if (!m_cursorInside)
        m_cursorInside = windowHandle()->cursor();
    windowHandle()->setCursor(cursorOf(zone));
    return true;
}

void FramelessWidget::leaveEdges()
{
    if (m_cursorInside)
        windowHandle()->setCursor(*m_cursorInside);
    m_cursorInside.reset();
}

bool FramelessWidget::press(const QMouseEvent &event)
{
    const HitZone zone = zoneAt(event.pos());
    if (event.button() != Qt::LeftButton || zone == HitZone::None)
        return false;
    if (zone == HitZone::Caption)
        m_captionPress = event.pos();
    else
        windowHandle()->startSystemResize(edgesOf(zone));
    return true;
}

/// A press alone doesn't start the move: the window manager would hold the pointer when the second
/// press of a double click comes. `moveEnable` isn't looked at: a maximised window doesn't resize,
/// but its title bar drags it.
bool FramelessWidget::dragCaption(const QPoint &point)
{
    if (!m_captionPress)
        return false;
    if ((point - *m_captionPress).manhattanLength() >= QApplication::startDragDistance()) {
        m_captionPress.reset();
        windowHandle()->startSystemMove();
    }
    return true;
}

/// As on a system's title bar.
bool FramelessWidget::doubleClick()
{
    if (!std::exchange(m_captionPress, {}))
        return false;
    if (windowFlags().testFlag(Qt::WindowMaximizeButtonHint))
        setWindowState(windowState() ^ Qt::WindowMaximized);
    return true;
}
