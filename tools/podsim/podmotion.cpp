#include "tools/podsim/podmotion.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace podsim {

namespace {

struct ModeRow
{
    PodMode mode;
    const char *name;
};

constexpr std::array<ModeRow, 8> kModes{{
    {PodMode::AngleControl, "angle control"},
    {PodMode::Lock, "lock"},
    {PodMode::Follow, "follow"},
    {PodMode::LookDown, "look down"},
    {PodMode::EulerControl, "Euler angle control"},
    {PodMode::Stare, "stare"},
    {PodMode::Tracking, "tracking"},
    {PodMode::Fpv, "FPV"},
}};

struct Limits
{
    double least;
    double most;
};

constexpr Limits kRollLimits{-60, 60};
constexpr Limits kPitchLimits{-120, 30};
constexpr Limits kYawLimits{-170, 170};
constexpr Limits kHeldPitchLimits{-90, 90};

constexpr double kFollowSeconds = 0.15;  // time constant of the first-order follow
constexpr double kLargestRate = 150;     // degrees a second
constexpr double kLongestStep = 1.0;     // seconds; after a longer pause the gimbal moves by this
constexpr double kLongestRateStep = 0.1; // seconds for which a rate counts without a newer frame
constexpr double kControlUnit = 0.01;    // degrees, or degrees a second
constexpr double kFarthest = 5000;       // metres

double limited(double value, const Limits &limits)
{
    return std::clamp(value, limits.least, limits.most);
}

Angles limited(const Angles &angles)
{
    return {limited(angles.roll, kRollLimits), limited(angles.pitch, kPitchLimits),
            limited(angles.yaw, kYawLimits)};
}

/// The same attitude by the other way round: over the top instead of by half a turn of yaw.
Angles overTheTop(const Angles &angles)
{
    return {wrapped(angles.roll + 180), wrapped(180 - angles.pitch), wrapped(angles.yaw + 180)};
}

double approached(double from, double to, double seconds)
{
    const double step = (to - from) * (1 - std::exp(-seconds / kFollowSeconds));
    return from + std::clamp(step, -kLargestRate * seconds, kLargestRate * seconds);
}

double rate(double from, double to, double seconds)
{
    return std::clamp(wrapped(to - from) / seconds, -kLargestRate, kLargestRate);
}

} // namespace

const char *modeName(int code)
{
    for (const ModeRow &row : kModes)
        if (int(row.mode) == code)
            return row.name;
    return nullptr;
}

bool PodMotion::takesAngles() const
{
    return m_mode == PodMode::AngleControl || m_mode == PodMode::EulerControl ||
           m_mode == PodMode::Fpv;
}

Rotation PodMotion::cameraRotation() const
{
    return product(rotationOf(m_carrier), rotationOf(m_relative));
}

std::optional<double> PodMotion::groundDistance(const Vector &direction) const
{
    const double length = std::hypot(direction[0], direction[1], direction[2]);
    const double down = direction[2] / length;
    if (!(down > 0) || m_position.altitude <= 0 || m_position.altitude > kFarthest * down)
        return {};
    return m_position.altitude / down;
}

GeoPoint PodMotion::placeAlong(const Vector &direction) const
{
    const double length = std::hypot(direction[0], direction[1], direction[2]);
    const double factor = groundDistance(direction).value_or(kFarthest) / length;
    return moved(m_position, {direction[0] * factor, direction[1] * factor, direction[2] * factor});
}

void PodMotion::setCarrier(const HostFrame &host)
{
    if (host.inertialValid)
        m_carrier = host.attitude;
    if (host.hasPosition)
        m_position = host.position;
    m_hasPosition = m_hasPosition || host.hasPosition;
}

void PodMotion::enter(PodMode mode)
{
    m_mode = mode;
    m_parked.reset();
    m_place.reset();
    m_demand = {};
    if (isHolding())
        holdAngles(m_absolute);
    else if (mode == PodMode::AngleControl)
        m_demand = m_relative;
    else if (mode == PodMode::EulerControl)
        m_demand = m_absolute;
}

void PodMotion::enter(PodMode mode, const GeoPoint &place)
{
    enter(mode);
    m_place = place;
}

