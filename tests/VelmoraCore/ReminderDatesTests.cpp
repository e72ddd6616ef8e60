#include <algorithm>
#include <cstddef>
#include <iomanip>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "CoreTestSupport.h"
#include "VelmoraCore/ReminderDates.h"

namespace velmora {
namespace {

using test::utc;
using namespace std::chrono_literals;

// Instants as UTC text, so that a failing comparison reads as times.
std::vector<std::string> utcTexts(const std::vector<Instant>& instants)
{
    std::vector<std::string> texts;
    texts.reserve(instants.size());
    for (const Instant instant : instants) {
        const auto day = std::chrono::floor<std::chrono::days>(instant);
        const std::chrono::year_month_day date(day);
        const std::chrono::hh_mm_ss time(instant - day);
        std::ostringstream text;
        text << std::setfill('0') << std::setw(4) << static_cast<int>(date.year()) << '-' << std::setw(2)
             << static_cast<unsigned>(date.month()) << '-' << std::setw(2) << static_cast<unsigned>(date.day()) << ' '
             << std::setw(2) << time.hours().count() << ':' << std::setw(2) << time.minutes().count() << ':'
             << std::setw(2) << time.seconds().count() << '.' << std::setw(3) << time.subseconds().count();
        texts.push_back(text.str());
    }
    return texts;
}

// `count` instants 24 hours apart from `first`: the reminders of a zone
// without offset changes in the days concerned.
std::vector<Instant> everyDay(Instant first, int count)
{
    std::vector<Instant> instants;
    instants.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i)
        instants.push_back(first + std::chrono::days(i));
    return instants;
}

std::vector<Instant> joined(std::vector<Instant> head, const std::vector<Instant>& tail)
{
    head.insert(head.end(), tail.begin(), tail.end());
    return head;
}

struct Reminder {
    bool enabled;
    std::int64_t hour;
    std::int64_t minute;
};

constexpr Reminder off{false, 20, 0};
constexpr Reminder at20{true, 20, 0};

struct UpcomingCase {
    const char* name;
    const char* zone;
    Reminder reminder;
    PracticeState::StringSet practiceDays;
    Instant now;
    std::vector<Instant> expected;
};

void expectUpcoming(const UpcomingCase& c)
{
    PracticeState state;
    state.reminderEnabled = c.reminder.enabled;
    state.reminderHour = c.reminder.hour;
    state.reminderMinute = c.reminder.minute;
    state.practiceDays = c.practiceDays;
    EXPECT_EQ(utcTexts(ReminderDates::upcoming(state, c.now, UserCalendar::inTimeZone(c.zone))), utcTexts(c.expected))
        << c.name;
}

TEST(ReminderDates, Upcoming_OneReminderPerDayStillAheadAndNotYetPractised)
{
    const UpcomingCase cases[] = {
        {"reminders off", "UTC", off, {}, utc(2025, 3, 14, 8), {}},
        {"time outside the clock", "UTC", {true, 24, 0}, {}, utc(2025, 3, 14, 8), {}},
        {"a millisecond before today's time", "UTC", at20, {}, utc(2025, 3, 14, 20) - 1ms,
            everyDay(utc(2025, 3, 14, 20), 7)},
        {"exactly today's time: tomorrow to a week ahead", "UTC", at20, {}, utc(2025, 3, 14, 20),
            everyDay(utc(2025, 3, 15, 20), 7)},
        {"today practised", "UTC", at20, {"2025-03-14"}, utc(2025, 3, 14, 8), everyDay(utc(2025, 3, 15, 20), 7)},
        {"days ahead practised are skipped, not replaced", "UTC", at20, {"2025-03-15", "2025-03-17"},
            utc(2025, 3, 14, 8),
            {utc(2025, 3, 14, 20), utc(2025, 3, 16, 20), utc(2025, 3, 18, 20), utc(2025, 3, 19, 20),
                utc(2025, 3, 20, 20), utc(2025, 3, 21, 20)}},
        {"every candidate day practised", "UTC", at20,
            {"2025-03-14", "2025-03-15", "2025-03-16", "2025-03-17", "2025-03-18", "2025-03-19", "2025-03-20",
                "2025-03-21"},
            utc(2025, 3, 14, 8), {}},
        {"only a week ahead is looked at", "UTC", at20,
            {"2025-03-15", "2025-03-16", "2025-03-17", "2025-03-18", "2025-03-19", "2025-03-20", "2025-03-21"},
            utc(2025, 3, 14, 21), {}},
        {"past practice days do not matter", "UTC", {true, 7, 45}, {"2025-03-13", "2024-03-15"},
            utc(2025, 3, 14, 7, 44), everyDay(utc(2025, 3, 14, 7, 45), 7)},
        {"midnight reminder", "UTC", {true, 0, 0}, {}, utc(2025, 3, 14), everyDay(utc(2025, 3, 15), 7)},
        // Tokyo, nine hours east: 09:00 on the 14th is midnight UTC, so 08:30 has passed.
        {"east: today's time passed locally", "Asia/Tokyo", {true, 8, 30}, {}, utc(2025, 3, 14),
            everyDay(utc(2025, 3, 14, 23, 30), 7)},
        // 01:00 on the 15th in Tokyo is still the 14th in UTC; the local day is the one practised.
        {"east: today is the local day", "Asia/Tokyo", {true, 8, 30}, {"2025-03-15"}, utc(2025, 3, 14, 16),
            everyDay(utc(2025, 3, 15, 23, 30), 7)},
        {"east: the UTC day is not today", "Asia/Tokyo", {true, 8, 30}, {"2025-03-14"}, utc(2025, 3, 14, 16),
            everyDay(utc(2025, 3, 14, 23, 30), 7)},
        // Los Angeles, seven hours west: 20:00 on the 20th is already the 21st in UTC.
        {"west: the UTC day is the local tomorrow", "America/Los_Angeles", {true, 21, 0}, {"2025-03-21"},
            utc(2025, 3, 21, 3), joined({utc(2025, 3, 21, 4)}, everyDay(utc(2025, 3, 23, 4), 6))},
        {"half-hour offset", "Asia/Kolkata", {true, 6, 0}, {}, utc(2025, 3, 14, 1),
            everyDay(utc(2025, 3, 15, 0, 30), 7)},
    };
    for (const UpcomingCase& c : cases)
        expectUpcoming(c);
}

// The expected instants of this table were worked out from the zones' rules
// and checked against a separate implementation over Python's zoneinfo.
TEST(ReminderDates, Upcoming_KeepsTheWallClockTimeAcrossOffsetChanges)
{
    const UpcomingCase cases[] = {
        // Berlin moves from UTC+1 to UTC+2 at 02:00 on 30 March 2025, which becomes 03:00.
        {"spring forward: calendar days, not 24 hours", "Europe/Berlin", at20, {}, utc(2025, 3, 28, 12),
            joined(everyDay(utc(2025, 3, 28, 19), 2), everyDay(utc(2025, 3, 30, 18), 5))},
        {"spring forward: a time in the gap is the first time after it", "Europe/Berlin", {true, 2, 30}, {},
            utc(2025, 3, 28, 12),
            joined({utc(2025, 3, 29, 1, 30), utc(2025, 3, 30, 1, 0)}, everyDay(utc(2025, 3, 31, 0, 30), 5))},
        {"spring forward: the first minute of the gap", "Europe/Berlin", {true, 2, 0}, {}, utc(2025, 3, 29, 12),
            joined({utc(2025, 3, 30, 1, 0)}, everyDay(utc(2025, 3, 31, 0, 0), 6))},
        // Back from 03:00 UTC+2 to 02:00 UTC+1 on 26 October 2025: 02:00 to 02:59 occur twice.
        {"fall back: a repeated time is its first occurrence", "Europe/Berlin", {true, 2, 30}, {},
            utc(2025, 10, 24, 12),
            joined({utc(2025, 10, 25, 0, 30), utc(2025, 10, 26, 0, 30)}, everyDay(utc(2025, 10, 27, 1, 30), 5))},
        {"fall back: the first occurrence is already past during the second", "Europe/Berlin", {true, 2, 30}, {},
            utc(2025, 10, 26, 1, 15), everyDay(utc(2025, 10, 27, 1, 30), 7)},
        // Sao Paulo jumped from midnight to 01:00 on 4 November 2018: that day has no midnight.
        {"a day without midnight still gets its reminder", "America/Sao_Paulo", at20, {}, utc(2018, 11, 3, 12),
            joined({utc(2018, 11, 3, 23), utc(2018, 11, 4, 22)}, everyDay(utc(2018, 11, 5, 22), 5))},
        {"a midnight reminder on a day without midnight comes at 01:00", "America/Sao_Paulo", {true, 0, 0}, {},
            utc(2018, 11, 3, 12), joined({utc(2018, 11, 4, 3)}, everyDay(utc(2018, 11, 5, 2), 6))},
        {"a day without midnight is recognised as practised", "America/Sao_Paulo", at20, {"2018-11-04"},
            utc(2018, 11, 3, 12), joined({utc(2018, 11, 3, 23)}, everyDay(utc(2018, 11, 5, 22), 6))},
        // Apia skipped Friday 30 December 2011, from UTC-10 straight to UTC+14.
        {"the skipped day gets no reminder", "Pacific/Apia", at20, {}, utc(2011, 12, 29, 18),
            joined({utc(2011, 12, 30, 6)}, everyDay(utc(2011, 12, 31, 6), 6))},
        {"the skipped day is not replaced by a later one", "Pacific/Apia", at20, {}, utc(2011, 12, 30, 7),
            everyDay(utc(2011, 12, 31, 6), 6)},
        {"the skipped day is skipped whatever the time", "Pacific/Apia", {true, 0, 0}, {}, utc(2011, 12, 29, 9),
            joined({utc(2011, 12, 29, 10)}, everyDay(utc(2011, 12, 30, 10), 5))},
        // Lord Howe moves by half an hour: 02:00 becomes 02:30 on 5 October 2025 (UTC+10:30 to
        // UTC+11), and 01:30 to 01:59 repeat on 6 April 2025.
        {"half-hour change forward", "Australia/Lord_Howe", {true, 2, 15}, {}, utc(2025, 10, 3),
            joined({utc(2025, 10, 3, 15, 45), utc(2025, 10, 4, 15, 30)}, everyDay(utc(2025, 10, 5, 15, 15), 5))},
        {"half-hour change back", "Australia/Lord_Howe", {true, 1, 45}, {}, utc(2025, 4, 4),
            joined(everyDay(utc(2025, 4, 4, 14, 45), 2), everyDay(utc(2025, 4, 6, 15, 15), 5))},
    };
    for (const UpcomingCase& c : cases)
        expectUpcoming(c);
}

TEST(ReminderDates, Upcoming_NeverFailsFarFromToday)
{
    PracticeState state;
    state.reminderEnabled = true;
    for (const Instant now : {Instant::min(), utc(1, 1, 1), utc(-4000, 6, 1), utc(275000, 1, 1), Instant::max()}) {
        for (const char* zone : {"UTC", "Pacific/Apia", "America/Sao_Paulo"}) {
            std::vector<Instant> dates;
            EXPECT_NO_THROW(dates = ReminderDates::upcoming(state, now, UserCalendar::inTimeZone(zone))) << zone;
            EXPECT_LE(dates.size(), ReminderDates::datesKept) << zone;
            EXPECT_TRUE(std::is_sorted(dates.begin(), dates.end())) << zone;
        }
    }
}

} // namespace
} // namespace velmora
