#pragma once

#include <atomic>
#include <mutex>

/// What a console page shares with the workers of its runs. It outlives the page, so that a
/// worker's last look is safe. The GUI thread alone writes the flags.
struct SendFlags
{
    std::atomic<bool> running{false};
    std::atomic<bool> quitting{false};
    std::mutex emission; ///< held while a worker emits: the page is there until that is done
};
