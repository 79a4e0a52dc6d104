#pragma once

#include "bench/soak/samples.h"

#include <QString>

/// The samples as an SVG picture: a curve for each quantity over the minutes of the run, in the
/// colour of the link that was open.
QString picture(const std::vector<Sample> &samples);
