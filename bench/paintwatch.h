#pragma once

#include "bench/measure.h"
#include "tools/podsim/picturestamp.h"

#include <QEvent>
#include <QPixmap>
#include <QPointer>
#include <QWidget>

#include <functional>
#include <optional>

/// Sees from outside when a widget has been painted: it hands the window its request to be painted
/// and comes back when the picture is on its way to the screen.
class PaintWatch : public QObject
{
public:
    /// Called after each turn of the window in which the widget was painted.
    std::function<void()> painted;

    int paints() const { return m_paints; }

    void follow(QWidget *widget)
    {
        m_widget = widget;
        widget->installEventFilter(this);
        widget->window()->installEventFilter(this);
    }

    /// When the first picture that was sent after that moment of `stampClock` was on the screen.
    qint64 awaitPicture(quint32 sentAfter = 0)
    {
        constexpr int kLimitMs = 30000;
        QEventLoop loop;
        qint64 time = 0;
        painted = [&] {
            const qint64 moment = now();
            const auto shown = stamp();
            if (!shown || (sentAfter && qint32(shown->milliseconds - sentAfter) <= 0))
                return;
            time = moment;
            loop.quit();
        };
        QTimer::singleShot(kLimitMs, &loop, [] { qFatal("no picture came"); });
        loop.exec();
        painted = nullptr;
        return time;
    }

    /// Time and number that the widget's picture shows. Costs a picture's drawing.
    std::optional<podsim::PictureStamp> stamp()
    {
        m_isGrabbing = true;
        const QImage picture = m_widget->grab().toImage();
        m_isGrabbing = false;
        return podsim::readStamp(picture);
    }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::Paint && watched == m_widget && !m_isGrabbing)
            ++m_paints;
        if (event->type() != QEvent::UpdateRequest || !m_widget || watched != m_widget->window())
            return false;
        const int before = m_paints;
        watched->event(event);
        if (m_paints != before && painted)
            painted();
        return true;
    }

private:
    QPointer<QWidget> m_widget;
    int m_paints = 0;
    bool m_isGrabbing = false;
};
