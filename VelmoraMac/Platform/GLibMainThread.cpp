#include "GLibMainThread.h"

#include <stdexcept>
#include <thread>
#include <utility>

#include "MainThread.h"

namespace velmora {

namespace {

// The source that runs queued work: ready whenever the queue is not empty.
// Submitters wake the context after queueing, so an idle loop notices.
struct TaskSource {
    GSource source;
    GLibMainThread* owner;
};

[[noreturn]] void terminateWith(const std::exception_ptr& failure) noexcept
{
    // Rethrown and caught so that std::terminate runs with the exception
    // current, and the runtime's terminate handler prints what it was.
    try {
        std::rethrow_exception(failure);
    } catch (...) {
        std::terminate();
    }
}

// How long a caller waits for its answer before it sleeps: about what a
// task of the host takes, and less than being put to sleep and woken costs.
constexpr std::chrono::microseconds callerPatience{20};

// Spins until `done` answers true or `patience` has passed.
template <typename Done> bool spinUntil(std::chrono::microseconds patience, const Done& done)
{
    const auto deadline = std::chrono::steady_clock::now() + patience;
    for (;;) {
        // The clock is read only every so often: it costs more than a look.
        for (int look = 0; look < 64; ++look) {
            if (done())
                return true;
#if defined(__x86_64__) || defined(__i386__)
            __builtin_ia32_pause();
#endif
        }
        if (std::chrono::steady_clock::now() >= deadline)
            return done();
        // Leaves the core to the thread being waited for when both share
        // it.
        std::this_thread::yield();
    }
}

} // namespace

class GLibMainThread::FailureReporter {
public:
    void setHandler(FailureHandler handler)
    {
        const std::scoped_lock lock(m_mutex);
        m_handler = std::move(handler);
    }

    void report(const std::exception_ptr& failure) noexcept
    {
        FailureHandler handler;
        {
            const std::scoped_lock lock(m_mutex);
            handler = m_handler;
        }
        if (!handler)
            terminateWith(failure);
        handler(failure);
    }

private:
    std::mutex m_mutex;
    FailureHandler m_handler;
};

// Where a submitSync caller waits. The exception crosses over by move, so
// the caller ends up holding the only reference: the exception's reference
// count lives in the uninstrumented C++ runtime, and ThreadSanitizer would
// otherwise see it freed on the main thread after the caller read it.
class GLibMainThread::SyncWaiter {
public:
    void finish(std::exception_ptr failure)
    {
        {
            const std::scoped_lock lock(m_mutex);
            m_failure = std::move(failure);
            m_finished.store(true, std::memory_order_release);
        }
        m_changed.notify_all();
    }

    void wait()
    {
        // Most tasks are over before a sleeping caller could be woken.
        (void)spinUntil(callerPatience, [this] { return m_finished.load(std::memory_order_acquire); });
        std::exception_ptr failure;
        {
            std::unique_lock lock(m_mutex);
            m_changed.wait(lock, [this] { return m_finished.load(std::memory_order_relaxed); });
            failure = std::move(m_failure);
        }
        if (failure)
            std::rethrow_exception(failure);
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::exception_ptr m_failure;
    // Set under the mutex; the spinning caller also looks without it.
    std::atomic<bool> m_finished{false};
};

// What a timer source calls, shared by the source and the handle. The tick
// runs outside the lock; cancelling waits for a tick running on another
// thread, which is what lets a handle promise that its tick is over.
class GLibMainThread::TimerTicker {
public:
    TimerTicker(Task tick, std::shared_ptr<FailureReporter> failures)
        : m_tick(std::move(tick))
        , m_failures(std::move(failures))
    {
    }

    // False once cancelled: the source then removes itself.
    bool fire()
    {
        std::unique_lock lock(m_mutex);
        if (m_cancelled)
            return false;
        m_runningOn = std::this_thread::get_id();
        lock.unlock();
        try {
            m_tick();
        } catch (...) {
            m_failures->report(std::current_exception());
        }
        lock.lock();
        m_runningOn = std::thread::id();
        const bool cancelled = m_cancelled;
        // Cancelled from inside the tick: its captures could not be released
        // then, so they are released now.
        Task released = cancelled ? std::move(m_tick) : Task();
        m_finished.notify_all();
        lock.unlock();
        return !cancelled;
    }

