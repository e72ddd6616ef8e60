#pragma once

#include <atomic>
#include <future>
#include <thread>

#include "VelmoraMac/Platform/GLibMainThread.h"

namespace velmora {

// The main thread of a process without a desktop: a thread of its own,
// iterating a GLib main context of its own, which is also that thread's
// thread-default context (GLib's asynchronous calls made there answer
// there).
class HeadlessMainThread final : public GLibMainThread {
public:
    // Returns once the thread runs.
    HeadlessMainThread();
    HeadlessMainThread(const HeadlessMainThread&) = delete;
    HeadlessMainThread& operator=(const HeadlessMainThread&) = delete;
    HeadlessMainThread(HeadlessMainThread&&) = delete;
    HeadlessMainThread& operator=(HeadlessMainThread&&) = delete;
    // Stops, as stop() does; so it must not run on the main thread either.
    ~HeadlessMainThread() override;

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
