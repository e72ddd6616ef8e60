#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "Color.h"
#include "PanelText.h"
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
    // Stores the hour and minute of the picked instant in the user's
    // calendar.
    std::function<void(Instant picked)> pick;
};

} // namespace velmora
