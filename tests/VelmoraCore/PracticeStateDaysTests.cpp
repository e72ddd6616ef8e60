#include <stdexcept>

#include <gtest/gtest.h>

#include "CoreTestSupport.h"
#include "VelmoraCore/PracticeState.h"

namespace velmora {
namespace {

using test::utc;

struct DayCase {
    const char* zone = nullptr;
    Instant instant;
    const char* dayKey = nullptr;
    const char* weekKey = nullptr;
};

TEST(PracticeStateDays, DayAndWeekKeys_FollowTheLocalCalendarDayOfTheZone)
{
    const DayCase cases[] = {
        // Two hours east of UTC: 23:30 local is still the 14th although it is 21:30 UTC.
        {"Europe/Helsinki", utc(2025, 3, 14, 21, 30), "2025-03-14", "2025-03-10"},
        {"Europe/Helsinki", utc(2025, 3, 14, 22, 30), "2025-03-15", "2025-03-10"},
        // West of UTC: early UTC mornings still belong to the previous local day.
        {"America/Los_Angeles", utc(2025, 3, 15, 6, 30), "2025-03-14", "2025-03-10"},
        {"America/Los_Angeles", utc(2025, 3, 17, 6, 59), "2025-03-16", "2025-03-10"},
        {"America/Los_Angeles", utc(2025, 3, 17, 7, 0), "2025-03-17", "2025-03-17"},
        // Half-hour and far-east offsets.
        {"Asia/Kolkata", utc(2025, 3, 9, 18, 30), "2025-03-10", "2025-03-10"},
        {"Pacific/Kiritimati", utc(2025, 3, 9, 10, 0), "2025-03-10", "2025-03-10"},
        // Sao Paulo, 2018: clocks jumped from midnight to 01:00 on Sunday the 4th of November.
        {"America/Sao_Paulo", utc(2018, 11, 4, 2, 59, 59), "2018-11-03", "2018-10-29"},
        {"America/Sao_Paulo", utc(2018, 11, 4, 3, 0), "2018-11-04", "2018-10-29"},
        {"America/Sao_Paulo", utc(2018, 11, 5, 1, 59), "2018-11-04", "2018-10-29"}, // now two hours behind UTC
        {"America/Sao_Paulo", utc(2018, 11, 5, 2, 0), "2018-11-05", "2018-11-05"},
        // ... and back from midnight to 23:00 on Saturday the 16th of February 2019: the hour repeats.
        {"America/Sao_Paulo", utc(2019, 2, 17, 2, 30), "2019-02-16", "2019-02-11"},
        {"America/Sao_Paulo", utc(2019, 2, 17, 3, 0), "2019-02-17", "2019-02-11"},
        // Apia skipped Friday the 30th of December 2011 entirely, from UTC-10 to UTC+14.
        {"Pacific/Apia", utc(2011, 12, 30, 9, 59, 59), "2011-12-29", "2011-12-26"},
        {"Pacific/Apia", utc(2011, 12, 30, 10, 0), "2011-12-31", "2011-12-26"},
        {"Pacific/Apia", utc(2012, 1, 1, 10, 0), "2012-01-02", "2012-01-02"},
        // In UTC, the first, a middle and the last day of a week map to its Monday.
        {"UTC", utc(2025, 3, 10), "2025-03-10", "2025-03-10"},
        {"UTC", utc(2025, 3, 16, 23, 59, 59), "2025-03-16", "2025-03-10"},
        // A week that begins in the previous month and year.
        {"UTC", utc(2025, 1, 1, 12), "2025-01-01", "2024-12-30"},
    };
    for (const DayCase& c : cases) {
        const UserCalendar calendar = UserCalendar::inTimeZone(c.zone);
        EXPECT_EQ(PracticeState::dayKey(c.instant, calendar), c.dayKey) << c.zone << " day " << c.dayKey;
        EXPECT_EQ(PracticeState::weekKey(c.instant, calendar), c.weekKey) << c.zone << " day " << c.dayKey;
    }
}

TEST(PracticeStateDays, ParseDay_RefusesEverythingThatIsNotExactlyADayKey)
{
    const char* refused[] = {
        "",
        "2024-02-30",
        "2023-02-29",
        "2024-13-01",
        "2024-2-03",
        "2024-02-3 ",
        "2024/02/03",
        "+024-02-03",
        "0000-01-01",
        "２０２４-02-03",
        "2024‐02-03", // with a typographic hyphen
        "2024-02-03\n",
        "1582-10-10", // Falls in the days that the calendar reform skipped.
    };
    for (const char* key : refused)
        EXPECT_FALSE(PracticeState::parseDay(key)) << '"' << key << '"';
    EXPECT_FALSE(PracticeState::parseDay(std::string_view("2024-02-0\0", 10)));
}

TEST(PracticeStateDays, ParseDay_AnswersTheSameWhenAskedAgainInAnyOrder)
{
    // Verdicts are remembered per thread; keys eleven years and four days
    // apart share a place in that memory, and one of each pair is no day.
    for (int round = 0; round < 3; ++round) {
        EXPECT_EQ(PracticeState::parseDay("2013-02-26"), utc(2013, 2, 26));
        EXPECT_FALSE(PracticeState::parseDay("2024-02-30"));
        EXPECT_EQ(PracticeState::parseDay("2024-01-01"), utc(2024, 1, 1));
        EXPECT_EQ(PracticeState::parseDay("2035-01-05"), utc(2035, 1, 5));
        EXPECT_FALSE(PracticeState::parseDay("2023-02-29"));
        EXPECT_EQ(PracticeState::parseDay("2024-02-29"), utc(2024, 2, 29));
    }
}

TEST(PracticeStateDays, DayKeys_RoundTripThroughParseDayAsMidnightUTC)
{
    EXPECT_EQ(PracticeState::parseDay("1970-01-01"), utc(1970, 1, 1));
    EXPECT_EQ(PracticeState::parseDay("9999-12-31"), utc(9999, 12, 31));
    // Years below one thousand keep their leading zeros.
    for (const char* key : {"0001-01-01", "0999-06-01", "1582-10-15", "1900-02-28", "2000-02-29", "2100-03-01"}) {
        const std::optional<Instant> day = PracticeState::parseDay(key);
        ASSERT_TRUE(day) << key;
        EXPECT_EQ(PracticeState::dayKey(*day, UserCalendar::utc()), key);
    }
}

TEST(PracticeStateDays, UserCalendar_RefusesUnknownZonesAndAcceptsCustomOffsets)
{
    EXPECT_THROW((void)UserCalendar::inTimeZone("Mars/Olympus_Mons"), std::invalid_argument);
    EXPECT_THROW((void)UserCalendar::inTimeZone(""), std::invalid_argument);
    const UserCalendar twoEast = UserCalendar::inTimeZone("GMT+02:00");
    EXPECT_EQ(PracticeState::dayKey(utc(2025, 3, 14, 21, 30), twoEast), "2025-03-14");
    EXPECT_EQ(PracticeState::dayKey(utc(2025, 3, 14, 22, 0), twoEast), "2025-03-15");
}

} // namespace
} // namespace velmora
