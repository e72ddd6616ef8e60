// Day keys and week keys, reckoned by ICU in the user's zone, and the
// parsing of day keys, by plain arithmetic: it runs for every practice day
// at every save.

#include <array>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <stdexcept>
#include <string>
#include <string_view>

#include "PracticeState.h"

namespace velmora {

namespace {

constexpr std::size_t dayKeyLength = 10;

void checkICU(UErrorCode status, const char* operation)
{
    // Only a program error (or an ICU without its data) gets here: every
    // real instant has a year, a month and a day.
    if (U_FAILURE(status))
        throw std::logic_error(std::string(operation) + ": " + u_errorName(status));
}

UDate toUDate(Instant instant)
{
    return static_cast<UDate>(instant.time_since_epoch().count());
}

// Reading an ICU calendar changes its fields, so each thread keeps its own.
icu::Calendar& gregorianIn(const UserCalendar& calendar)
{
    thread_local ReusedGregorianCalendar zoned;
    return zoned.in(calendar);
}

// A calendar for pure date arithmetic: in UTC every calendar day is one step.
icu::Calendar& utcDates()
{
    thread_local ReusedGregorianCalendar dates;
    return dates.in(UserCalendar::utc());
}

std::string dayKeyOfFields(icu::Calendar& gregorian)
{
    UErrorCode status = U_ZERO_ERROR;
    const int32_t year = gregorian.get(UCAL_YEAR, status);
    const int32_t month = gregorian.get(UCAL_MONTH, status) + 1;
    const int32_t day = gregorian.get(UCAL_DATE, status);
    checkICU(status, "reading a calendar day");
    std::array<char, 32> key{};
    // Three int32 fields with their hyphens fit in 32 bytes, so nothing is cut.
    (void)std::snprintf(key.data(), key.size(), "%04d-%02d-%02d", year, month, day);
    return key.data();
}

bool hasDayKeyShape(std::string_view key)
{
    if (key.size() != dayKeyLength)
        return false;
    for (std::size_t i = 0; i < dayKeyLength; ++i) {
        const bool hyphen = i == 4 || i == 7;
        const char c = key[i];
        if (hyphen ? c != '-' : (c < '0' || c > '9'))
            return false;
    }
    return true;
}

int digitsAt(std::string_view key, std::size_t from, std::size_t count)
{
    int value = 0;
    for (std::size_t i = from; i < from + count; ++i)
        value = value * 10 + (key[i] - '0');
    return value;
}

// Day keys follow the calendar that day keys have always been checked
// against: the Gregorian calendar from 15 October 1582, the Julian calendar
// before it (with its leap years every four years), no year 0, and the ten
// days the reform skipped do not exist.
constexpr int reformYear = 1582;
constexpr int reformMonth = 10;
constexpr int firstGregorianDay = 15;
constexpr int firstSkippedDay = 5;

bool beforeReform(int year, int month, int day)
{
    if (year != reformYear)
        return year < reformYear;
    return month < reformMonth || (month == reformMonth && day < firstGregorianDay);
}

int monthLength(int year, int month)
{
    static constexpr std::array<int, 12> lengths = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    const bool leap = year < reformYear ? year % 4 == 0 : (year % 4 == 0 && (year % 100 != 0 || year % 400 == 0));
    return lengths.at(static_cast<std::size_t>(month - 1)) + (month == 2 && leap ? 1 : 0);
}

// Days from 1970-01-01 to a Julian calendar date, through its Julian day
// number; all intermediate values are positive, so the divisions truncate
// as the formula needs.
std::int64_t julianDaysSinceEpoch(int year, int month, int day)
{
    constexpr std::int64_t epochJulianDayNumber = 2440588;
    const int beforeMarch = (14 - month) / 12;
    const std::int64_t years = year + 4800 - beforeMarch;
    const std::int64_t monthsFromMarch = month + (12 * beforeMarch) - 3;
    const std::int64_t julianDayNumber
        = day + (((153 * monthsFromMarch) + 2) / 5) + (365 * years) + (years / 4) - 32083;
    return julianDayNumber - epochJulianDayNumber;
}

} // namespace

std::string PracticeState::dayKey(Instant date, const UserCalendar& calendar)
{
    icu::Calendar& gregorian = gregorianIn(calendar);
    UErrorCode status = U_ZERO_ERROR;
    gregorian.setTime(toUDate(date), status);
    checkICU(status, "setting a calendar's time");
    return dayKeyOfFields(gregorian);
}

std::string PracticeState::weekKey(Instant date, const UserCalendar& calendar)
{
    icu::Calendar& gregorian = gregorianIn(calendar);
    UErrorCode status = U_ZERO_ERROR;
    gregorian.setTime(toUDate(date), status);
    const int32_t year = gregorian.get(UCAL_YEAR, status);
    const int32_t month = gregorian.get(UCAL_MONTH, status);
    const int32_t day = gregorian.get(UCAL_DATE, status);
    const int32_t weekday = gregorian.get(UCAL_DAY_OF_WEEK, status); // 1 is Sunday
    checkICU(status, "reading a calendar day");
    const int32_t daysSinceMonday = (weekday + 5) % 7;

    // Whole calendar days back from the local date. A zoned calendar steps in
    // 24-hour units corrected for offset changes, which goes wrong when a
    // zone skips a whole day (Apia, 30 December 2011).
    icu::Calendar& dates = utcDates();
    dates.clear();
    dates.set(year, month, day);
    dates.add(UCAL_DATE, -daysSinceMonday, status);
    checkICU(status, "moving back to Monday");
    return dayKeyOfFields(dates);
}

std::optional<Instant> PracticeState::parseDay(std::string_view key)
{
    if (!hasDayKeyShape(key))
        return std::nullopt;
    const int year = digitsAt(key, 0, 4);
    const int month = digitsAt(key, 5, 2);
    const int day = digitsAt(key, 8, 2);
    if (year < 1 || month < 1 || month > 12 || day < 1 || day > monthLength(year, month))
        return std::nullopt;
    if (year == reformYear && month == reformMonth && day >= firstSkippedDay && day < firstGregorianDay)
        return std::nullopt;
    const std::int64_t days = beforeReform(year, month, day)
        ? julianDaysSinceEpoch(year, month, day)
        : std::chrono::sys_days(std::chrono::year(year) / std::chrono::month(static_cast<unsigned>(month))
            / std::chrono::day(static_cast<unsigned>(day)))
              .time_since_epoch()
              .count();
    return Instant(std::chrono::days(days));
}

} // namespace velmora
