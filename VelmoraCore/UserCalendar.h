#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include <unicode/gregocal.h>
#include <unicode/timezone.h>

namespace velmora {

// The caller's calendar, as far as the practice rules need it: a time zone in
// which calendar days are reckoned with the Gregorian calendar.
//
// A small immutable value: copies share one read-only ICU zone, so passing
// it by value is cheap and it may be used from several threads at once. The
// ICU calendars built from it are never shared between threads.
class UserCalendar {
public:
    // The zone with the given IANA or custom ("GMT+02:00") identifier.
    // Throws std::invalid_argument for an identifier ICU does not know,
    // rather than quietly reckoning in GMT.
    static UserCalendar inTimeZone(std::string_view identifier);

    // Takes over a zone that was obtained elsewhere, such as the host's.
    static UserCalendar adoptingTimeZone(std::unique_ptr<icu::TimeZone> zone);

    static UserCalendar utc();

    // The zone's identifier as UTF-8, as timeZoneIdentifier() holds it.
    static std::string identifierOf(const icu::TimeZone& zone);

    [[nodiscard]] const icu::TimeZone& timeZone() const { return *m_zone; }
    [[nodiscard]] const std::string& timeZoneIdentifier() const { return m_identifier; }

    bool operator==(const UserCalendar& other) const { return m_identifier == other.m_identifier; }

    // A Gregorian calendar in this zone that turns a date and a wall-clock
    // time into an instant the way a time of the practice is meant:
    //  - a time inside a daylight-saving gap becomes the first time after the
    //    gap (02:30 on a night that jumps from 02:00 to 03:00 is 03:00). ICU's
    //    default would read it with the offset from before the gap and land as
    //    far past the gap as the time lay inside it (03:30);
    //  - a time that occurs twice is its first occurrence, the one before the
    //    clocks go back; ICU's default is the second.
    // Both need a lenient calendar: a strict one refuses a time inside a gap
    // instead of resolving it. Reading an ICU calendar changes its fields, so
    // one is never shared between threads.
    [[nodiscard]] icu::GregorianCalendar gregorian() const;

private:
    UserCalendar(std::shared_ptr<const icu::TimeZone> zone, std::string identifier);

    std::shared_ptr<const icu::TimeZone> m_zone;
    std::string m_identifier;
};

// One calendar of UserCalendar::gregorian()'s kind kept for reuse, since
// building one costs more than most of its uses, and moved to whichever zone
// it is asked for. Each thread keeps its own.
class ReusedGregorianCalendar {
public:
    icu::Calendar& in(const UserCalendar& calendar);

private:
    icu::GregorianCalendar m_calendar = UserCalendar::utc().gregorian();
    std::optional<UserCalendar> m_zoneInUse;
};

} // namespace velmora