    void cancel()
    {
        std::unique_lock lock(m_mutex);
        m_cancelled = true;
        const std::thread::id self = std::this_thread::get_id();
        m_finished.wait(lock, [&] { return m_runningOn == std::thread::id() || m_runningOn == self; });
        Task released = m_runningOn == std::thread::id() ? std::move(m_tick) : Task();
        lock.unlock();
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_finished;
    Task m_tick;
    std::shared_ptr<FailureReporter> m_failures;
    bool m_cancelled = false;
    // The thread running the tick; no thread while none is.
    std::thread::id m_runningOn;
};

class GLibMainThread::TimerRegistration final : public RepeatingTimer::Registration {
public:
    // The context is held so that the source can still be destroyed when the
    // handle outlives the main thread object.
    TimerRegistration(ContextPointer context, SourcePointer source, std::shared_ptr<TimerTicker> ticker)
        : m_context(std::move(context))
        , m_source(std::move(source))
        , m_ticker(std::move(ticker))
    {
    }

    TimerRegistration(const TimerRegistration&) = delete;
    TimerRegistration& operator=(const TimerRegistration&) = delete;
    TimerRegistration(TimerRegistration&&) = delete;
    TimerRegistration& operator=(TimerRegistration&&) = delete;

    ~TimerRegistration() override
    {
        m_ticker->cancel();
        g_source_destroy(m_source.get());
    }

private:
    ContextPointer m_context;
    SourcePointer m_source;
    std::shared_ptr<TimerTicker> m_ticker;
};

GLibMainThread::GLibMainThread(GMainContext* context, std::thread::id mainThread)
    : m_context(ContextPointer::share(context))
    , m_mainThread(mainThread)
    , m_failures(std::make_shared<FailureReporter>())
{
    static GSourceFuncs taskSourceFunctions = {&GLibMainThread::prepareTasks, &GLibMainThread::checkTasks,
        &GLibMainThread::dispatchTasks, nullptr, nullptr, nullptr};
    m_taskSource = SourcePointer::adopt(g_source_new(&taskSourceFunctions, sizeof(TaskSource)));
    reinterpret_cast<TaskSource*>(m_taskSource.get())->owner = this;
    g_source_set_name(m_taskSource.get(), "velmora main-thread tasks");
    g_source_attach(m_taskSource.get(), m_context.get());
}

GLibMainThread::~GLibMainThread()
{
    g_source_destroy(m_taskSource.get());
    std::deque<QueuedTask> abandoned;
    {
        const std::scoped_lock lock(m_mutex);
        m_closed = true;
        abandoned.swap(m_queue);
        m_hasQueuedTasks.store(false, std::memory_order_release);
    }
    for (QueuedTask& queued : abandoned) {
        if (queued.waiter)
            queued.waiter->finish(std::make_exception_ptr(MainThreadStopped()));
    }
}

bool GLibMainThread::isMainThread() const
{
    return m_mainThread.load() == std::this_thread::get_id();
}

void GLibMainThread::submitSync(const Task& task)
{
    if (isMainThread()) {
        task();
        return;
    }
    auto waiter = std::make_shared<SyncWaiter>();
    enqueue({task, waiter});
    waiter->wait();
}

void GLibMainThread::submitAsync(Task task)
{
    enqueue({std::move(task), nullptr});
}

RepeatingTimer GLibMainThread::startRepeatingTimer(std::chrono::milliseconds interval, Task tick)
{
    if (interval <= std::chrono::milliseconds::zero())
        throw std::invalid_argument("a repeating timer needs a positive interval");
    {
        const std::scoped_lock lock(m_mutex);
        if (m_closed)
            throw MainThreadStopped();
    }
    std::unique_ptr<RepeatingTimer::Registration> registration;
    submitSync([&] { registration = attachTimer(interval, std::move(tick)); });
    return RepeatingTimer(std::move(registration));
}

void GLibMainThread::setFailureHandler(FailureHandler handler)
{
    m_failures->setHandler(std::move(handler));
}

void GLibMainThread::setMainThread(std::thread::id thread)
{
    m_mainThread.store(thread);
}

void GLibMainThread::waitForQueuedTask()
{
    std::unique_lock lock(m_mutex);
    m_queued.wait(lock, [this] { return !m_queue.empty(); });
}

bool GLibMainThread::awaitTaskBriefly(std::chrono::microseconds patience) const
{
    return spinUntil(patience, [this] { return m_hasQueuedTasks.load(std::memory_order_acquire); });
}

void GLibMainThread::shutDown()
{
    for (;;) {
        std::deque<QueuedTask> batch;
        {
            const std::scoped_lock lock(m_mutex);
            if (m_queue.empty()) {
                m_closed = true;
                return;
            }
            batch.swap(m_queue);
            m_hasQueuedTasks.store(false, std::memory_order_release);
        }
        for (QueuedTask& queued : batch)
            run(queued);
    }
}

GSource* GLibMainThread::newTimerSource(std::chrono::milliseconds interval)
{
    return g_timeout_source_new(static_cast<guint>(interval.count()));
}

gboolean GLibMainThread::prepareTasks(GSource* source, gint* timeout)
{
    *timeout = -1;
    return reinterpret_cast<TaskSource*>(source)->owner->hasQueuedTasks() ? TRUE : FALSE;
}

gboolean GLibMainThread::checkTasks(GSource* source)
{
    return reinterpret_cast<TaskSource*>(source)->owner->hasQueuedTasks() ? TRUE : FALSE;
}

gboolean GLibMainThread::dispatchTasks(GSource* source, GSourceFunc /*callback*/, gpointer /*userData*/)
{
    reinterpret_cast<TaskSource*>(source)->owner->runQueuedTasks();
    return G_SOURCE_CONTINUE;
}

void GLibMainThread::enqueue(QueuedTask queued)
{
    {
        const std::scoped_lock lock(m_mutex);
        if (m_closed)
            throw MainThreadStopped();
        m_queue.push_back(std::move(queued));
        m_hasQueuedTasks.store(true, std::memory_order_release);
    }
    m_queued.notify_all();
    g_main_context_wakeup(m_context.get());
}

bool GLibMainThread::hasQueuedTasks() const
{
    const std::scoped_lock lock(m_mutex);
    return !m_queue.empty();
}

void GLibMainThread::runQueuedTasks()
{
    std::deque<QueuedTask> batch;
    {
        const std::scoped_lock lock(m_mutex);
        batch.swap(m_queue);
        m_hasQueuedTasks.store(false, std::memory_order_release);
    }
    for (QueuedTask& queued : batch)
        run(queued);
}

void GLibMainThread::run(QueuedTask& queued)
{
    std::exception_ptr failure;
    try {
        queued.task();
    } catch (...) {
        failure = std::current_exception();
    }
    // Released before the waiter wakes, so that nothing of the task is left
    // once submitSync has returned.
    queued.task = nullptr;
    if (queued.waiter)
        queued.waiter->finish(std::move(failure));
    else if (failure)
        m_failures->report(failure);
}

gboolean GLibMainThread::fireTimer(gpointer ticker)
{
    return (*static_cast<std::shared_ptr<TimerTicker>*>(ticker))->fire() ? G_SOURCE_CONTINUE : G_SOURCE_REMOVE;
}

void GLibMainThread::releaseTimer(gpointer ticker)
{
    delete static_cast<std::shared_ptr<TimerTicker>*>(ticker);
}

std::unique_ptr<RepeatingTimer::Registration> GLibMainThread::attachTimer(std::chrono::milliseconds interval, Task tick)
{
    auto ticker = std::make_shared<TimerTicker>(std::move(tick), m_failures);
    SourcePointer source = SourcePointer::adopt(newTimerSource(interval));
    g_source_set_name(source.get(), "velmora repeating timer");
    g_source_set_callback(source.get(), &fireTimer, new std::shared_ptr<TimerTicker>(ticker), &releaseTimer);
    g_source_attach(source.get(), m_context.get());
    return std::make_unique<TimerRegistration>(
        ContextPointer::share(m_context.get()), std::move(source), std::move(ticker));
}

} // namespace velmora
