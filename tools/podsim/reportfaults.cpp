#include "tools/podsim/reportfaults.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace podsim {

namespace {

constexpr double kPerDegree = 100;
constexpr int kFullTurn = 36000; // hundredths of a degree

/// All angles but the absolute yaw, which alone has no sign.
constexpr qint16 GcuReport::*kSignedAngles[] = {&GcuReport::relativeX, &GcuReport::relativeY,
                                                &GcuReport::relativeZ, &GcuReport::absoluteRoll,
                                                &GcuReport::absolutePitch};

void add(qint16 &angle, double degrees)
{
    using Limits = std::numeric_limits<qint16>;
    const long sum = angle + std::lround(degrees * kPerDegree);
    angle = qint16(std::clamp<long>(sum, Limits::min(), Limits::max()));
}

quint16 turned(quint16 yaw, double degrees)
{
    const double sum = std::fmod(yaw + degrees * kPerDegree, kFullTurn);
    return quint16((std::lround(sum) + kFullTurn) % kFullTurn);
}

void keepAngles(GcuReport &report, const GcuReport &first)
{
    for (const auto angle : kSignedAngles)
        report.*angle = first.*angle;
    report.absoluteYaw = first.absoluteYaw;
}

} // namespace

GcuReport ReportFaults::told(GcuReport report, double seconds)
{
    for (const auto angle : kSignedAngles)
        add(report.*angle, m_options.angleOffset);
    add(report.absolutePitch, m_options.pitchOffset + m_options.driftPitch * seconds);
    add(report.relativeY, m_options.driftPitch * seconds);
    report.absoluteYaw = turned(report.absoluteYaw, m_options.drift * seconds);
    if (!m_first)
        m_first = report;
    if (m_options.stuck)
        keepAngles(report, *m_first);
    return report;
}

} // namespace podsim
