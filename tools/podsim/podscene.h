#pragma once

#include "tools/podsim/podgeometry.h"

#include <QtGlobal>

#include <array>

// What stands and moves around the pod, for its cameras to see.

namespace podsim {

/// Something that is seen in the same direction from everywhere, as if it were very far away.
struct SceneObject
{
    const char *name;
    quint32 colour;            ///< 0xAARRGGBB by daylight
    double temperature;        ///< degrees Celsius
    double radius;             ///< degrees
    double azimuth;            ///< degrees from north to the east, at 0 seconds
    double elevation;          ///< degrees above the horizon, at 0 seconds
    double azimuthSwing = 0;   ///< degrees to either side, to the east first
    double elevationSwing = 0; ///< degrees to either side, up first
    double period = 0;         ///< seconds of a whole swing to both sides; 0 for what stands still

    constexpr bool isMoving() const { return period > 0; }
};

constexpr double kSkyTemperature = -15;
constexpr double kGroundTemperature = 15;

// clang-format off
constexpr std::array<SceneObject, 14> kScene{{
    {"red",     0xFFE01818, 60, 1.0,  -20,  10},
    {"yellow",  0xFFF0E000, 45, 1.0,    0,  13},
    {"blue",    0xFF1030E0, -5, 1.0,   24,  13},
    {"magenta", 0xFFE018E0, 70, 1.0,  -24, -13},
    {"white",   0xFFFFFFFF, 30, 1.0,    0, -13},
    {"orange",  0xFFFF8000, 50, 1.0,   24, -13},
    {"east",    0xFFE01818, 60, 1.5,   90,   5},
    {"south",   0xFFF0E000, 45, 1.5,  180,   5},
    {"west",    0xFF1030E0, -5, 1.5,  -90,   5},
    {"below",   0xFFE018E0, 70, 1.5,    0, -60},
    {"nadir",   0xFFFFFFFF, 30, 1.5,    0, -90},
    {"car",     0xFF00E020, 75, 0.8,  -12,  -6, 6, 0, 60},
    {"drone",   0xFF00E0E0, 40, 0.8,   12,   7, 6, 2, 60},
    {"boat",    0xFFF8A0B8, 25, 0.8,   45,  -4, 8, 0, 80},
}};
// clang-format on

/// North, east and down of the direction in which an object is seen, with length 1.
Vector directionAt(const SceneObject &object, double seconds);

} // namespace podsim
