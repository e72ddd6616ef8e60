#include "NotificationRequest.h"

#include <chrono>
#include <stdexcept>
#include <string>

namespace velmora {

namespace {

bool isCalendarDate(std::int32_t year, std::int32_t month, std::int32_t day)
{
    if (month < 1 || month > 12 || day < 1 || day > 31)
        return false;
    return std::chrono::year_month_day(std::chrono::year(year), std::chrono::month(static_cast<unsigned>(month)),
        std::chrono::day(static_cast<unsigned>(day)))
        .ok();
}

} // namespace

NotificationTrigger NotificationTrigger::at(Instant date, const UserCalendar& calendar)
{
    icu::GregorianCalendar gregorian = calendar.gregorian();
    UErrorCode status = U_ZERO_ERROR;
    gregorian.setTime(static_cast<UDate>(date.time_since_epoch().count()), status);
    NotificationTrigger trigger;
    trigger.year = gregorian.get(UCAL_YEAR, status);
    trigger.month = gregorian.get(UCAL_MONTH, status) + 1;
    trigger.day = gregorian.get(UCAL_DATE, status);
    trigger.hour = gregorian.get(UCAL_HOUR_OF_DAY, status);
    trigger.minute = gregorian.get(UCAL_MINUTE, status);
    // Every instant of the years the practice deals with has these fields.
    if (U_FAILURE(status))
        throw std::logic_error(std::string("reading a calendar minute: ") + u_errorName(status));
    trigger.timeZone = calendar.timeZoneIdentifier();
    return trigger;
}

std::optional<Instant> NotificationTrigger::instant() const
{
    if (!isCalendarDate(year, month, day) || hour < 0 || hour > 23 || minute < 0 || minute > 59)
        return std::nullopt;
    std::optional<UserCalendar> calendar;
    try {
        calendar = UserCalendar::inTimeZone(timeZone);
    } catch (const std::invalid_argument&) {
        // An unknown zone names no time; the caller hears none.
        return std::nullopt;
    }
    icu::GregorianCalendar gregorian = calendar->gregorian();
    gregorian.clear();
    gregorian.set(year, month - 1, day, hour, minute, 0);
    UErrorCode status = U_ZERO_ERROR;
    const UDate milliseconds = gregorian.getTime(status);
    if (U_FAILURE(status))
        return std::nullopt;
    return Instant(std::chrono::milliseconds(static_cast<std::int64_t>(milliseconds)));
}

} // namespace velmora
