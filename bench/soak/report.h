#pragma once

#include "bench/soak/samples.h"
#include "bench/soak/stage.h"

#include <QString>

#include <array>
#include <vector>

/// Results of a run, summed up over its rounds.
using Results = std::array<std::array<StageResult, kFaultCount>, kLinkCount>;

/// Two tables in Markdown: the frames of each link and fault, and what the process held early and
/// late.
QString report(const Results &results, const std::vector<Sample> &samples, int connections);

/// Whether nothing grew beyond its limit and no frame was lost that the faults didn't take.
bool passed(const Results &results, const std::vector<Sample> &samples, int connections);
