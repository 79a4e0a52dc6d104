#include "tools/tour/marks.h"

#include <functional>

namespace tour {

namespace {

constexpr int kColourSpan = 60;
constexpr int kGreySpan = 12;
constexpr int kFewestPixels = 20;
constexpr double kGreyPart = 0.95;
constexpr double kPlaceSpan = 0.02;

bool isLike(QRgb pixel, const QColor &colour)
{
    return qAbs(qRed(pixel) - colour.red()) < kColourSpan &&
           qAbs(qGreen(pixel) - colour.green()) < kColourSpan &&
           qAbs(qBlue(pixel) - colour.blue()) < kColourSpan;
}

bool hasNoColour(QRgb pixel)
{
    return qAbs(qRed(pixel) - qGreen(pixel)) < kGreySpan &&
           qAbs(qGreen(pixel) - qBlue(pixel)) < kGreySpan;
}

QRect pixelsOf(const QImage &image, const QRectF &area)
{
    const QPointF size(image.width(), image.height());
    return QRectF(area.x() * size.x(), area.y() * size.y(), area.width() * size.x(),
                  area.height() * size.y())
               .toAlignedRect() &
           image.rect();
}

struct Found
{
    QPointF sum;
    int count = 0;
};

Found search(const QImage &image, const QRect &pixels, const std::function<bool(QRgb)> &isWanted)
{
    Found found;
    for (int y = pixels.top(); y <= pixels.bottom(); ++y) {
        for (int x = pixels.left(); x <= pixels.right(); ++x) {
            if (!isWanted(image.pixel(x, y)))
                continue;
            found.sum += QPointF(x, y);
            ++found.count;
        }
    }
    return found;
}

Found search(const QImage &image, const QRect &pixels, const QColor &colour)
{
    return search(image, pixels, [&](QRgb pixel) { return isLike(pixel, colour); });
}

} // namespace

int countOf(const QImage &image, const QColor &colour, const QRectF &area)
{
    return search(image, pixelsOf(image, area), colour).count;
}

QPointF placeOf(const QImage &image, const QColor &colour)
{
    const Found found = search(image, image.rect(), colour);
    if (found.count < kFewestPixels)
        return {2, 2};
    return {found.sum.x() / found.count / image.width(),
            found.sum.y() / found.count / image.height()};
}

bool isAt(const QImage &image, const QColor &colour, const QPointF &place)
{
    const QPointF off = placeOf(image, colour) - place;
    return qAbs(off.x()) < kPlaceSpan && qAbs(off.y()) < kPlaceSpan;
}

bool isGrey(const QImage &image, const QRectF &area)
{
    const QRect pixels = pixelsOf(image, area);
    return search(image, pixels, hasNoColour).count > kGreyPart * pixels.width() * pixels.height();
}

} // namespace tour
