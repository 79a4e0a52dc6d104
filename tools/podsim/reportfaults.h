#pragma once

#include "tools/podsim/faultoptions.h"
#include "tools/podsim/podcodec.h"

namespace podsim {

/// What the pod says of its angles instead of the truth. One for all connections. Plain data.
class ReportFaults
{
public:
    explicit ReportFaults(const FaultOptions &options) : m_options(options) {}

    /// The report to be sent for the true one, `seconds` after the pod's start.
    GcuReport told(GcuReport report, double seconds);

private:
    FaultOptions m_options;
    std::optional<GcuReport> m_first;
};

} // namespace podsim
