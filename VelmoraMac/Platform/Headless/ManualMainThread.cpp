#include "ManualMainThread.h"

#include <stdexcept>
#include <string>
#include <thread>

namespace velmora {

namespace {

// A timer source on the test's clock. Everything in it is touched on the
// main thread only: sources are created there and only the main thread
// iterates the context.
struct ManualTimerSource {
    GSource source;
    const std::chrono::milliseconds* now;
    std::chrono::milliseconds interval;
    std::chrono::milliseconds deadline;
};

ManualTimerSource& manualTimer(GSource* source)
{
    return *reinterpret_cast<ManualTimerSource*>(source);
}

gboolean isDue(GSource* source)
{
    const ManualTimerSource& timer = manualTimer(source);
    return *timer.now >= timer.deadline ? TRUE : FALSE;
}

gboolean prepareManualTimer(GSource* source, gint* timeout)
{
    // Never wait for this clock: it only moves when the test moves it.
    *timeout = -1;
    return isDue(source);
}

gboolean dispatchManualTimer(GSource* source, GSourceFunc callback, gpointer userData)
{
    ManualTimerSource& timer = manualTimer(source);
    timer.deadline += timer.interval;
    if (callback == nullptr)
        return G_SOURCE_REMOVE;
    return callback(userData);
}

GSourceFuncs manualTimerFunctions = {&prepareManualTimer, &isDue, &dispatchManualTimer, nullptr, nullptr, nullptr};

GMainContext* newContext()
{
    return g_main_context_new();
}

} // namespace

ManualMainThread::ManualMainThread()
    : GLibMainThread(newContext(), std::this_thread::get_id())
{
    // The base holds a reference of its own; this drops the one from
    // newContext().
    g_main_context_unref(context());
}

ManualMainThread::~ManualMainThread()
{
    shutDown();
}

bool ManualMainThread::runPending()
{
    requireMainThread("runPending");
    bool ran = false;
    while (g_main_context_iteration(context(), FALSE) != FALSE)
        ran = true;
    return ran;
}

void ManualMainThread::waitForWork()
{
    requireMainThread("waitForWork");
    waitForQueuedTask();
}

std::chrono::milliseconds ManualMainThread::now() const
{
    requireMainThread("now");
    return m_now;
}

void ManualMainThread::advance(std::chrono::milliseconds duration)
{
    requireMainThread("advance");
    if (duration < std::chrono::milliseconds::zero())
        throw std::invalid_argument("the clock of a manual main thread only moves forward");
    const std::chrono::milliseconds target = m_now + duration;
    runPending();
    for (auto next = nextDeadline(); next && *next <= target; next = nextDeadline()) {
        // A due timer that runPending() could not dispatch (it is running
        // already, further up this thread's stack) would never move on.
        if (*next <= m_now)
            throw std::logic_error("a timer that is due cannot run; was advance() called from a tick?");
        m_now = *next;
        runPending();
    }
    m_now = target;
    runPending();
}

GSource* ManualMainThread::newTimerSource(std::chrono::milliseconds interval)
{
    GSource* source = g_source_new(&manualTimerFunctions, sizeof(ManualTimerSource));
    ManualTimerSource& timer = manualTimer(source);
    timer.now = &m_now;
    timer.interval = interval;
    timer.deadline = m_now + interval;
    m_timers.push_back(SourcePointer::share(source));
    return source;
}

void ManualMainThread::requireMainThread(const char* operation) const
{
    if (!isMainThread())
        throw std::logic_error(std::string(operation) + " belongs to the thread that created the manual main thread");
}

std::optional<std::chrono::milliseconds> ManualMainThread::nextDeadline()
{
    std::erase_if(m_timers, [](const SourcePointer& source) { return g_source_is_destroyed(source.get()) != FALSE; });
    std::optional<std::chrono::milliseconds> next;
    for (const SourcePointer& source : m_timers) {
        const std::chrono::milliseconds deadline = manualTimer(source.get()).deadline;
        if (!next || deadline < *next)
            next = deadline;
    }
    return next;
}

} // namespace velmora
