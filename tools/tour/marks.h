#pragma once

#include <QColor>
#include <QImage>
#include <QPointF>
#include <QRectF>

namespace tour {

// Finds what the simulated pod draws in a picture of it. Places and areas are in 0 to 1 of the
// picture.

/// Marks of the pod's scene by daylight.
const QColor kYellowMark(0xF0E000);
const QColor kBlueMark(0x1030E0);
const QColor kCar(0x00E020);
/// What it frames measured places with.
const QColor kMeasured(0xFF40FF);

/// Pixels in `area` that are much like a colour, as far as a compressed picture keeps it.
int countOf(const QImage &image, const QColor &colour, const QRectF &area = {0, 0, 1, 1});

/// Middle of all that has the colour; beyond the picture where next to nothing has.
QPointF placeOf(const QImage &image, const QColor &colour);

/// Whether the colour's middle is at the place, within 2 %.
bool isAt(const QImage &image, const QColor &colour, const QPointF &place);

/// Whether next to all pixels in `area` are grey.
bool isGrey(const QImage &image, const QRectF &area);

} // namespace tour
