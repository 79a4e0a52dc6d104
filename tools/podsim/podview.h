#pragma once

#include "tools/podsim/podlook.h"
#include "tools/podsim/podstate.h"

#include <QPainter>

#include <functional>

namespace podsim {

/// What one camera sees: sky and ground, lines of azimuth and elevation with their degrees, and
/// the scene's objects. Draws over a whole picture, however large. For one picture, in any thread.
class PodView
{
public:
    PodView(QImage &picture, const PodState &state, std::size_t camera);

    void draw();

private:
    using Curve = std::function<Angles(double part)>;

    /// The lines of azimuth and elevation that can be seen, in degrees.
    struct Grid
    {
        Angles sight;
        double step = 0;  ///< between lines of elevation
        double reach = 0; ///< of the view to each side of its middle
        double azimuthStep = 0;
        double azimuthReach = 0;
    };

    /// Pixel at which a direction in ground axes is seen; nothing for what is behind the camera.
    std::optional<QPointF> pixelOf(const Vector &direction) const;
    void drawGround();
    Grid grid() const;
    void drawAzimuths(const Grid &grid);
    void drawElevations(const Grid &grid);
    void drawCurve(const Curve &curve);
    void drawNumber(const Angles &place, double degrees, double step);
    void drawObject(const SceneObject &object);

    QSize m_size;
    int m_dot; ///< pixels to each side of a letter's dot
    const PodState &m_state;
    std::size_t m_camera;
    PodLook m_look;
    QColor m_lineColour;
    QPainter m_painter;
};

} // namespace podsim
