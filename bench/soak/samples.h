#pragma once

#include "bench/soak/faults.h"

#include <array>
#include <vector>

/// What the process holds at one moment.
struct Sample
{
    double minute = 0; ///< since the start
    Link link = kTcp;  ///< that is open
    /// Figures in the order of `kQuantities`.
    std::array<double, 3> figures = {};
};

/// A figure that must not grow without bound.
struct Quantity
{
    const char *name;
    const char *unit;
    double limit; ///< that late medians may lie above early ones
    /// What each connection made in between may add: link objects and notices are kept to the end
    /// of the process.
    double perConnection;
};

constexpr std::array<Quantity, 3> kQuantities = {{
    {"resident memory", "MB", 4, 0.1},
    {"open files", "", 1, 0},
    {"threads", "", 1, 0},
}};

Sample takeSample(double minute, Link link);

/// Medians of a link's first and last third of samples, those of the warm-up left out.
struct Growth
{
    double early = 0;
    double late = 0;
    double allowed = 0;
    bool isBounded() const { return late - early <= allowed; }
};

/// `connections` were made in the whole run.
Growth growthOf(const std::vector<Sample> &samples, Link link, std::size_t quantity,
                int connections);
