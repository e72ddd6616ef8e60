#include <chrono>
#include <optional>
#include <vector>

#include <glib.h>
#include <gtest/gtest.h>

#include "DesktopSession.h"
#include "VelmoraMac/Platform/Desktop/WallClockAlarm.h"

namespace velmora {
namespace {

using namespace std::chrono_literals;

Instant wallClockNow()
{
    return std::chrono::time_point_cast<std::chrono::milliseconds>(std::chrono::system_clock::now());
}

// A context of the test's own, iterated here; what rang, and when.
class WallClockAlarmTest : public testing::Test {
protected:
    void TearDown() override
    {
        m_alarm.reset();
        g_main_context_unref(m_context);
    }

    // Iterates the context for `duration` of real time, or until it rang.
    void runFor(std::chrono::milliseconds duration, bool untilRung = true)
    {
        (void)test::iterateUntil([&] { return untilRung && !m_rung.empty(); }, duration, m_context);
    }

    GMainContext* m_context = g_main_context_new();
    std::vector<std::pair<WallClockAlarm::Reason, Instant>> m_rung;
    std::optional<WallClockAlarm> m_alarm{std::in_place, m_context,
        [this](WallClockAlarm::Reason reason) { m_rung.emplace_back(reason, wallClockNow()); }};
};

TEST_F(WallClockAlarmTest, RingsOnceAtItsInstantNotBeforeAndNeverOnceDisarmed)
{
    const Instant when = wallClockNow() + 60ms;
    m_alarm->arm(when);
    EXPECT_TRUE(m_alarm->armed());
    runFor(5s);
    ASSERT_EQ(m_rung.size(), 1U);
    EXPECT_EQ(m_rung.front().first, WallClockAlarm::Reason::due);
    EXPECT_GE(m_rung.front().second, when);
    EXPECT_FALSE(m_alarm->armed());

    // Rearmed, the later instant gives way to one already past.
    m_rung.clear();
    m_alarm->arm(wallClockNow() + 1h);
    m_alarm->arm(wallClockNow() - 1h);
    runFor(5s);
    EXPECT_EQ(m_rung.size(), 1U) << "an instant already past rings at once, once";

    // Disarmed, or destroyed, it never rings.
    m_rung.clear();
    m_alarm->arm(wallClockNow() + 20ms);
    m_alarm->disarm();
    EXPECT_FALSE(m_alarm->armed());
    runFor(150ms, false);
    m_alarm->arm(wallClockNow() + 20ms);
    m_alarm.reset();
    runFor(150ms, false);
    EXPECT_TRUE(m_rung.empty());
}

} // namespace
} // namespace velmora
