#include "tests/support/realdesktop.h"

#include <QGuiApplication>
#include <QMouseEvent>
#include <QProcess>
#include <QTest>
#include <QWidget>
#include <QWindow>

namespace {

constexpr int kLimitMs = 20000;

QString run(const QStringList &words)
{
    QProcess process;
    process.start(QStringLiteral("xdotool"), words);
    if (!process.waitForFinished() || process.exitCode() != 0)
        qFatal("xdotool fails");
    return QString::fromLatin1(process.readAllStandardOutput());
}

/// Notes when a pointer event has come to a window and been dealt with.
class PointerLog : public QObject
{
public:
    explicit PointerLog(QWindow *window) { window->installEventFilter(this); }

    bool has(const QPoint &point, Qt::MouseButtons buttons) const
    {
        return m_point == point && m_buttons == buttons;
    }

    bool awaits(const QPoint &point, Qt::MouseButtons buttons) const
    {
        return QTest::qWaitFor([&] { return has(point, buttons); }, kLimitMs);
    }

    bool eventFilter(QObject *, QEvent *event) override
    {
        if (const auto *mouse = dynamic_cast<QMouseEvent *>(event)) {
            m_point = mouse->globalPos();
            m_buttons = mouse->buttons();
        }
        return false;
    }

private:
    QPoint m_point;
    Qt::MouseButtons m_buttons;
};

} // namespace

void RealMouse::move(const QPoint &point)
{
    run({"mousemove", QString::number(point.x()), QString::number(point.y())});
}

void RealMouse::press(const QPoint &point)
{
    move(point);
    run({"mousedown", "1"});
    m_isDown = true;
}

void RealMouse::release()
{
    if (m_isDown)
        run({"mouseup", "1"});
    m_isDown = false;
}

void RealMouse::click(const QPoint &point)
{
    press(point);
    release();
}

void RealMouse::doubleClick(const QPoint &point)
{
    move(point);
    run({"click", "--repeat", "2", "--delay", "50", "1"});
}

QRect realGeometry(const QWidget &window)
{
    QMap<QString, int> values;
    const QString lines = run({"getwindowgeometry", "--shell", QString::number(window.winId())});
    for (const QString &line : lines.split('\n'))
        values.insert(line.section('=', 0, 0), line.section('=', 1).toInt());
    return {values["X"], values["Y"], values["WIDTH"], values["HEIGHT"]};
}

QRect dragWindow(QWidget &window, const QPoint &from, const QPoint &start, const QPoint &by,
                 const QRect &expected)
{
    PointerLog log(window.windowHandle());
    RealMouse mouse;
    mouse.press(from);
    bool isGood = log.awaits(from, Qt::LeftButton);
    if (start != from) {
        RealMouse::move(start);
        isGood = isGood && log.awaits(start, Qt::LeftButton);
    }
    // The window manager takes the pointer in its own time: it has to see a movement after that.
    const auto follows = [&] {
        RealMouse::move(start + by / 2);
        RealMouse::move(start + by);
        return realGeometry(window) == expected;
    };
    isGood = isGood && QTest::qWaitFor(follows, kLimitMs);
    mouse.release();
    // It keeps the release to itself, and what moves before it has let go; the program sees the
    // release with a later movement.
    const QPoint inside = realGeometry(window).center();
    const auto isReleased = [&] {
        RealMouse::move(inside - QPoint(1, 1));
        RealMouse::move(inside);
        return log.has(inside, Qt::NoButton);
    };
    if (!isGood || !QTest::qWaitFor(isReleased, kLimitMs))
        qWarning("the window doesn't follow the pointer, or the program misses its events");
    return window.geometry();
}
