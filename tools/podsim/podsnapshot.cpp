#include "tools/podsim/podsnapshot.h"

namespace podsim {

PodSnapshot::PodSnapshot()
{
    m_since.start();
}

void PodSnapshot::put(const PodState &state)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_state = state;
    m_since.restart();
}

PodState PodSnapshot::now() const
{
    std::unique_lock<std::mutex> lock(m_mutex);
    PodState state = m_state;
    const double seconds = m_since.nsecsElapsed() / 1e9;
    lock.unlock();
    state.step(seconds, {});
    return state;
}

} // namespace podsim
