#pragma once

#include <cstdint>
#include <functional>
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
    // The stored hour and minute: what `date` shows in the user's calendar,
    // except on a day when a daylight-saving change skips them.
    std::int64_t hour = 0;
    std::int64_t minute = 0;
    Color tint;
    bool enabled = false;
    // Stores the hour and minute of the picked instant in the user's
    // calendar.
    std::function<void(Instant picked)> pick;
    // Stores `time` as it is, for a picker that edits the hour and minute
    // fields rather than an instant: any instant formed from them today is
    // wrong on a day with a daylight-saving change, when a time in the
    // skipped hour becomes the hour after it.
    std::function<void(TimeOfDay time)> pickTime;
};

} // namespace velmora
