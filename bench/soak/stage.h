#pragma once

#include "bench/soak/faults.h"
#include "bench/soak/operator.h"

#include <QString>

/// Frames that were lost on their way to podsim, and answers that neither the fault nor late reads
/// took; wrong frames that the fault didn't make.
struct Losses
{
    int sent = 0;
    int answers = 0;
    int wrong = 0;
    bool any() const { return sent != 0 || answers > 0 || wrong > 0; }
};

/// What one link and one fault of podsim gave.
struct StageResult
{
    Traffic traffic;
    int podFrames = 0;  ///< that podsim received whole
    int podBroken = 0;  ///< and broken
    int podAnswers = 0; ///< that podsim wrote; an answer that is dropped doesn't count
    int lateReads = 0;
    Losses losses;

    StageResult &operator+=(const StageResult &other);
};

/// Runs the cycle for so long over one link to a fresh podsim. `folder` takes the link to the
/// pseudo-terminal.
StageResult runStage(Operator &console, Link link, const Fault &fault, int milliseconds,
                     const QString &folder);
