#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "Color.h"
#include "PanelText.h"
#include "TimeOfDay.h"
#include "VelmoraCore/Instant.h"

namespace velmora {

// The picker of the daily reminder's time, hours and minutes only.
struct ReminderTimePicker {
    PanelText label;
    // Today at the reminder time in the user's calendar.
    Instant date;
    // The hour and minute `date` shows in the user's calendar.
    std::int64_t hour = 0;
    std::int64_t minute = 0;
    Color tint;
    bool enabled = false;
    // Today at `time` in the user's calendar, for a picker that edits the
    // fields of a time rather than an instant: stepping `date` by the
    // fields' difference would be an hour off across a daylight-saving
    // change that day. None for a time outside the clock.
    std::function<std::optional<Instant>(TimeOfDay time)> dateAt;
    // Stores the hour and minute of the picked instant in the user's
    // calendar.
    std::function<void(Instant picked)> pick;
};

} // namespace velmora
