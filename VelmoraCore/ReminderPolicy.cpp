#include "ReminderPolicy.h"

#include <cstddef>
#include <utility>
#include <vector>

#include "ReminderDates.h"

namespace velmora {

namespace {

// A text of any content is written with its length first, so that the
// boundaries between the parts of a signature can never shift: a body that
// contains the separator cannot make two different inputs look alike.
void appendText(std::string& signature, std::string_view text)
{
    signature += std::to_string(text.size());
    signature += ':';
    signature += text;
}

// Equal exactly when everything that shapes the posted notifications is
// equal: the instants (through them the switch, the reminder time, the
// practice days and the passing of days), the body (which follows the
// interface language), the zone (the platform's triggers are wall-clock
// times in the current zone, so a new zone must re-post even equal
// instants) and the authorization (a grant after a refusal must post).
// Instants are whole milliseconds, which compare exactly.
std::string signatureOf(const std::vector<Instant>& dates, std::string_view body, std::string_view timeZone,
    ReminderPolicy::Authorization authorization)
{
    std::string signature = "[";
    for (std::size_t i = 0; i < dates.size(); ++i) {
        if (i > 0)
            signature += ", ";
        signature += std::to_string(dates[i].time_since_epoch().count());
    }
    signature += "]|";
    appendText(signature, body);
    signature += '|';
    appendText(signature, timeZone);
    signature += authorization == ReminderPolicy::Authorization::authorized ? "|true" : "|false";
    return signature;
}

} // namespace

ReminderDecision ReminderPolicy::evaluate(const PracticeState& state, Instant now, const UserCalendar& calendar,
    Authorization authorization, std::string_view body)
{
    const bool authorized = authorization == Authorization::authorized;
    // Without authorization nothing may be pending: an empty list removes
    // whatever an earlier grant left behind.
    std::vector<Instant> dates;
    if (authorized)
        dates = ReminderDates::upcoming(state, now, calendar);

    ReminderDecision decision;
    std::string signature = signatureOf(dates, body, calendar.timeZoneIdentifier(), authorization);
    if (m_signature != signature)
        decision.datesToSchedule = std::move(dates);
    m_signature = std::move(signature);
    // Whatever the signature says: a noticing today makes any reminder
    // already shown today obsolete.
    decision.clearDelivered = state.practiceDays.contains(PracticeState::dayKey(now, calendar));
    decision.permissionDenied = !authorized && state.reminderEnabled;
    return decision;
}

} // namespace velmora
