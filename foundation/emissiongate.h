#pragma once

#include <atomic>
#include <mutex>

/// Lets tasks of a pool emit signals of an object that may go at any moment. Object and tasks
/// share it, so that a task's last look is safe.
class EmissionGate
{
public:
    /// Calls `emission` unless the gate is closed. The object stays until that is done.
    template <typename Emission>
    void pass(const Emission &emission)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (!m_closed)
            emission();
    }

    /// Waits for an emission under way; no other follows.
    void close()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_closed = true;
    }

    bool isClosed() const { return m_closed; }

private:
    std::atomic<bool> m_closed{false};
    std::mutex m_mutex;
};
