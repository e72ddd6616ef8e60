#pragma once

#include <condition_variable>
#include <mutex>

namespace velmora::test {

// A one-way event between threads: once raised it stays raised, and every
// wait after that returns at once.
class Signal {
public:
    void raise()
    {
        {
            const std::scoped_lock lock(m_mutex);
            m_raised = true;
        }
        m_changed.notify_all();
    }

    void wait()
    {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [this] { return m_raised; });
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_raised = false;
};

} // namespace velmora::test
