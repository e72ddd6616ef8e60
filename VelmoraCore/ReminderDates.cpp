// The instants of the coming daily reminders, reckoned by ICU in the user's
// zone.

#include "ReminderDates.h"

#include <cstdint>
#include <optional>

namespace velmora::ReminderDates {

namespace {

constexpr std::int64_t lastHour = 23;
constexpr std::int64_t lastMinute = 59;

UDate toUDate(Instant instant)
{
    return static_cast<UDate>(instant.time_since_epoch().count());
}

Instant fromUDate(UDate date)
{
    return Instant(std::chrono::milliseconds(static_cast<std::int64_t>(date)));
}

// Reading an ICU calendar changes its fields, so each thread keeps its own.
icu::Calendar& wallClockCalendarIn(const UserCalendar& calendar)
{
    thread_local ReusedGregorianCalendar gregorian;
    return gregorian.in(calendar);
}

// The instant of `hour`:`minute`:00 on the local calendar day numbered
// `julianDay`, or none when ICU cannot form it. Days are named by Julian day
// number so that the next day is simply the next number, whatever the
// length of the days in between. Adding days to a zoned ICU calendar instead
// steps in 24 hours corrected for offset changes, which turns a day the zone
// skipped into the day after it and shifts every later day by one.
std::optional<Instant> instantOn(icu::Calendar& gregorian, int32_t julianDay, int32_t hour, int32_t minute)
{
    gregorian.clear();
    gregorian.set(UCAL_JULIAN_DAY, julianDay);
    gregorian.set(UCAL_HOUR_OF_DAY, hour);
    gregorian.set(UCAL_MINUTE, minute);
    UErrorCode status = U_ZERO_ERROR;
    const UDate instant = gregorian.getTime(status);
    if (U_FAILURE(status))
        return std::nullopt;
    return fromUDate(instant);
}

// The start of the local day `julianDay`, or none when the zone skipped that
// day altogether (Apia went from 29 to 31 December 2011): its midnight then
// resolves to the first time after the gap, which lies on a later day.
std::optional<Instant> startOfDay(icu::Calendar& gregorian, int32_t julianDay)
{
    const std::optional<Instant> start = instantOn(gregorian, julianDay, 0, 0);
    UErrorCode status = U_ZERO_ERROR;
    if (!start || gregorian.get(UCAL_JULIAN_DAY, status) != julianDay || U_FAILURE(status))
        return std::nullopt;
    return start;
}

} // namespace

std::vector<Instant> upcoming(const PracticeState& state, Instant now, const UserCalendar& calendar)
{
    std::vector<Instant> dates;
    // A time outside the clock cannot be formed on any day.
    if (!state.reminderEnabled || state.reminderHour < 0 || state.reminderHour > lastHour || state.reminderMinute < 0
        || state.reminderMinute > lastMinute)
        return dates;
    const auto hour = static_cast<int32_t>(state.reminderHour);
    const auto minute = static_cast<int32_t>(state.reminderMinute);

    icu::Calendar& gregorian = wallClockCalendarIn(calendar);
    UErrorCode status = U_ZERO_ERROR;
    gregorian.setTime(toUDate(now), status);
    const int32_t today = gregorian.get(UCAL_JULIAN_DAY, status);
    if (U_FAILURE(status))
        return dates;

    for (int32_t offset = 0; offset < daysLookedAt && dates.size() < datesKept; ++offset) {
        const int32_t day = today + offset;
        const std::optional<Instant> start = startOfDay(gregorian, day);
        if (!start || state.practiceDays.contains(PracticeState::dayKey(*start, calendar)))
            continue;
        // Only a time still ahead is wanted: today's reminder at `now` or
        // earlier has already had its moment.
        if (const std::optional<Instant> at = instantOn(gregorian, day, hour, minute); at && *at > now)
            dates.push_back(*at);
    }
    return dates;
}

} // namespace velmora::ReminderDates
