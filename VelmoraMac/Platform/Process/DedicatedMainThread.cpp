#include "DedicatedMainThread.h"

#include <chrono>
#include <memory>
#include <stdexcept>

namespace velmora {

namespace {

GMainContext* newContext()
{
    return g_main_context_new();
}

// How long the thread stays awake after its work before it sleeps in the
// loop again. A renderer's frame is a burst of calls; each one that finds
// the thread awake is served in about a microsecond instead of the tens a
// wake-up costs. At 60 frames a second this keeps one core busy well under
// one per cent of the time.
constexpr std::chrono::microseconds lingerAfterWork{50};

} // namespace

DedicatedMainThread::DedicatedMainThread()
    : GLibMainThread(newContext(), std::thread::id())
{
    // The base holds a reference of its own; this drops the one from
    // newContext().
    g_main_context_unref(context());
    // Shared, so that the thread may still be inside set_value() when this
    // constructor has returned.
    auto started = std::make_shared<std::promise<void>>();
    std::future<void> running = started->get_future();
    m_thread = std::thread([this, started] { run(*started); });
    running.get();
}

DedicatedMainThread::~DedicatedMainThread()
{
    stop();
}

void DedicatedMainThread::stop()
{
    if (isMainThread())
        throw std::logic_error("the main thread cannot stop itself");
    if (!m_thread.joinable())
        return;
    m_stopRequested = true;
    // Ends the iteration the thread may be blocked in; if it is not blocked
    // yet, its next poll returns at once.
    g_main_context_wakeup(context());
    m_thread.join();
}

void DedicatedMainThread::run(std::promise<void>& started)
{
    setMainThread(std::this_thread::get_id());
    g_main_context_push_thread_default(context());
    started.set_value();
    while (!m_stopRequested) {
        g_main_context_iteration(context(), TRUE);
        (void)awaitTaskBriefly(lingerAfterWork);
    }
    shutDown();
    // A later thread may be given this thread's identifier.
    setMainThread(std::thread::id());
    g_main_context_pop_thread_default(context());
}

} // namespace velmora
