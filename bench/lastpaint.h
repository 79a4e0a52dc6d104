#pragma once

#include "bench/measure.h"

#include <QEvent>
#include <QWidget>

#include <functional>

/// Notes when a window has last handed a picture to the screen.
class LastPaint : public QObject
{
public:
    explicit LastPaint(QWidget *window) { window->installEventFilter(this); }

    qint64 time() const { return m_time; }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() != QEvent::UpdateRequest)
            return false;
        watched->event(event);
        m_time = now();
        return true;
    }

private:
    qint64 m_time = 0;
};

/// Milliseconds from the beginning of a step to the last painting of the window that follows from
/// it; to its own end where there is nothing to paint.
inline double paintedAfter(QWidget &window, const std::function<void()> &step,
                           bool mustPaint = true)
{
    constexpr int kQuietMs = 200;
    window.raise();
    turnEventLoop(kQuietMs);
    const LastPaint paint(&window);
    const qint64 start = now();
    step();
    const qint64 end = now();
    turnEventLoop(kQuietMs);
    if (mustPaint && paint.time() == 0)
        qFatal("nothing was painted");
    return double(std::max(end, paint.time()) - start) * 1e-6;
}
