#include <chrono>
#include <exception>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "VelmoraMac/Platform/Headless/ManualMainThread.h"

namespace velmora {
namespace {

using namespace std::chrono_literals;

// Collects what escaped asynchronous work instead of ending the process.
class FailureLog {
public:
    explicit FailureLog(GLibMainThread& main)
    {
        main.setFailureHandler([this](const std::exception_ptr& failure) {
            try {
                std::rethrow_exception(failure);
            } catch (const std::exception& error) {
                m_messages.emplace_back(error.what());
            }
        });
    }

    [[nodiscard]] const std::vector<std::string>& messages() const { return m_messages; }

private:
    std::vector<std::string> m_messages;
};

TEST(ManualMainThread, SyncOnTheMainThread_RunsInlineEvenWhenNested)
{
    ManualMainThread main;
    ASSERT_TRUE(main.isMainThread());
    int inner = 0;
    const int outer = main.runSync([&] {
        inner = main.runSync([] { return 7; });
        return 42;
    });
    EXPECT_EQ(outer, 42);
    EXPECT_EQ(inner, 7);
}

TEST(ManualMainThread, SyncWorkThatThrows_RethrowsToTheCaller)
{
    ManualMainThread main;
    EXPECT_THROW(main.runSync([]() -> int { throw std::out_of_range("refused"); }), std::out_of_range);
}

TEST(ManualMainThread, AsyncWork_WaitsForTheDriverAndRunsInSubmissionOrder)
{
    ManualMainThread main;
    std::vector<std::string> ran;
    main.submitAsync([&] {
        ran.emplace_back("first");
        // Even from the main thread, new work queues behind what waits.
        main.submitAsync([&] { ran.emplace_back("third"); });
    });
    main.submitAsync([&] { ran.emplace_back("second"); });
    EXPECT_TRUE(ran.empty());
    main.runPending();
    EXPECT_EQ(ran, (std::vector<std::string>{"first", "second", "third"}));
}

TEST(ManualMainThread, AsyncWorkThatThrows_GoesToTheFailureHandlerAndLaterWorkStillRuns)
{
    ManualMainThread main;
    const FailureLog failures(main);
    bool later = false;
    main.submitAsync([] { throw std::runtime_error("lost"); });
    main.submitAsync([&] { later = true; });
    main.runPending();
    EXPECT_EQ(failures.messages(), std::vector<std::string>{"lost"});
    EXPECT_TRUE(later);
}

TEST(ManualMainThreadDeathTest, AsyncWorkThatThrows_EndsTheProcessWithoutAFailureHandler)
{
    EXPECT_DEATH(
        {
            ManualMainThread main;
            main.submitAsync([] { throw std::runtime_error("nobody to tell"); });
            main.runPending();
        },
        "nobody to tell");
}

TEST(ManualMainThread, Destruction_RunsTheWorkLeftQueuedAndWhatItQueues)
{
    std::vector<int> ran;
    {
        ManualMainThread main;
        main.submitAsync([&] {
            ran.push_back(1);
            main.submitAsync([&] { ran.push_back(2); });
        });
    }
    EXPECT_EQ(ran, (std::vector<int>{1, 2}));
}

TEST(ManualMainThreadTimer, Ticks_OncePerIntervalOfTheManualClock)
{
    ManualMainThread main;
    int ticks = 0;
    const RepeatingTimer timer = main.startRepeatingTimer(1s, [&] {
        EXPECT_TRUE(main.isMainThread());
        ++ticks;
    });
    main.advance(999ms);
    EXPECT_EQ(ticks, 0);
    main.advance(1ms);
    EXPECT_EQ(ticks, 1);
    main.advance(3500ms);
    EXPECT_EQ(ticks, 4) << "every tick on the way, not one for the whole jump";
    main.runPending();
    EXPECT_EQ(ticks, 4);
    EXPECT_EQ(main.now(), 4500ms);
}

TEST(ManualMainThreadTimer, SeveralTimers_TickInTheOrderOfTheirDeadlines)
{
    ManualMainThread main;
    std::string order;
    const RepeatingTimer fast = main.startRepeatingTimer(300ms, [&] { order += 'f'; });
    const RepeatingTimer slow = main.startRepeatingTimer(500ms, [&] { order += 's'; });
    main.advance(1000ms);
    // 300 f, 500 s, 600 f, 900 f, 1000 s.
    EXPECT_EQ(order, "fsffs");
}

TEST(ManualMainThreadTimer, WorkQueuedByATick_RunsBeforeTheNextTick)
{
    ManualMainThread main;
    std::string order;
    const RepeatingTimer timer = main.startRepeatingTimer(1s, [&] {
        order += 't';
        main.submitAsync([&] { order += 'w'; });
    });
    main.advance(2s);
    EXPECT_EQ(order, "twtw");
}

TEST(ManualMainThreadTimer, GoneHandle_NeverTicksAgainAndReleasesTheTick)
{
    ManualMainThread main;
    int ticks = 0;
    auto target = std::make_shared<int>(0);
    RepeatingTimer timer = main.startRepeatingTimer(1s, [&ticks, target] { ++ticks; });
    main.advance(2s);
    ASSERT_EQ(ticks, 2);
    EXPECT_EQ(target.use_count(), 2);

    timer = RepeatingTimer();
    EXPECT_FALSE(timer.isActive());
    EXPECT_EQ(target.use_count(), 1) << "what the tick holds goes with its handle";
    main.advance(5s);
    EXPECT_EQ(ticks, 2);
}

TEST(ManualMainThreadTimer, HandleCancelledByItsOwnTick_StopsAfterThatTick)
{
    ManualMainThread main;
    int ticks = 0;
    auto target = std::make_shared<int>(0);
    RepeatingTimer timer;
    timer = main.startRepeatingTimer(1s, [&ticks, &timer, target] {
        ++ticks;
        timer.cancel();
    });
    main.advance(5s);
    EXPECT_EQ(ticks, 1);
    EXPECT_EQ(target.use_count(), 1);
}

TEST(ManualMainThreadTimer, TickThatThrows_IsReportedAndTheTimerGoesOn)
{
    ManualMainThread main;
    const FailureLog failures(main);
    int ticks = 0;
    const RepeatingTimer timer = main.startRepeatingTimer(1s, [&] {
        if (++ticks == 1)
            throw std::runtime_error("first tick");
    });
    main.advance(3s);
    EXPECT_EQ(ticks, 3);
    EXPECT_EQ(failures.messages(), std::vector<std::string>{"first tick"});
}

TEST(ManualMainThreadTimer, IntervalThatIsNotPositive_IsRefused)
{
    ManualMainThread main;
    EXPECT_THROW((void)main.startRepeatingTimer(0ms, [] {}), std::invalid_argument);
    EXPECT_THROW((void)main.startRepeatingTimer(-1s, [] {}), std::invalid_argument);
    EXPECT_THROW(main.advance(-1ms), std::invalid_argument);
}

TEST(ManualMainThreadTimer, HandleOutlivingTheMainThread_CanStillBeDestroyed)
{
    RepeatingTimer timer;
    {
        ManualMainThread main;
        timer = main.startRepeatingTimer(1s, [] {});
    }
    timer.cancel();
    EXPECT_FALSE(timer.isActive());
}

} // namespace
} // namespace velmora
