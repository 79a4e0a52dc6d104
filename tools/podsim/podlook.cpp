#include "tools/podsim/podlook.h"

#include "tools/podsim/podstate.h"

#include <algorithm>
#include <array>

namespace podsim {

namespace {

constexpr double kColdest = -20; // degrees Celsius, the first colour of a palette
constexpr double kHottest = 80;  // its last one
constexpr int kColours = 5;

/// White hot, black hot, iron and rainbow; further palettes begin with the first one again.
constexpr std::array<std::array<QRgb, kColours>, 4> kPalettes{{
    {0xFF000000, 0xFF404040, 0xFF808080, 0xFFC0C0C0, 0xFFFFFFFF},
    {0xFFFFFFFF, 0xFFC0C0C0, 0xFF808080, 0xFF404040, 0xFF000000},
    {0xFF000020, 0xFF500090, 0xFFC02060, 0xFFFF9000, 0xFFFFFFC0},
    {0xFF0000C0, 0xFF00B0E0, 0xFF20D020, 0xFFF0E000, 0xFFE00000},
}};

int between(int from, int to, double part)
{
    return int(from + (to - from) * part);
}

QColor thermalColour(int palette, double temperature)
{
    const auto &colours = kPalettes[std::size_t(palette) % kPalettes.size()];
    const double place =
        std::clamp((temperature - kColdest) / (kHottest - kColdest), 0.0, 1.0) * (kColours - 1);
    const int index = std::min(int(place), kColours - 2);
    const QRgb from = colours[std::size_t(index)];
    const QRgb to = colours[std::size_t(index) + 1];
    const double part = place - index;
    return {between(qRed(from), qRed(to), part), between(qGreen(from), qGreen(to), part),
            between(qBlue(from), qBlue(to), part)};
}

QColor nightColour(QRgb daylight)
{
    const int grey = qGray(daylight);
    return {grey / 6, 32 + grey * 7 / 8, grey / 6};
}

} // namespace

PodLook::PodLook(const PodState &state, std::size_t camera)
    : m_kind(camera == 1              ? Thermal
             : state.nightVision != 0 ? Night
                                      : Daylight),
      m_palette(state.palette)
{
}

QColor PodLook::of(QRgb daylight, double temperature) const
{
    switch (m_kind) {
    case Night:
        return nightColour(daylight);
    case Thermal:
        return thermalColour(m_palette, temperature);
    case Daylight:
        break;
    }
    return daylight;
}

} // namespace podsim
