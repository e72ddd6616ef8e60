#include <atomic>
#include <chrono>
#include <stdexcept>
#include <thread>

#include <gtest/gtest.h>

#include "VelmoraMac/Platform/Headless/ManualMainThread.h"

namespace velmora {
namespace {

using namespace std::chrono_literals;

TEST(ManualMainThreadConcurrency, SyncFromAnotherThread_WaitsUntilTheTestRunsIt)
{
    ManualMainThread main;
    std::atomic<bool> returned{false};
    bool ranOnMain = false;
    int value = 0;
    std::thread caller([&] {
        value = main.runSync([&] {
            ranOnMain = main.isMainThread();
            return 5;
        });
        returned = true;
    });
    main.waitForWork();
    EXPECT_FALSE(returned) << "the work has not run yet";
    main.runPending();
    caller.join();
    EXPECT_EQ(value, 5);
    EXPECT_TRUE(ranOnMain);
}

TEST(ManualMainThreadConcurrency, TimerStartedFromAnotherThread_TicksOnTheManualClock)
{
    ManualMainThread main;
    RepeatingTimer timer;
    int ticks = 0;
    std::thread starter([&] { timer = main.startRepeatingTimer(1s, [&] { ++ticks; }); });
    // Timers are attached on the main thread, so the starter waits for it.
    main.waitForWork();
    main.runPending();
    starter.join();
    main.advance(2s);
    EXPECT_EQ(ticks, 2);
}

TEST(ManualMainThreadConcurrency, DriverOperations_BelongToTheMainThread)
{
    ManualMainThread main;
    std::thread other([&] {
        EXPECT_FALSE(main.isMainThread());
        EXPECT_THROW(main.runPending(), std::logic_error);
        EXPECT_THROW(main.advance(1s), std::logic_error);
        EXPECT_THROW((void)main.now(), std::logic_error);
        // Submitting is for every thread.
        main.submitAsync([] {});
    });
    other.join();
    main.runPending();
    EXPECT_EQ(main.now(), 0ms);
}

} // namespace
} // namespace velmora
