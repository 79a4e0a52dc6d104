#include "tools/podsim/podgeometry.h"

#include <algorithm>
#include <cmath>

namespace podsim {

namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr double kMetresPerDegree = 111319.4908; // along the equator of WGS 84
constexpr double kLeastCosine = 1e-6;            // nearer to a pole no east step is taken

double metresPerDegreeEast(double latitude)
{
    return kMetresPerDegree * std::cos(toRadians(latitude));
}

} // namespace

double toRadians(double degrees)
{
    return degrees * kPi / 180.0;
}

double toDegrees(double radians)
{
    return radians * 180.0 / kPi;
}

double wrapped(double degrees)
{
    return degrees - 360.0 * std::floor((degrees + 180.0) / 360.0);
}

Rotation rotationOf(const Angles &angles)
{
    const double cr = std::cos(toRadians(angles.roll));
    const double sr = std::sin(toRadians(angles.roll));
    const double cp = std::cos(toRadians(angles.pitch));
    const double sp = std::sin(toRadians(angles.pitch));
    const double cy = std::cos(toRadians(angles.yaw));
    const double sy = std::sin(toRadians(angles.yaw));
    return {Vector{cy * cp, cy * sp * sr - sy * cr, cy * sp * cr + sy * sr},
            Vector{sy * cp, sy * sp * sr + cy * cr, sy * sp * cr - cy * sr},
            Vector{-sp, cp * sr, cp * cr}};
}

Angles anglesOf(const Rotation &r)
{
    const double pitch = std::asin(std::clamp(-r[2][0], -1.0, 1.0));
    if (std::cos(pitch) < 1e-6)
        return {0, toDegrees(pitch), toDegrees(std::atan2(-r[0][1], r[1][1]))};
    return {toDegrees(std::atan2(r[2][1], r[2][2])), toDegrees(pitch),
            toDegrees(std::atan2(r[1][0], r[0][0]))};
}

Rotation product(const Rotation &first, const Rotation &second)
{
    Rotation result{};
    for (std::size_t row = 0; row < 3; ++row)
        for (std::size_t column = 0; column < 3; ++column)
            for (std::size_t i = 0; i < 3; ++i)
                result[row][column] += first[row][i] * second[i][column];
    return result;
}

Rotation transposed(const Rotation &rotation)
{
    Rotation result{};
    for (std::size_t row = 0; row < 3; ++row)
        for (std::size_t column = 0; column < 3; ++column)
            result[row][column] = rotation[column][row];
    return result;
}

Vector turned(const Rotation &rotation, const Vector &vector)
{
    Vector result{};
    for (std::size_t row = 0; row < 3; ++row)
        for (std::size_t i = 0; i < 3; ++i)
            result[row] += rotation[row][i] * vector[i];
    return result;
}

Angles anglesOf(const Vector &direction)
{
    const double level = std::hypot(direction[0], direction[1]);
    return {0, toDegrees(std::atan2(-direction[2], level)),
            toDegrees(std::atan2(direction[1], direction[0]))};
}

GeoPoint moved(const GeoPoint &from, const Vector &offset)
{
    const double east = metresPerDegreeEast(from.latitude);
    const bool isAtPole = std::abs(east) < kMetresPerDegree * kLeastCosine;
    return {wrapped(from.longitude + (isAtPole ? 0.0 : offset[1] / east)),
            from.latitude + offset[0] / kMetresPerDegree, from.altitude - offset[2]};
}

Vector offsetBetween(const GeoPoint &from, const GeoPoint &to)
{
    return {(to.latitude - from.latitude) * kMetresPerDegree,
            wrapped(to.longitude - from.longitude) * metresPerDegreeEast(from.latitude),
            from.altitude - to.altitude};
}

} // namespace podsim
