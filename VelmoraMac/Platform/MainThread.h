#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <type_traits>
#include <utility>

#include "RepeatingTimer.h"

namespace velmora {

// The one thread on which the shell's state lives. Everything that touches
// the coordinator, the scheduler or the host runs here; other threads (the
// renderer's, the platform's completion handlers) hop here first. There are
// no locks behind this: correctness rests on every hop going through here.
//
// Every operation may be called from any thread unless noted.
class MainThread {
public:
    using Task = std::function<void()>;

    MainThread() = default;
    MainThread(const MainThread&) = delete;
    MainThread& operator=(const MainThread&) = delete;
    MainThread(MainThread&&) = delete;
    MainThread& operator=(MainThread&&) = delete;
    virtual ~MainThread() = default;

    [[nodiscard]] virtual bool isMainThread() const = 0;

    // Runs `task` on the main thread and returns when it has finished; on the
    // main thread itself it runs at once, inline, so that a nested hop
    // cannot deadlock. An exception `task` throws is rethrown here, on the
    // caller's thread. Throws MainThreadStopped when the main thread has shut
    // down. The caller must not be a thread the main thread is waiting for.
    virtual void submitSync(const Task& task) = 0;

    // Queues `task` to run on the main thread after the work queued before
    // it, in submission order; never inline, even on the main thread. An
    // exception it throws is a program error, reported by the
    // implementation (see GLibMainThread). Throws MainThreadStopped when the
    // main thread has shut down.
    virtual void submitAsync(Task task) = 0;

    // Calls `tick` on the main thread every `interval` (positive) until the
    // returned handle goes away; the first tick comes one interval from now.
    // Ticks that fall due while the main thread is busy are not caught up.
    // Throws std::invalid_argument for an interval that is not positive and
    // MainThreadStopped when the main thread has shut down.
    virtual RepeatingTimer startRepeatingTimer(std::chrono::milliseconds interval, Task tick) = 0;

    // submitSync for work with a result: the value `work` returns on the
    // main thread, or its exception.
    template <typename Work>
    std::invoke_result_t<Work&> runSync(Work&& work)
    {
        using Result = std::invoke_result_t<Work&>;
        if constexpr (std::is_void_v<Result>) {
            submitSync([&work] { work(); });
        } else {
            std::optional<Result> result;
            submitSync([&work, &result] { result.emplace(work()); });
            return std::move(*result);
        }
    }
};

} // namespace velmora
