#pragma once

#include "foundation/emissiongate.h"

#include <atomic>

/// What a console page shares with the workers of its runs. The GUI thread alone writes `running`.
struct SendFlags
{
    std::atomic<bool> running{false};
    EmissionGate gate; ///< closed once the page is given up
};
