#include "StatusNotifierIdleQueue.h"

#include <cstddef>
#include <utility>

namespace velmora {

namespace {

struct QueueSource {
    GSource source;
    StatusNotifierIdleQueue* owner;
};

} // namespace

StatusNotifierIdleQueue::StatusNotifierIdleQueue(GMainContext* context)
{
    // Ready only while its ready time is set, which post() does.
    static GSourceFuncs functions = {nullptr, nullptr, &StatusNotifierIdleQueue::dispatch, nullptr, nullptr, nullptr};
    m_source = SourcePointer::adopt(g_source_new(&functions, sizeof(QueueSource)));
    reinterpret_cast<QueueSource*>(m_source.get())->owner = this;
    g_source_set_name(m_source.get(), "velmora status item");
    g_source_attach(m_source.get(), context);
}

StatusNotifierIdleQueue::~StatusNotifierIdleQueue()
{
    *m_alive = false;
    g_source_destroy(m_source.get());
}

void StatusNotifierIdleQueue::post(Task task)
{
    m_tasks.push_back(std::move(task));
    g_source_set_ready_time(m_source.get(), 0);
}

gboolean StatusNotifierIdleQueue::dispatch(GSource* source, GSourceFunc /*callback*/, gpointer /*userData*/)
{
    g_source_set_ready_time(source, -1);
    reinterpret_cast<QueueSource*>(source)->owner->runQueued();
    return G_SOURCE_CONTINUE;
}

void StatusNotifierIdleQueue::runQueued() noexcept
{
    // Only what was queued so far: a task that posts another leaves it for
    // the next iteration, so that a busy host cannot starve the loop. A task
    // may destroy the queue's owner, and the queue with it: the flag says
    // so, and the rest is dropped unrun.
    const std::shared_ptr<bool> alive = m_alive;
    for (std::size_t count = m_tasks.size(); count > 0 && *alive; --count) {
        const Task task = std::move(m_tasks.front());
        m_tasks.pop_front();
        if (task)
            task();
    }
}

} // namespace velmora
