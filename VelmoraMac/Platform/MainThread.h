#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <type_traits>
#include <utility>

namespace velmora {

// Work handed to a main thread that has shut down. Thrown to the submitter
// rather than dropping the work, so that a wrong order of teardown shows.
class MainThreadStopped final : public std::runtime_error {
public:
    MainThreadStopped()
        : std::runtime_error("the main thread has stopped")
    {
    }
};

// The handle of a repeating timer on the main thread (MainThread). The timer
// lives exactly as long as the handle: once the handle is destroyed,
// cancelled or assigned over, the tick never runs again and is not running
// on any other thread, so a tick may safely use whatever outlives its
// handle. A tick may destroy its own handle.
class RepeatingTimer {
public:
    // What an implementation hands over. Destroying it stops the timer, with
    // the guarantee above; it may be destroyed on any thread.
    class Registration {
    public:
        Registration() = default;
        Registration(const Registration&) = delete;
        Registration& operator=(const Registration&) = delete;
        Registration(Registration&&) = delete;
        Registration& operator=(Registration&&) = delete;
        virtual ~Registration() = default;
    };

    // A handle without a timer.
    RepeatingTimer() = default;
    explicit RepeatingTimer(std::unique_ptr<Registration> registration)
        : m_registration(std::move(registration))
    {
    }

    void cancel() { m_registration.reset(); }
    [[nodiscard]] bool isActive() const { return m_registration != nullptr; }

private:
    std::unique_ptr<Registration> m_registration;
};

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
    template <typename Work> std::invoke_result_t<Work&> runSync(Work&& work)
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
