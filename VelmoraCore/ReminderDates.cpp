// The instants of the coming daily reminders, reckoned by ICU in the user's
// zone.

#include "ReminderDates.h"

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>

#include <unicode/gregocal.h>
#include <unicode/locid.h>
#include <unicode/timezone.h>

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

// A Gregorian calendar that turns a date and a wall-clock time into an
// instant the way a reminder time is meant:
//  - a time inside a daylight-saving gap becomes the first time after the
//    gap (02:30 on a night that jumps from 02:00 to 03:00 is 03:00). ICU's
//    default would read it with the offset from before the gap and land as
//    far past the gap as the time lay inside it (03:30);
//  - a time that occurs twice is its first occurrence, the one before the
//    clocks go back; ICU's default is the second.
// Both settings need a lenient calendar: a strict one refuses a time inside
// a gap instead of resolving it.
icu::GregorianCalendar newWallClockCalendar()
{
    UErrorCode status = U_ZERO_ERROR;
    icu::GregorianCalendar gregorian(*icu::TimeZone::getGMT(), icu::Locale::getRoot(), status);
    // Only an ICU without its data gets here.
    if (U_FAILURE(status))
        throw std::logic_error(std::string("creating a Gregorian calendar: ") + u_errorName(status));
    gregorian.setLenient(true);
    gregorian.setSkippedWallTimeOption(UCAL_WALLTIME_NEXT_VALID);
    gregorian.setRepeatedWallTimeOption(UCAL_WALLTIME_FIRST);
    return gregorian;
}

// ICU calendars change their fields even when only read, so they are never
// shared between threads: each thread keeps one, moved to the zone in use.
icu::Calendar& wallClockCalendarIn(const UserCalendar& calendar)
{
    thread_local icu::GregorianCalendar gregorian = newWallClockCalendar();
    // Holding the zone keeps its address from being reused by another zone,
    // so comparing addresses is a sound test for "same zone as last time".
    thread_local std::optional<UserCalendar> zoneInUse;
    if (!zoneInUse || &zoneInUse->timeZone() != &calendar.timeZone()) {
        gregorian.setTimeZone(calendar.timeZone());
        zoneInUse = calendar;
    }
    return gregorian;
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
    if (!state.reminderEnabled
        || state.reminderHour < 0 || state.reminderHour > lastHour
        || state.reminderMinute < 0 || state.reminderMinute > lastMinute)
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
