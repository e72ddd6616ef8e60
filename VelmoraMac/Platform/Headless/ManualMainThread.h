#pragma once

#include <chrono>
#include <optional>
#include <vector>

#include "VelmoraMac/Platform/GLibMainThread.h"
#include "VelmoraMac/Platform/GLibPointer.h"

namespace velmora {

// A main thread that a test drives by hand: the thread that creates it is the
// main thread, and nothing runs until that thread calls runPending() or
// advance(). Timers follow a clock of its own that only advance() moves, so
// timer tests never sleep and never depend on the machine's speed.
//
// Other threads may submit work as to any main thread; submitSync from them
// waits until the test runs it (waitForWork() lets the test wait for it to
// arrive). runPending(), waitForWork(), now() and advance() belong to the
// main thread and throw std::logic_error elsewhere.
//
// The destructor shuts down as GLibMainThread describes: whatever the test
// left queued runs then, on the destroying thread, which must be the main
// thread.
class ManualMainThread final : public GLibMainThread {
public:
    ManualMainThread();
    ManualMainThread(const ManualMainThread&) = delete;
    ManualMainThread& operator=(const ManualMainThread&) = delete;
    ManualMainThread(ManualMainThread&&) = delete;
    ManualMainThread& operator=(ManualMainThread&&) = delete;
    ~ManualMainThread() override;

    // Runs every queued task and every timer that is due, and then whatever
    // that work queued in turn, until nothing is left to run now. Tells
    // whether anything ran.
    bool runPending();
    // Blocks until some work is queued; returns at once if some already is.
    void waitForWork();

    // Time on the timers' clock since the main thread was created.
    [[nodiscard]] std::chrono::milliseconds now() const;
    // Moves the timers' clock forward by `duration` (not negative), stopping
    // at every tick on the way: a timer of one second advanced by three
    // seconds ticks three times. Queued work runs as with runPending().
    void advance(std::chrono::milliseconds duration);

private:
    using SourcePointer = GLibPointer<GSource, g_source_ref, g_source_unref>;

    GSource* newTimerSource(std::chrono::milliseconds interval) override;
    void requireMainThread(const char* operation) const;
    // The earliest deadline of the timers still attached.
    std::optional<std::chrono::milliseconds> nextDeadline();

    std::chrono::milliseconds m_now{0};
    std::vector<SourcePointer> m_timers;
};

} // namespace velmora
