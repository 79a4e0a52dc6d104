#pragma once

#include "tools/podsim/podgeometry.h"

#include <array>
#include <optional>

namespace podsim {

/// The picture's edges in the units of a pick: 0 to 10000 from left to right and from top to
/// bottom, the centre at 5000.
constexpr double kPickCentre = 5000.0;

/// One camera of the pod: its zoom and what its 16:9 picture covers. Plain data.
struct PodCamera
{
    double zoom = 1.0;
    double largestZoom = 30.0;
    double widestField = 60.0; ///< degrees from the left edge to the right one at zoom 1.0
    int zooming = 0;           ///< 1 while zooming in, -1 while zooming out

    /// Goes on zooming for `seconds`: a factor of 2 every 1.5 seconds. True when the zoom comes to
    /// a stop at a limit.
    bool step(double seconds);
    /// Takes `ratio`, or the limit next to it, and ends any zooming.
    void zoomTo(double ratio);

    /// Tangent of half the field of view, across and down.
    double halfWidth() const;
    double halfHeight() const;
    /// Direction of a picked point in camera axes: 1 forward, so far right, so far down.
    Vector rayThrough(double x, double y) const;
    /// Where a direction in camera axes is seen, in pick units that may lie beyond the edges;
    /// nothing for what is behind the camera.
    std::optional<std::array<double, 2>> pointOf(const Vector &ray) const;
};

} // namespace podsim
