#pragma once

#include "tools/podsim/podcodec.h"
#include "tools/podsim/podgeometry.h"

#include <QtGlobal>

#include <optional>

namespace podsim {

/// Work modes as the pod reports them.
enum class PodMode : quint8 {
    AngleControl = 0x10,
    Lock = 0x11,
    Follow = 0x12,
    LookDown = 0x13,
    EulerControl = 0x14,
    Stare = 0x16,
    Tracking = 0x17,
    Fpv = 0x1C,
};

/// English name of a mode; null for a code that is no mode.
const char *modeName(int code);

/// The gimbal: where the camera looks, seen from the carrier and from the ground, and how it gets
/// there. Plain data without a clock; its owner says how much time has passed.
///
/// Control inputs count while they are flagged as valid. They are angles in hundredths of a degree
/// in the modes angle control and FPV (relative to the carrier) and Euler control (relative to
/// ground and north), and rates in hundredths of a degree a second in the modes lock and follow, so
/// that an input of 1500 turns the camera at 15 degrees a second. A positive pitch looks up, a
/// positive yaw looks right. In all modes but angle control, Euler control and FPV the picture is
/// held level.
class PodMotion
{
public:
    PodMode mode() const { return m_mode; }
    /// Roll, pitch and yaw in degrees: of the gimbal's axes relative to the carrier (roll ±60,
    /// pitch -120 to 30, yaw ±170), of the camera relative to ground and north, and the rates of
    /// the latter in degrees a second.
    const Angles &relative() const { return m_relative; }
    const Angles &absolute() const { return m_absolute; }
    const Angles &rates() const { return m_rates; }
    const GeoPoint &carrierPosition() const { return m_position; }
    /// The place that stare and tracking look at, once there is one.
    const std::optional<GeoPoint> &place() const { return m_place; }

    /// From camera axes to north, east, down.
    Rotation cameraRotation() const;
    /// Metres from the carrier along a direction of ground axes to the ground at altitude 0;
    /// nothing if it is not met within 5 km.
    std::optional<double> groundDistance(const Vector &direction) const;
    /// The place on the ground in that direction, or the one 5 km away.
    GeoPoint placeAlong(const Vector &direction) const;

    /// Has the gimbal turn with a part of its speed, 0 to 1.
    void setSpeed(double factor) { m_speed = factor; }
    /// Takes the carrier's attitude and position as far as the frame holds them.
    void setCarrier(const HostFrame &host);
    /// Enters a mode; the camera stays where it is until the mode or an input turns it.
    void enter(PodMode mode);
    /// Enters stare or tracking, looking at `place`.
    void enter(PodMode mode, const GeoPoint &place);
    /// What stare or tracking looks at has moved to `place`.
    void movePlace(const GeoPoint &place) { m_place = place; }
    /// Turns the angles to 0. The mode stays: lock and follow go on from there, the other modes
    /// rest there until a mode command, a point or a control input.
    void recentre();
    /// Turns the line of sight to a direction in ground axes, with the mode staying as above.
    void pointAt(const Vector &direction);
    /// Moves on by `seconds`.
    void step(double seconds, const ControlInput &control);

private:
    Angles relativeTo(const Angles &absolute) const;
    Angles wanted(const Angles &demand) const;
    double excess(const Angles &demand) const;
    void takeControl(double seconds, const ControlInput &control);
    void takeRates(double seconds, const ControlInput &control);
    void holdAngles(const Angles &absolute);
    bool isHolding() const { return m_mode == PodMode::Lock || m_mode == PodMode::Follow; }
    bool takesAngles() const;
    bool isAtPlace() const { return m_mode == PodMode::Stare || m_mode == PodMode::Tracking; }

    PodMode m_mode = PodMode::Follow;
    double m_speed = 1;
    Angles m_carrier;
    GeoPoint m_position;
    bool m_hasPosition = false;
    Angles m_relative;
    Angles m_absolute;
    Angles m_rates;
    Angles m_demand; ///< angles of the mode's own kind: absolute, or relative to the carrier
    std::optional<Angles> m_parked; ///< relative angles that overrule the mode
    std::optional<GeoPoint> m_place;
};

} // namespace podsim
