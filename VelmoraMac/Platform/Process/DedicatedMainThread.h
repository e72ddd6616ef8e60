#pragma once

#include <atomic>
#include <future>
#include <thread>

#include "VelmoraMac/Platform/GLibMainThread.h"

namespace velmora {

// A main thread of our own: a thread iterating a GLib main context of its
// own, which is also that thread's thread-default context (GLib's
// asynchronous calls made there answer there). The main thread of a process
// without a desktop, and the thread the desktop's notification centre talks
// to the bus on.
class DedicatedMainThread final : public GLibMainThread {
public:
    // Returns once the thread runs.
    DedicatedMainThread();
    DedicatedMainThread(const DedicatedMainThread&) = delete;
    DedicatedMainThread& operator=(const DedicatedMainThread&) = delete;
    DedicatedMainThread(DedicatedMainThread&&) = delete;
    DedicatedMainThread& operator=(DedicatedMainThread&&) = delete;
    // Stops, as stop() does; so it must not run on the main thread either.
    ~DedicatedMainThread() override;

    // Shuts down (see GLibMainThread: queued work still runs, new work is
    // refused) and joins the thread. Idempotent. Call it from one thread at
    // a time, and never from the main thread itself, which cannot join
    // itself: that throws std::logic_error.
    void stop();

private:
    void run(std::promise<void>& started);

    std::atomic<bool> m_stopRequested{false};
    std::thread m_thread;
};

} // namespace velmora
