#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>

#include <glib.h>

#include "GLibPointer.h"
#include "MainThread.h"

namespace velmora {

// A MainThread whose main thread is the one iterating a GLib main context.
// DedicatedMainThread owns a context and a thread of its own; the desktop's
// uses the GTK thread's default context.
//
// Submitted work is kept in a queue of our own, under our own mutex, and one
// source on the context runs it. GLib is not built with ThreadSanitizer, so
// nothing that crosses threads may rely on GLib's locking alone to be
// ordered; the queue's mutex is what orders the hand-over.
//
// An exception escaping asynchronous work or a timer tick goes to the
// failure handler on the main thread. By default that ends the process with
// std::terminate, which prints the exception: such work has nobody to
// report to, and carrying on would hide the fault.
//
// Shutting down (what stop() or the destructor of an implementation does)
// first runs every task already accepted, including tasks that those tasks
// submit, and only then refuses new work with MainThreadStopped; a waiting
// submitSync gets its result. Timers no longer fire once it begins.
class GLibMainThread : public MainThread {
public:
    using FailureHandler = std::function<void(std::exception_ptr)>;

    GLibMainThread(const GLibMainThread&) = delete;
    GLibMainThread& operator=(const GLibMainThread&) = delete;
    GLibMainThread(GLibMainThread&&) = delete;
    GLibMainThread& operator=(GLibMainThread&&) = delete;
    // Work still queued is not run: its submitters get MainThreadStopped.
    // Implementations shut down before this runs.
    ~GLibMainThread() override;

    [[nodiscard]] bool isMainThread() const override;
    void submitSync(const Task& task) override;
    void submitAsync(Task task) override;
    // The timer source is created and attached on the main thread, so a call
    // from another thread waits for the main thread once.
    RepeatingTimer startRepeatingTimer(std::chrono::milliseconds interval, Task tick) override;

    // Replaces the failure handler; an empty one restores the default.
    void setFailureHandler(FailureHandler handler);

    [[nodiscard]] GMainContext* context() const { return m_context.get(); }

protected:
    // Attaches the task source to `context`, holding a reference of its own.
    // `mainThread` may be left empty until the thread that will iterate the
    // context is known.
    GLibMainThread(GMainContext* context, std::thread::id mainThread);

    void setMainThread(std::thread::id thread);
    // Blocks until some work is queued.
    void waitForQueuedTask();
    // Spins until some work is queued or `patience` has passed; true when
    // work came. Lets a loop that owns its thread serve a burst of calls
    // (a renderer polls several exports a frame, one after the other)
    // without sleeping and being woken for each.
    [[nodiscard]] bool awaitTaskBriefly(std::chrono::microseconds patience) const;
    // Runs the queued work until none is left, then refuses new work. On the
    // main thread, after the context has stopped being iterated.
    void shutDown();

    // A new, unattached source that fires every `interval`. Called on the
    // main thread. The default follows the real monotonic clock.
    virtual GSource* newTimerSource(std::chrono::milliseconds interval);

private:
    class FailureReporter;
    class SyncWaiter;
    class TimerTicker;
    class TimerRegistration;
    using ContextPointer = GLibPointer<GMainContext, g_main_context_ref, g_main_context_unref>;
    using SourcePointer = GLibPointer<GSource, g_source_ref, g_source_unref>;

    struct QueuedTask {
        Task task;
        // Set for submitSync: the caller waits on it.
        std::shared_ptr<SyncWaiter> waiter;
    };

    static gboolean prepareTasks(GSource* source, gint* timeout);
    static gboolean checkTasks(GSource* source);
    static gboolean dispatchTasks(GSource* source, GSourceFunc callback, gpointer userData);
    static gboolean fireTimer(gpointer ticker);
    static void releaseTimer(gpointer ticker);

    void enqueue(QueuedTask queued);
    [[nodiscard]] bool hasQueuedTasks() const;
    // Runs the work queued at the time of the call.
    void runQueuedTasks();
    void run(QueuedTask& queued);
    std::unique_ptr<RepeatingTimer::Registration> attachTimer(std::chrono::milliseconds interval, Task tick);

    ContextPointer m_context;
    SourcePointer m_taskSource;
    std::atomic<std::thread::id> m_mainThread;
    std::shared_ptr<FailureReporter> m_failures;

    mutable std::mutex m_mutex;
    std::condition_variable m_queued;
    std::deque<QueuedTask> m_queue;
    // Whether m_queue holds work; written under m_mutex, read without it by
    // awaitTaskBriefly().
    std::atomic<bool> m_hasQueuedTasks{false};
    bool m_closed = false;
};

} // namespace velmora
