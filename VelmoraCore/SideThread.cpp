#include "SideThread.h"

#include <utility>

namespace velmora {

SideThread::~SideThread()
{
    if (!m_thread.joinable())
        return;
    {
        const std::scoped_lock lock(m_mutex);
        m_stopping = true;
    }
    m_changed.notify_all();
    m_thread.join();
}

std::future<void> SideThread::run(std::function<void()> task)
{
    std::packaged_task<void()> packaged(std::move(task));
    std::future<void> done = packaged.get_future();
    {
        const std::scoped_lock lock(m_mutex);
        m_task.emplace(std::move(packaged));
    }
    if (!m_thread.joinable())
        m_thread = std::thread([this] { serve(); });
    else
        m_changed.notify_one();
    return done;
}

void SideThread::serve()
{
    std::unique_lock lock(m_mutex);
    for (;;) {
        m_changed.wait(lock, [this] { return m_stopping || m_task.has_value(); });
        if (m_task) {
            std::packaged_task<void()> task = std::move(*m_task);
            m_task.reset();
            lock.unlock();
            // What the task throws goes to its future.
            task();
            lock.lock();
            continue;
        }
        return;
    }
}

} // namespace velmora
