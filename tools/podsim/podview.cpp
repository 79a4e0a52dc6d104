#include "tools/podsim/podview.h"

#include "tools/podsim/podfont.h"

#include <QImage>
#include <QPolygonF>

#include <algorithm>
#include <cmath>

namespace podsim {

namespace {

constexpr QRgb kSkyColour = 0xFF78A8D8;
constexpr QRgb kGroundColour = 0xFF6C6040;
constexpr QRgb kLineColour = 0xFF303840;
constexpr double kLineTemperature = 35;
constexpr double kMostLines = 8; // across the picture
constexpr double kSteps[] = {0.2, 0.5, 1, 2, 5, 10};
constexpr double kWideStep = 30; // degrees of azimuth where the view holds straight up or down
constexpr int kPieces = 16;      // of a curve
constexpr double kLeastRadius = 2;

/// The part of a polygon in which `depth`, which is linear, is positive.
QPolygonF clipped(const QPolygonF &polygon, const std::function<double(const QPointF &)> &depth)
{
    QPolygonF result;
    for (int i = 0; i < polygon.size(); ++i) {
        const QPointF &from = polygon[i];
        const QPointF &to = polygon[(i + 1) % polygon.size()];
        const double a = depth(from);
        const double b = depth(to);
        if (a > 0)
            result.append(from);
        if ((a > 0) != (b > 0))
            result.append(from + (to - from) * (a / (a - b)));
    }
    return result;
}

/// Calls `action` with each multiple of `step` from `middle` - `reach` to `middle` + `reach`.
template <typename Action>
void forMultiples(double middle, double reach, double step, Action action)
{
    const int last = int(std::floor((middle + reach) / step));
    for (int i = int(std::ceil((middle - reach) / step)); i <= last; ++i)
        action(i * step);
}

double rounded(double value, double step)
{
    return std::round(value / step) * step;
}

} // namespace

PodView::PodView(QImage &picture, const PodState &state, std::size_t camera)
    : m_size(picture.size()), m_dot(dotOf(picture)), m_state(state), m_camera(camera),
      m_look(state, camera), m_lineColour(m_look.of(kLineColour, kLineTemperature)),
      m_painter(&picture)
{
}

void PodView::draw()
{
    m_painter.fillRect(QRect(QPoint(), m_size), m_look.of(kSkyColour, kSkyTemperature));
    drawGround();
    m_painter.setPen(m_lineColour);
    const Grid lines = grid();
    drawAzimuths(lines);
    drawElevations(lines);
    for (const SceneObject &object : kScene)
        drawObject(object);
}

std::optional<QPointF> PodView::pixelOf(const Vector &direction) const
{
    const auto point = m_state.seenAt(direction, m_camera);
    if (!point)
        return {};
    return QPointF((*point)[0] * m_size.width(), (*point)[1] * m_size.height()) / (2 * kPickCentre);
}

/// All that lies below the horizon, whatever the roll: how far down a pixel's ray leads is linear
/// in the pixel's place.
void PodView::drawGround()
{
    const Rotation rotation = m_state.motion.cameraRotation();
    const auto down = [&](const QPointF &pixel) {
        const QPointF point(pixel.x() / m_size.width(), pixel.y() / m_size.height());
        const Vector ray = m_state.cameras[m_camera].rayThrough(point.x() * 2 * kPickCentre,
                                                                point.y() * 2 * kPickCentre);
        return turned(rotation, ray)[2];
    };
    const QPolygonF whole(QRectF(QPointF(), m_size));
    m_painter.setPen(Qt::NoPen);
    m_painter.setBrush(m_look.of(kGroundColour, kGroundTemperature));
    m_painter.drawConvexPolygon(clipped(whole, down));
}

PodView::Grid PodView::grid() const
{
    const PodCamera &camera = m_state.cameras[m_camera];
    const double width = 2 * toDegrees(std::atan(camera.halfWidth()));
    const double step = *std::find_if(std::begin(kSteps), std::end(kSteps) - 1,
                                      [width](double s) { return width / s <= kMostLines; });
    const double reach = toDegrees(std::atan(std::hypot(camera.halfWidth(), camera.halfHeight())));
    const Angles sight = anglesOf(m_state.lineOfSight());
    if (std::abs(sight.pitch) + reach >= 90) // a pole is in view
        return {sight, step, reach, kWideStep, 180};
    return {sight, step, reach, step,
            toDegrees(std::asin(std::sin(toRadians(reach)) / std::cos(toRadians(sight.pitch))))};
}

void PodView::drawAzimuths(const Grid &grid)
{
    const double nearElevation = rounded(grid.sight.pitch, grid.step);
    forMultiples(grid.sight.yaw, grid.azimuthReach, grid.azimuthStep, [&](double azimuth) {
        drawCurve([&](double part) {
            return Angles{0, std::clamp(grid.sight.pitch + grid.reach * part, -90.0, 90.0),
                          azimuth};
        });
        drawNumber({0, nearElevation, azimuth}, wrapped(azimuth), grid.azimuthStep);
    });
}

/// The line that the azimuths are written on has no number.
void PodView::drawElevations(const Grid &grid)
{
    const double nearAzimuth = rounded(grid.sight.yaw, grid.azimuthStep);
    forMultiples(grid.sight.pitch, grid.reach, grid.step, [&](double elevation) {
        if (std::abs(elevation) >= 90)
            return;
        drawCurve([&](double part) {
            return Angles{0, elevation, grid.sight.yaw + grid.azimuthReach * part};
        });
        if (elevation != rounded(grid.sight.pitch, grid.step))
            drawNumber({0, elevation, nearAzimuth}, elevation, grid.step);
    });
}

/// Draws what lies before the camera of a curve from part -1 to part 1.
void PodView::drawCurve(const Curve &curve)
{
    std::optional<QPointF> last;
    for (int i = -kPieces; i <= kPieces; ++i) {
        const Angles place = curve(double(i) / kPieces);
        const std::optional<QPointF> next = pixelOf(turned(rotationOf(place), {1, 0, 0}));
        if (last && next)
            m_painter.drawLine(*last, *next);
        last = next;
    }
}

void PodView::drawNumber(const Angles &place, double degrees, double step)
{
    const std::optional<QPointF> pixel = pixelOf(turned(rotationOf(place), {1, 0, 0}));
    if (pixel && QRect(QPoint(), m_size).contains(pixel->toPoint()))
        drawText(m_painter, pixel->toPoint() + QPoint(2 * m_dot, 2 * m_dot),
                 QByteArray::number(degrees, 'f', step < 1 ? 1 : 0), m_dot, m_lineColour);
}

/// What stands is round, what moves has corners and a name.
void PodView::drawObject(const SceneObject &object)
{
    const std::optional<QPointF> pixel = pixelOf(directionAt(object, m_state.seconds));
    const double radius =
        std::max(kLeastRadius, std::tan(toRadians(object.radius)) /
                                   m_state.cameras[m_camera].halfWidth() * m_size.width() / 2);
    const double edge = radius + m_size.width();
    if (!pixel || !QRectF(QPointF(), m_size).adjusted(-edge, -edge, edge, edge).contains(*pixel))
        return;
    const QRectF outline(pixel->x() - radius, pixel->y() - radius, 2 * radius, 2 * radius);
    m_painter.setPen(m_lineColour);
    m_painter.setBrush(m_look.of(object.colour, object.temperature));
    if (!object.isMoving()) {
        m_painter.drawEllipse(outline);
        return;
    }
    m_painter.drawRect(outline);
    drawText(m_painter, outline.bottomLeft().toPoint() + QPoint(0, 2 * m_dot), object.name, m_dot,
             m_lineColour);
}

} // namespace podsim
