#pragma once

#include <QEvent>
#include <QPainter>
#include <QStyle>
#include <QStyleOption>
#include <QWidget>

/// A part of a form that its background fills all over, and that says so: else all that lies below
/// it, the window included, is painted for each button of it that has changed.
class FormPanel : public QWidget
{
public:
    using QWidget::QWidget;

protected:
    bool event(QEvent *event) override
    {
        const bool isTaken = QWidget::event(event);
        if (event->type() == QEvent::Polish)
            setAttribute(Qt::WA_OpaquePaintEvent, palette().window().isOpaque());
        return isTaken;
    }

    /// The toolkit leaves the background to one that says so.
    void paintEvent(QPaintEvent *) override
    {
        QPainter painter(this);
        QStyleOption option;
        option.initFrom(this);
        style()->drawPrimitive(QStyle::PE_Widget, &option, &painter, this);
    }
};
