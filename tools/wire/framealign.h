#pragma once

#include "tools/wire/record.h"

#include <QVector>

#include <array>

namespace wire {

/// What of a frame counts for its place beside others: a mark for the bytes of each field, 0 for a
/// field that it hasn't.
struct FrameMarks
{
    static constexpr int kFields = 48;
    FrameKind kind = FrameKind::Unknown;
    std::array<quint16, kFields> marks = {};
};
FrameMarks marksOf(const QByteArray &bytes);

enum class Place : quint8 { Pair, Lost, Added };

/// Lays the beginnings of two recordings side by side: the places of the first frames, at least
/// one; `reachEnd` where both are whole. A field that has no values in common doesn't count: it
/// differs throughout, wherever the frames stand. Where a few frames in a row are equal by the
/// other fields, nearest first, the recordings go on alike. Where that is nowhere, as few fields as
/// can be differ in the next 256 frames of both: a frame that is lost is cheaper there than a few
/// fields that differ after it, and a changed frame is cheaper than one lost and one added.
QVector<Place> placesOf(const QVector<FrameMarks> &before, const QVector<FrameMarks> &after,
                        bool reachEnd);

} // namespace wire
