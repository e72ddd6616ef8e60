#include <atomic>
#include <latch>
#include <memory>
#include <numeric>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "VelmoraMac/Platform/MainThread.h"
#include "VelmoraMac/Platform/Process/DedicatedMainThread.h"

namespace velmora {
namespace {

using namespace std::chrono_literals;

// Keeps the main thread busy until `release` is set, so that a test can
// interleave other threads with a piece of main-thread work.
void spinUntil(const std::atomic<bool>& release)
{
    while (!release)
        std::this_thread::yield();
}

TEST(DedicatedMainThread, Sync_RunsOnTheMainThreadInlineWhenNestedAndFailuresReachTheirCallerOrTheHandler)
{
    DedicatedMainThread main;
    ASSERT_FALSE(main.isMainThread());
    bool onMain = false;
    const std::unique_ptr<int> value = main.runSync([&] {
        onMain = main.isMainThread();
        // Nested calls on the main thread run inline instead of deadlocking.
        return std::make_unique<int>(main.runSync([&] { return main.runSync([] { return 40; }) + 1; }) + 1);
    });
    ASSERT_TRUE(value);
    EXPECT_EQ(*value, 42);
    EXPECT_TRUE(onMain);

    // The caller gets the exception itself, with its data, not a copy of a base.
    try {
        main.submitSync([] { throw std::system_error(std::make_error_code(std::errc::permission_denied)); });
        ADD_FAILURE() << "expected std::system_error";
    } catch (const std::system_error& error) {
        EXPECT_EQ(error.code(), std::errc::permission_denied);
    }

    // Nobody waits for asynchronous work: its failure goes to the handler,
    // on the main thread, and the main thread goes on.
    std::vector<std::string> failures;
    main.setFailureHandler([&](const std::exception_ptr& failure) {
        try {
            std::rethrow_exception(failure);
        } catch (const std::exception& error) {
            failures.emplace_back(main.isMainThread() ? error.what() : "off the main thread");
        }
    });
    main.submitAsync([] { throw std::runtime_error("nobody waits for this"); });
    EXPECT_EQ(main.runSync([&] { return failures; }), std::vector<std::string>{"nobody waits for this"});
}

TEST(DedicatedMainThread, AsyncWorkFromSeveralThreads_RunsOnTheMainThreadInEachThreadsOrder)
{
    DedicatedMainThread main;
    constexpr int submitters = 4;
    constexpr int tasks = 250;
    // Touched on the main thread only and without a lock: ThreadSanitizer
    // checks that every hop really lands there.
    std::vector<std::vector<int>> seen(submitters);
    bool allOnMain = true;
    std::vector<std::thread> threads;
    threads.reserve(submitters);
    for (int submitter = 0; submitter < submitters; ++submitter) {
        threads.emplace_back([&, submitter] {
            for (int task = 0; task < tasks; ++task) {
                main.submitAsync([&, submitter, task] {
                    allOnMain = allOnMain && main.isMainThread();
                    seen[static_cast<std::size_t>(submitter)].push_back(task);
                });
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    // Queued behind everything above, so it sees all of it done.
    const auto [result, onMain] = main.runSync([&] { return std::pair(seen, allOnMain); });

    EXPECT_TRUE(onMain);
    std::vector<int> inOrder(tasks);
    std::iota(inOrder.begin(), inOrder.end(), 0);
    for (const std::vector<int>& fromOneThread : result)
        EXPECT_EQ(fromOneThread, inOrder);
}

// The handle's promise: once it is gone, a tick that was running is over.
// If it were not, the tick below would write to freed memory, which the
// sanitizer builds report.
TEST(DedicatedMainThreadTimer, HandleDestroyedOnAnotherThreadDuringATick_WaitsForTheTickToEnd)
{
    DedicatedMainThread main;
    for (int round = 0; round < 20; ++round) {
        auto target = std::make_unique<int>(0);
        std::latch entered(1);
        std::latch cancelling(1);
        std::atomic<bool> release{false};
        RepeatingTimer timer = main.startRepeatingTimer(1ms, [&] {
            entered.count_down();
            spinUntil(release);
            ++*target;
        });
        entered.wait();
        std::thread canceller([&] {
            cancelling.count_down();
            timer.cancel();
            target.reset();
        });
        cancelling.wait();
        // Likelier that the cancel is already waiting; the outcome must be
        // the same either way.
        for (int spin = 0; spin < 100; ++spin)
            std::this_thread::yield();
        release = true;
        canceller.join();
        EXPECT_FALSE(target);
    }
}

TEST(DedicatedMainThreadTimer, HandleCancelledByItsOwnTick_StopsWithoutDeadlock)
{
    DedicatedMainThread main;
    RepeatingTimer timer;
    int ticks = 0;
    bool onMain = false;
    std::latch cancelled(1);
    main.submitSync([&] {
        timer = main.startRepeatingTimer(1ms, [&] {
            ++ticks;
            onMain = main.isMainThread();
            timer.cancel();
            cancelled.count_down();
        });
    });
    cancelled.wait();
    for (int roundTrip = 0; roundTrip < 3; ++roundTrip)
        main.runSync([] {});
    EXPECT_EQ(main.runSync([&] { return std::pair(ticks, onMain); }), std::pair(1, true));
}

TEST(DedicatedMainThread, Stop_RunsTheWorkAlreadyQueuedThenRefusesNewWork)
{
    DedicatedMainThread main;
    // Main-thread state, read here only after stop() has joined the thread.
    std::vector<int> ran;
    std::atomic<bool> release{false};
    main.submitAsync([&] { spinUntil(release); });
    for (int task = 0; task < 5; ++task) {
        main.submitAsync([&, task] {
            ran.push_back(task);
            if (task == 4)
                main.submitAsync([&] { ran.push_back(5); });
        });
    }
    std::latch stopping(1);
    std::thread stopper([&] {
        stopping.count_down();
        main.stop();
    });
    stopping.wait();
    release = true;
    stopper.join();

    EXPECT_EQ(ran, (std::vector<int>{0, 1, 2, 3, 4, 5}));
    EXPECT_FALSE(main.isMainThread());
    EXPECT_THROW(main.submitAsync([] {}), MainThreadStopped);
    EXPECT_THROW(main.submitSync([] {}), MainThreadStopped);
    EXPECT_THROW((void)main.startRepeatingTimer(1s, [] {}), MainThreadStopped);
    main.stop();
}

TEST(DedicatedMainThread, SyncCallersRacingStop_GetTheirResultOrMainThreadStoppedButNeverHang)
{
    DedicatedMainThread main;
    constexpr int callers = 4;
    std::vector<int> wrongAnswers(callers, 0);
    std::latch started(callers);
    std::vector<std::thread> threads;
    threads.reserve(callers);
    for (int caller = 0; caller < callers; ++caller) {
        threads.emplace_back([&, caller] {
            started.count_down();
            try {
                for (int call = 0;; ++call) {
                    if (main.runSync([call] { return call * 2; }) != call * 2)
                        ++wrongAnswers[static_cast<std::size_t>(caller)];
                }
            } catch (const MainThreadStopped&) {
                // How every caller ends: the main thread went away.
            }
        });
    }
    started.wait();
    main.stop();
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(wrongAnswers, std::vector<int>(callers, 0));
}

} // namespace
} // namespace velmora
