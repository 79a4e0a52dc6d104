#pragma once

#include <QEvent>
#include <QPainter>
#include <QStyle>
#include <QStyleOption>
#include <QWidget>

/// A part of a form that is filled by its own background, and says so. Otherwise a change of one
/// button repaints all that lies below the panel, the window included.
class FormPanel : public QWidget
{
public:
    using QWidget::QWidget;

protected:
    /// A colour of the palette file may let through what lies below, or be none at all.
    bool event(QEvent *event) override
    {
        const bool isTaken = QWidget::event(event);
        if (event->type() == QEvent::Polish)
            setAttribute(Qt::WA_OpaquePaintEvent,
                         testAttribute(Qt::WA_StyledBackground) && palette().window().isOpaque());
        return isTaken;
    }

    /// The toolkit doesn't paint the background of an opaque widget.
    void paintEvent(QPaintEvent *) override
    {
        if (!testAttribute(Qt::WA_OpaquePaintEvent))
            return;
        QPainter painter(this);
        QStyleOption option;
        option.initFrom(this);
        style()->drawPrimitive(QStyle::PE_Widget, &option, &painter, this);
    }
};
