#pragma once

#include "tools/podsim/podstate.h"

#include <QElapsedTimer>

#include <mutex>

namespace podsim {

/// The pod's state for whoever draws it: put down by the main thread at each frame, looked at by
/// any other. Between two frames the picture goes on although the state itself stands still.
class PodSnapshot
{
public:
    PodSnapshot();

    void put(const PodState &state);
    /// A copy of what was put last, moved on by the time that has passed since.
    PodState now() const;

private:
    mutable std::mutex m_mutex;
    PodState m_state;
    QElapsedTimer m_since;
};

} // namespace podsim
