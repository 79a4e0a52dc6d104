#include "tools/podsim/podcamera.h"

#include <algorithm>
#include <cmath>

namespace podsim {

namespace {

constexpr double kLeastZoom = 1.0;
constexpr double kDoublingSeconds = 1.5;
constexpr double kHeightToWidth = 9.0 / 16.0;

} // namespace

bool PodCamera::step(double seconds)
{
    if (zooming == 0)
        return false;
    const int direction = zooming;
    const double wanted = zoom * std::exp2(direction * seconds / kDoublingSeconds);
    zoomTo(wanted);
    if (wanted < kLeastZoom || wanted > largestZoom)
        return true;
    zooming = direction;
    return false;
}

void PodCamera::zoomTo(double ratio)
{
    zoom = std::clamp(ratio, kLeastZoom, largestZoom);
    zooming = 0;
}

double PodCamera::halfWidth() const
{
    return std::tan(toRadians(widestField / 2)) / zoom;
}

double PodCamera::halfHeight() const
{
    return halfWidth() * kHeightToWidth;
}

Vector PodCamera::rayThrough(double x, double y) const
{
    return {1.0, (x - kPickCentre) / kPickCentre * halfWidth(),
            (y - kPickCentre) / kPickCentre * halfHeight()};
}

std::optional<std::array<double, 2>> PodCamera::pointOf(const Vector &ray) const
{
    if (ray[0] <= 0)
        return {};
    return {{kPickCentre * (1 + ray[1] / ray[0] / halfWidth()),
             kPickCentre * (1 + ray[2] / ray[0] / halfHeight())}};
}

} // namespace podsim
