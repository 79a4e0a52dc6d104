#include "foundation/framelessrules.h"

#include <QByteArray>

namespace {

struct ZoneRow
{
    HitZone zone;
    Qt::Edges edges;
    Qt::CursorShape cursor;
};

/// The first row whose edges are all near wins.
constexpr ZoneRow kZones[] = {
    {HitZone::TopLeft, Qt::LeftEdge | Qt::TopEdge, Qt::SizeFDiagCursor},
    {HitZone::BottomLeft, Qt::LeftEdge | Qt::BottomEdge, Qt::SizeBDiagCursor},
    {HitZone::TopRight, Qt::RightEdge | Qt::TopEdge, Qt::SizeBDiagCursor},
    {HitZone::BottomRight, Qt::RightEdge | Qt::BottomEdge, Qt::SizeFDiagCursor},
    {HitZone::Left, Qt::LeftEdge, Qt::SizeHorCursor},
    {HitZone::Right, Qt::RightEdge, Qt::SizeHorCursor},
    {HitZone::Top, Qt::TopEdge, Qt::SizeVerCursor},
    {HitZone::Bottom, Qt::BottomEdge, Qt::SizeVerCursor},
};

constexpr ZoneRow kElsewhere{HitZone::None, {}, Qt::ArrowCursor};

const ZoneRow &rowOf(HitZone zone)
{
    for (const ZoneRow &row : kZones)
        if (row.zone == zone)
            return row;
    return kElsewhere;
}

/// A point on the bound of an edge zone is inside, not at the edge.
Qt::Edges nearEdges(const QPoint &point, const HitLayout &layout)
{
    Qt::Edges edges;
    edges.setFlag(Qt::LeftEdge, point.x() < layout.padding);
    edges.setFlag(Qt::RightEdge, point.x() > layout.window.width() - layout.padding);
    edges.setFlag(Qt::TopEdge, point.y() < layout.padding);
    edges.setFlag(Qt::BottomEdge, point.y() > layout.window.height() - layout.padding);
    return edges;
}

HitZone edgeZone(Qt::Edges edges)
{
    for (const ZoneRow &row : kZones)
        if ((edges & row.edges) == row.edges)
            return row.zone;
    return HitZone::None;
}

constexpr quint32 kNcCalcSize = 0x83;
constexpr quint32 kNcHitTest = 0x84;
constexpr quint32 kSysKeyDown = 0x104;
constexpr quint32 kSysKeyUp = 0x105;
constexpr quint32 kPowerBroadcast = 0x218;
constexpr quint64 kSuspend = 4;
constexpr quint64 kResume = 18;

} // namespace

HitZone hitZone(const QPoint &point, const HitLayout &layout)
{
    if (layout.resizeEnable) {
        const HitZone zone = edgeZone(nearEdges(point, layout));
        if (zone != HitZone::None)
            return zone;
    }
    // The point of the window is looked for in the title bar's own rectangle: the title bar has to
    // lie at the window's top left. A button stays one; a class derived from it drags, which is
    // meant.
    const bool isCaption =
        layout.titleBar.contains(point) && qstrcmp(layout.titleChild, "QPushButton") != 0;
    return isCaption ? HitZone::Caption : HitZone::None;
}

Qt::Edges edgesOf(HitZone zone)
{
    return rowOf(zone).edges;
}

Qt::CursorShape cursorOf(HitZone zone)
{
    return rowOf(zone).cursor;
}

MessageAction messageAction(quint32 message, quint64 wParam)
{
    if (message == kNcCalcSize)
        return MessageAction::TakeWholeArea;
    if (message == kNcHitTest)
        return MessageAction::HitTest;
    if (message == kSysKeyDown || message == kSysKeyUp)
        return MessageAction::Pass;
    if (message == kPowerBroadcast && wParam == kSuspend)
        return MessageAction::Minimise;
    // Any message that carries the number of a resume restores the window: which one announces the
    // resume differs between systems, and a window minimised for a sleep must come back.
    return wParam == kResume ? MessageAction::Restore : MessageAction::Pass;
}

QPoint hitPoint(qint64 lParam)
{
    return {qint16(lParam), qint16(lParam >> 16)};
}
