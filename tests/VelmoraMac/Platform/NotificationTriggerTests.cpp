#include <optional>

#include <gtest/gtest.h>

#include "VelmoraMac/Platform/NotificationRequest.h"
#include "tests/VelmoraCore/CoreTestSupport.h"

namespace velmora {
namespace {

using test::utc;

NotificationTrigger berlin(int year, int month, int day, int hour, int minute)
{
    return {year, month, day, hour, minute, "Europe/Berlin"};
}

TEST(NotificationTrigger, At_TakesTheMinuteInTheCalendarsZoneAndDropsTheSeconds)
{
    const UserCalendar calendar = UserCalendar::inTimeZone("Europe/Berlin");
    // 08:30:45 in summer time, two hours east of UTC.
    EXPECT_EQ(NotificationTrigger::at(utc(2025, 7, 1, 6, 30, 45), calendar), berlin(2025, 7, 1, 8, 30));
    // Late in the evening UTC is already the next day in Berlin.
    EXPECT_EQ(NotificationTrigger::at(utc(2025, 12, 31, 23, 15), calendar), berlin(2026, 1, 1, 0, 15));
}

// Expected instants worked out by hand from the zone rules: Berlin moves
// from UTC+1 to UTC+2 at 01:00 UTC on 30 March 2025 and back at 01:00 UTC on
// 26 October 2025; Apia skipped 30 December 2011, going from UTC-10 to
// UTC+14 at 10:00 UTC that day.
TEST(NotificationTrigger, Instant_ResolvesWallClockTimesInTheTriggersZone)
{
    EXPECT_EQ(berlin(2025, 1, 15, 20, 0).instant(), utc(2025, 1, 15, 19, 0));
    EXPECT_EQ(berlin(2025, 7, 15, 20, 0).instant(), utc(2025, 7, 15, 18, 0));
    EXPECT_EQ(berlin(2025, 3, 30, 2, 30).instant(), utc(2025, 3, 30, 1, 0))
        << "a skipped time takes the next time that exists";
    EXPECT_EQ(berlin(2025, 10, 26, 2, 30).instant(), utc(2025, 10, 26, 0, 30))
        << "a repeated time takes its first occurrence";
    EXPECT_EQ((NotificationTrigger{2011, 12, 30, 12, 0, "Pacific/Apia"}.instant()), utc(2011, 12, 30, 10, 0))
        << "a skipped day";
}

TEST(NotificationTrigger, At_AndInstant_AgreeForEveryMinuteAroundAChangeOfTime)
{
    const UserCalendar calendar = UserCalendar::inTimeZone("Europe/Berlin");
    for (Instant minute = utc(2025, 10, 25, 23, 0); minute < utc(2025, 10, 26, 3, 0);
         minute += std::chrono::minutes(7)) {
        const std::optional<Instant> back = NotificationTrigger::at(minute, calendar).instant();
        ASSERT_TRUE(back);
        // Within the repeated hour, the wall-clock minute names its first
        // occurrence, an hour early for the second.
        const bool secondOccurrence = minute >= utc(2025, 10, 26, 1, 0) && minute < utc(2025, 10, 26, 2, 0);
        EXPECT_EQ(*back, secondOccurrence ? minute - std::chrono::hours(1) : minute);
    }
}

TEST(NotificationTrigger, Instant_IsNoneForFieldsThatFormNoTime)
{
    for (const NotificationTrigger& trigger :
        {berlin(2025, 13, 1, 8, 0), berlin(2025, 0, 1, 8, 0), berlin(2025, 2, 29, 8, 0), berlin(2025, 4, 31, 8, 0),
            berlin(2025, 4, 0, 8, 0), berlin(2025, 4, 1, 24, 0), berlin(2025, 4, 1, 8, 60), berlin(2025, 4, 1, -1, 0),
            NotificationTrigger{2025, 4, 1, 8, 0, "Mars/Olympus_Mons"}})
        EXPECT_FALSE(trigger.instant()) << trigger.year << "-" << trigger.month << "-" << trigger.day << " "
                                        << trigger.hour << ":" << trigger.minute << " " << trigger.timeZone;
    EXPECT_TRUE(berlin(2024, 2, 29, 8, 0).instant()) << "a leap day";
}

} // namespace
} // namespace velmora
