#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "Instant.h"
#include "PracticeState.h"
#include "ReminderDecision.h"
#include "UserCalendar.h"

namespace velmora {

// Decides which daily reminders the scheduler should post, and spares it
// from replacing its pending notifications when they are already right.
//
// A plain value owned by the scheduler. It remembers a signature of the
// last list it handed out, together with everything else that shapes the
// notifications; the signature lives only in memory, so a new process hands
// out its first list in any case. Not synchronised: one owner, one thread.
class ReminderPolicy {
public:
    // Whether the platform lets the application post notifications.
    enum class Authorization : std::uint8_t {
        notAuthorized,
        authorized,
    };

    // Hands out the upcoming reminder dates (ReminderDates::upcoming, or
    // none at all without authorization) when they, `body`, the calendar's
    // zone or the authorization differ from the last evaluation, and no list
    // when nothing changed. Also tells whether today's delivered reminders
    // are obsolete (something was noticed today) and whether the user wants
    // reminders that may not be sent. Never fails.
    ReminderDecision evaluate(const PracticeState& state, Instant now, const UserCalendar& calendar,
        Authorization authorization, std::string_view body);

    // Forgets what was handed out, so that the next evaluate() hands out its
    // list even if nothing changed; for when posting a reminder failed.
    void invalidate() { m_signature.reset(); }

private:
    std::optional<std::string> m_signature;
};

} // namespace velmora
