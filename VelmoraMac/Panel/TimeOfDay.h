#pragma once

#include <cstdint>
#include <optional>

#include "VelmoraCore/Instant.h"
#include "VelmoraCore/UserCalendar.h"

namespace velmora {

// A wall-clock time, hours and minutes, as the reminder's time picker shows
// and stores it. A plain value.
struct TimeOfDay {
    std::int64_t hour = 0;
    std::int64_t minute = 0;

    bool operator==(const TimeOfDay&) const = default;

    // Whether a clock shows it: hours 0 to 23, minutes 0 to 59.
    [[nodiscard]] bool isOnTheClock() const;

    // The hour and minute `instant` shows in the calendar's zone; none for
    // an instant beyond the calendar's range.
    static std::optional<TimeOfDay> of(Instant instant, const UserCalendar& calendar);

    // This time, second 0, on the calendar day of `now` in the calendar's
    // zone; none for a time outside the clock. A time that a daylight-saving
    // change skips on that day becomes the first time after the gap, and one
    // that occurs twice its first occurrence, as for the reminders
    // themselves.
    [[nodiscard]] std::optional<Instant> on(Instant now, const UserCalendar& calendar) const;
};

} // namespace velmora
