#pragma once

#include <QPoint>
#include <QRect>
#include <QStringList>

class QWidget;

/// The X server's own mouse, seen by the window manager as by the program. Points are the screen's.
class RealMouse
{
public:
    ~RealMouse() { release(); }

    static void move(const QPoint &point);
    void press(const QPoint &point);
    void release();
    void click(const QPoint &point);
    /// Two clicks faster than the toolkit's limit.
    static void doubleClick(const QPoint &point);

private:
    bool m_isDown = false;
};

/// Where the X server has a window. The program only learns it when a move has ended.
QRect realGeometry(const QWidget &window);

/// Presses at `from`, moves to `start`, goes on by `by` until the window is as expected or never
/// gets there, and releases. Returns where the program sees the window at last. What starts the
/// drag is the press itself when `start` is `from`, else the movement to `start`.
QRect dragWindow(QWidget &window, const QPoint &from, const QPoint &start, const QPoint &by,
                 const QRect &expected);
