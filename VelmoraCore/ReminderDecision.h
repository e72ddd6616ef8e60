#pragma once

#include <optional>
#include <vector>

#include "Instant.h"

namespace velmora {

// What the reminder policy tells the scheduler to do with the application's
// notifications after one evaluation. A plain value.
struct ReminderDecision {
    // None: the pending reminders are already right; leave them alone.
    // A list, even an empty one: remove every pending reminder and post one
    // per instant, in list order. An empty list therefore clears them all.
    std::optional<std::vector<Instant>> datesToSchedule;
    // Remove the reminders already shown: something was noticed today, so
    // today's reminder no longer applies.
    bool clearDelivered = false;
    // The user wants reminders but may not be sent any. Informational only;
    // the scheduler reports denial from the platform's own status.
    bool permissionDenied = false;

    bool operator==(const ReminderDecision&) const = default;
};

} // namespace velmora
