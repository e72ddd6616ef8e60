#include "TimeOfDay.h"

namespace velmora {

namespace {

constexpr std::int64_t hoursPerDay = 24;
constexpr std::int64_t minutesPerHour = 60;

} // namespace

std::optional<TimeOfDay> TimeOfDay::of(Instant instant, const UserCalendar& calendar)
{
    // Built for each use: the picker is read once per redraw, and a shared
    // ICU calendar would need guarding, since reading one changes its fields.
    icu::GregorianCalendar gregorian = calendar.gregorian();
    UErrorCode status = U_ZERO_ERROR;
    gregorian.setTime(static_cast<UDate>(instant.time_since_epoch().count()), status);
    const int32_t hour = gregorian.get(UCAL_HOUR_OF_DAY, status);
    const int32_t minute = gregorian.get(UCAL_MINUTE, status);
    if (U_FAILURE(status))
        return std::nullopt;
    return TimeOfDay{hour, minute};
}

bool TimeOfDay::isOnTheClock() const
{
    return hour >= 0 && hour < hoursPerDay && minute >= 0 && minute < minutesPerHour;
}

std::optional<Instant> TimeOfDay::on(Instant now, const UserCalendar& calendar) const
{
    if (!isOnTheClock())
        return std::nullopt;
    icu::GregorianCalendar gregorian = calendar.gregorian();
    UErrorCode status = U_ZERO_ERROR;
    gregorian.setTime(static_cast<UDate>(now.time_since_epoch().count()), status);
    gregorian.set(UCAL_HOUR_OF_DAY, static_cast<int32_t>(hour));
    gregorian.set(UCAL_MINUTE, static_cast<int32_t>(minute));
    gregorian.set(UCAL_SECOND, 0);
    gregorian.set(UCAL_MILLISECOND, 0);
    const UDate date = gregorian.getTime(status);
    if (U_FAILURE(status))
        return std::nullopt;
    return Instant(std::chrono::milliseconds(static_cast<std::int64_t>(date)));
}

} // namespace velmora
