#pragma once

#include <QColor>

namespace podsim {

struct PodState;

/// How a camera shows what it sees: by the colours of daylight, in the green of the night view, or
/// by temperature in the colours of the palette.
class PodLook
{
public:
    PodLook(const PodState &state, std::size_t camera);

    /// What is shown of something with a colour by daylight and a temperature in degrees Celsius.
    QColor of(QRgb daylight, double temperature) const;

private:
    enum Kind { Daylight, Night, Thermal };

    Kind m_kind;
    int m_palette;
};

} // namespace podsim
