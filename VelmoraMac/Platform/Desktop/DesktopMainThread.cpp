#include "DesktopMainThread.h"

#include <thread>

namespace velmora {

namespace {

// True when no other thread is iterating `context` now (this thread may
// be, or nobody is).
bool freeForThisThread(GMainContext* context)
{
    if (g_main_context_acquire(context) == FALSE)
        return false;
    g_main_context_release(context);
    return true;
}

} // namespace

DesktopMainThread::DesktopMainThread()
    : GLibMainThread(g_main_context_default(), std::thread::id())
{
    if (freeForThisThread(context())) {
        setMainThread(std::this_thread::get_id());
        return;
    }
    // Queued first, so it runs before any work of ours on that thread.
    submitAsync([this] { setMainThread(std::this_thread::get_id()); });
}

} // namespace velmora
