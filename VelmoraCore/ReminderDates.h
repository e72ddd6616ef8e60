#pragma once

#include <cstddef>
#include <vector>

#include "Instant.h"
#include "PracticeState.h"
#include "UserCalendar.h"

namespace velmora::ReminderDates {

// Today and the following seven calendar days are candidates for a reminder.
constexpr int daysLookedAt = 8;
// At most this many reminders are handed out at a time.
constexpr std::size_t datesKept = 7;

// The instants of the coming daily reminders, in increasing order: one at
// the state's reminder time (second 0) on each of the next daysLookedAt
// calendar days of the calendar's zone, starting today, that has no practice
// day yet and whose reminder time is strictly after `now`; at most
// datesKept of them. Empty when reminders are off.
//
// A reminder time that falls into a daylight-saving gap moves forward to the
// first time that exists; one that occurs twice is taken at its first
// occurrence. A calendar day that the zone skipped entirely gets no
// reminder. Never fails; may be called from any thread.
std::vector<Instant> upcoming(const PracticeState& state, Instant now, const UserCalendar& calendar);

} // namespace velmora::ReminderDates
