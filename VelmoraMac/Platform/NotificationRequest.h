#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "VelmoraCore/Instant.h"
#include "VelmoraCore/UserCalendar.h"

namespace velmora {

enum class NotificationSound : std::uint8_t {
    none,
    // The sound the user chose for notifications in the system settings.
    systemDefault,
};

// When a notification fires, once: a wall-clock minute of a Gregorian date
// in a time zone. Kept as wall-clock fields, not as an instant, because a
// change of the zone's rules before the day must not move the time the user
// sees.
struct NotificationTrigger {
    std::int32_t year = 1970;
    // 1 to 12.
    std::int32_t month = 1;
    std::int32_t day = 1;
    std::int32_t hour = 0;
    std::int32_t minute = 0;
    // An IANA time-zone identifier.
    std::string timeZone = "UTC";

    bool operator==(const NotificationTrigger&) const = default;

    // The minute that `date` falls in, in the calendar's time zone; seconds
    // and smaller units are dropped.
    static NotificationTrigger at(Instant date, const UserCalendar& calendar);

    // The instant the fields name. A wall-clock time that does not exist
    // (the hour skipped when clocks go forward) is taken as the next time
    // that exists; one that occurs twice, as its first occurrence. None when
    // the fields do not form a time (month 13, an unknown zone).
    [[nodiscard]] std::optional<Instant> instant() const;
};

// One notification to post later. A request replaces any earlier one with
// the same identifier.
struct NotificationRequest {
    std::string identifier;
    std::string title;
    std::string body;
    NotificationSound sound = NotificationSound::systemDefault;
    NotificationTrigger trigger;

    bool operator==(const NotificationRequest&) const = default;
};

} // namespace velmora
