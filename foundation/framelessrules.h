#pragma once

#include <QPoint>
#include <QRect>
#include <QSize>
#include <Qt>

/// What a point of a frameless window is to the window manager. The numbers are the answers to the
/// hit test of Windows.
enum class HitZone {
    None = 0,
    Caption = 2,
    Left = 10,
    Right = 11,
    Top = 12,
    TopLeft = 13,
    TopRight = 14,
    Bottom = 15,
    BottomLeft = 16,
    BottomRight = 17
};

/// What the hit test looks at, in the window's pixels.
struct HitLayout
{
    QSize window;
    int padding = 8; ///< width of the edge zone
    bool resizeEnable = true;
    QRect titleBar;                   ///< rectangle of the title bar in itself, empty without one
    const char *titleChild = nullptr; ///< class name of the title bar's child at the point
};

/// Zone of a point of the window. The edges come before the title bar and its buttons.
HitZone hitZone(const QPoint &point, const HitLayout &layout);

/// The edges that a zone resizes; none of the caption and of no zone.
Qt::Edges edgesOf(HitZone zone);

/// The pointer's shape over a zone.
Qt::CursorShape cursorOf(HitZone zone);

/// What a frameless window does with a message of Windows.
enum class MessageAction { Pass, TakeWholeArea, HitTest, Minimise, Restore };

MessageAction messageAction(quint32 message, quint64 wParam);

/// The point of a hit test message: two signed 16-bit numbers, x in the lower one.
QPoint hitPoint(qint64 lParam);
