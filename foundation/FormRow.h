#pragma once

#include <QEvent>
#include <QWidget>

/// A row of a form, which holds its cells and draws nothing: when it's first shown, no style looks
/// for its rules.
class FormRow : public QWidget
{
public:
    using QWidget::QWidget;

protected:
    bool event(QEvent *event) override
    {
        return event->type() == QEvent::Polish || QWidget::event(event);
    }
};
