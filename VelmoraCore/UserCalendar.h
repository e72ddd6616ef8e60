#pragma once

#include <memory>
#include <string>
#include <string_view>

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

private:
    UserCalendar(std::shared_ptr<const icu::TimeZone> zone, std::string identifier);

    std::shared_ptr<const icu::TimeZone> m_zone;
    std::string m_identifier;
};

} // namespace velmora
