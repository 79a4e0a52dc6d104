#pragma once

#include <array>

// Attitudes, directions and positions on a flat ground around the carrier.

namespace podsim {

/// Euler angles in degrees. They turn in the order yaw, pitch, roll about the axes z (down),
/// y (right), x (forward), so that a positive pitch looks up and a positive yaw turns right.
struct Angles
{
    double roll = 0;
    double pitch = 0;
    double yaw = 0;
};

/// A place: degrees east, degrees north, metres above sea level.
struct GeoPoint
{
    double longitude = 0;
    double latitude = 0;
    double altitude = 0;
};

/// A vector of forward, right, down (of a body) or north, east, down (of the ground).
using Vector = std::array<double, 3>;
/// A rotation from body to ground, row by row.
using Rotation = std::array<Vector, 3>;

double toRadians(double degrees);
double toDegrees(double radians);

/// The angle that differs from `degrees` by whole turns and lies from -180 up to below 180.
double wrapped(double degrees);

Rotation rotationOf(const Angles &angles);
/// Inverse of `rotationOf`, pitch from -90 to 90. Straight up or down, the roll is given as 0.
Angles anglesOf(const Rotation &rotation);
Rotation product(const Rotation &first, const Rotation &second);
/// The inverse of a rotation.
Rotation transposed(const Rotation &rotation);
Vector turned(const Rotation &rotation, const Vector &vector);

/// Pitch and yaw of a direction in ground axes; the roll is 0.
Angles anglesOf(const Vector &direction);

/// The place that lies `offset` metres north, east and down of `from`.
GeoPoint moved(const GeoPoint &from, const Vector &offset);
/// Metres north, east and down from one place to another.
Vector offsetBetween(const GeoPoint &from, const GeoPoint &to);

} // namespace podsim