void PodMotion::recentre()
{
    if (isHolding())
        holdAngles(m_carrier);
    else
        m_parked = Angles();
}

void PodMotion::pointAt(const Vector &direction)
{
    const Angles angles = anglesOf(direction);
    if (isHolding())
        holdAngles(angles);
    else
        m_parked = limited(relativeTo(angles));
}

void PodMotion::step(double seconds, const ControlInput &control)
{
    takeControl(std::min(seconds, kLongestRateStep) * m_speed, control);
    if (isAtPlace() && !m_place && m_hasPosition)
        m_place = placeAlong(turned(cameraRotation(), {1, 0, 0}));
    const double span = std::min(seconds, kLongestStep) * m_speed;
    const Angles to = limited(m_parked ? *m_parked : wanted(m_demand));
    m_relative = {approached(m_relative.roll, to.roll, span),
                  approached(m_relative.pitch, to.pitch, span),
                  approached(m_relative.yaw, to.yaw, span)};
    const Angles before = m_absolute;
    m_absolute = anglesOf(cameraRotation());
    if (seconds > 0)
        m_rates = {rate(before.roll, m_absolute.roll, seconds),
                   rate(before.pitch, m_absolute.pitch, seconds),
                   rate(before.yaw, m_absolute.yaw, seconds)};
}

/// The gimbal's angles for an attitude against the ground. Just past straight down, pitch goes
/// beyond -90 rather than yaw through half a turn.
Angles PodMotion::relativeTo(const Angles &absolute) const
{
    const Angles angles =
        anglesOf(product(transposed(rotationOf(m_carrier)), rotationOf(absolute)));
    const Angles other = overTheTop(angles);
    const bool isShorter =
        std::abs(other.roll) + std::abs(other.yaw) < std::abs(angles.roll) + std::abs(angles.yaw);
    return isShorter && limited(other.pitch, kPitchLimits) == other.pitch ? other : angles;
}

/// The gimbal's angles that the mode wants with `demand`, before any limit.
Angles PodMotion::wanted(const Angles &demand) const
{
    switch (m_mode) {
    case PodMode::AngleControl:
    case PodMode::Fpv:
        return demand;
    case PodMode::EulerControl:
    case PodMode::Lock:
        return relativeTo(demand);
    case PodMode::Follow:
        return relativeTo({0, demand.pitch, m_carrier.yaw + demand.yaw});
    case PodMode::LookDown:
        return relativeTo({0, -90, m_carrier.yaw});
    case PodMode::Stare:
    case PodMode::Tracking:
        break;
    }
    return m_place ? relativeTo(anglesOf(offsetBetween(m_position, *m_place))) : m_relative;
}

/// Degrees by which a demand lies outside what the gimbal's axes can do.
double PodMotion::excess(const Angles &demand) const
{
    const Angles free = wanted(demand);
    const Angles held = limited(free);
    return std::abs(free.roll - held.roll) + std::abs(free.pitch - held.pitch) +
           std::abs(free.yaw - held.yaw);
}

void PodMotion::takeControl(double seconds, const ControlInput &control)
{
    if (!control.isValid)
        return;
    if (isHolding())
        takeRates(seconds, control);
    if (!takesAngles())
        return;
    m_parked.reset();
    m_demand = {control.roll * kControlUnit, control.pitch * kControlUnit,
                control.yaw * kControlUnit};
}

/// Turns the held direction, but not further beyond a limit than it is: the way back from the
/// limit then answers at once.
void PodMotion::takeRates(double seconds, const ControlInput &control)
{
    Angles demand = m_demand;
    demand.pitch = limited(demand.pitch + control.pitch * kControlUnit * seconds, kHeldPitchLimits);
    if (excess(demand) <= excess(m_demand))
        m_demand.pitch = demand.pitch;
    demand = m_demand;
    demand.yaw = wrapped(demand.yaw + control.yaw * kControlUnit * seconds);
    if (excess(demand) <= excess(m_demand))
        m_demand.yaw = demand.yaw;
}

void PodMotion::holdAngles(const Angles &absolute)
{
    const double from = m_mode == PodMode::Follow ? m_carrier.yaw : 0;
    m_demand = {0, absolute.pitch, wrapped(absolute.yaw - from)};
}

} // namespace podsim
