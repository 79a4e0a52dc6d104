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

/// Frames of both recordings that are looked at together: memory and time of `placesOf` go with
/// its square.
constexpr int kAlignedFrames = 256;

/// Lays the beginnings of two recordings side by side, so that as few fields as can be differ: the
/// places of the first frames, at least one, as far as the frames after them bear it out. A field
/// that has no values in common doesn't count: it differs throughout, wherever the frames stand. A
/// frame that is lost is cheaper than a few fields that differ after it, and a changed frame is
/// cheaper than one lost and one added. Neither may be longer than `kAlignedFrames`.
QVector<Place> placesOf(QVector<FrameMarks> before, QVector<FrameMarks> after);

} // namespace wire
