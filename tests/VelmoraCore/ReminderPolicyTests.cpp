#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "CoreTestSupport.h"
#include "VelmoraCore/ReminderDates.h"
#include "VelmoraCore/ReminderPolicy.h"

namespace velmora {
namespace {

using test::utc;
using Authorization = ReminderPolicy::Authorization;

struct Inputs {
    PracticeState state;
    Instant now;
    UserCalendar calendar;
    Authorization authorization;
    std::string body;
};

// 08:00 on Friday 14 March 2025 in Berlin (UTC+1), reminders wanted at 20:00.
Inputs baseline()
{
    PracticeState state;
    state.reminderEnabled = true;
    state.reminderHour = 20;
    state.reminderMinute = 0;
    return {state, utc(2025, 3, 14, 7), UserCalendar::inTimeZone("Europe/Berlin"), Authorization::authorized,
        "Notice gently."};
}

ReminderDecision evaluate(ReminderPolicy& policy, const Inputs& in)
{
    return policy.evaluate(in.state, in.now, in.calendar, in.authorization, in.body);
}

std::vector<Instant> upcoming(const Inputs& in)
{
    return ReminderDates::upcoming(in.state, in.now, in.calendar);
}

struct ChangeCase {
    const char* name;
    std::function<void(Inputs&)> change;
    bool handsOutDates;
};

TEST(ReminderPolicy, Reevaluation_HandsOutDatesOnlyWhenWhatWouldBePostedChanged)
{
    const ChangeCase cases[] = {
        {"nothing", [](Inputs&) {}, false},
        {"later the same morning", [](Inputs& in) { in.now = utc(2025, 3, 14, 11); }, false},
        {"today's reminder time has come", [](Inputs& in) { in.now = utc(2025, 3, 14, 19); }, true},
        {"the next morning", [](Inputs& in) { in.now = utc(2025, 3, 15, 7); }, true},
        {"another hour", [](Inputs& in) { in.state.reminderHour = 21; }, true},
        {"another minute", [](Inputs& in) { in.state.reminderMinute = 15; }, true},
        {"reminders switched off", [](Inputs& in) { in.state.reminderEnabled = false; }, true},
        {"noticed today", [](Inputs& in) { in.state.practiceDays.insert("2025-03-14"); }, true},
        {"noticed on a later day of the week", [](Inputs& in) { in.state.practiceDays.insert("2025-03-20"); }, true},
        {"noticed on a past day", [](Inputs& in) { in.state.practiceDays.insert("2025-03-13"); }, false},
        {"noticed beyond the week looked at", [](Inputs& in) { in.state.practiceDays.insert("2025-03-22"); }, false},
        {"another body", [](Inputs& in) { in.body = "Remarque doucement."; }, true},
        {"an empty body", [](Inputs& in) { in.body.clear(); }, true},
        {"another zone with the same instants",
            [](Inputs& in) { in.calendar = UserCalendar::inTimeZone("Europe/Paris"); }, true},
        {"another zone with other instants", [](Inputs& in) { in.calendar = UserCalendar::inTimeZone("Asia/Tokyo"); },
            true},
        {"authorization withdrawn", [](Inputs& in) { in.authorization = Authorization::notAuthorized; }, true},
        {"settings that do not reach a notification",
            [](Inputs& in) {
                in.state.language = "fr";
                in.state.waterSoundEnabled = false;
                in.state.bellSoundEnabled = false;
                in.state.onboarded = true;
                in.state.selected = {"phone"};
                in.state.lotuses["phone"] = LotusProgress(3, "2025-03-13", 3);
            },
            false},
    };
    for (const ChangeCase& c : cases) {
        ReminderPolicy policy;
        const Inputs before = baseline();
        (void)evaluate(policy, before);
        Inputs after = before;
        c.change(after);

        const ReminderDecision decision = evaluate(policy, after);
        EXPECT_EQ(decision.datesToSchedule.has_value(), c.handsOutDates) << c.name;
        if (decision.datesToSchedule) {
            const std::vector<Instant> expected
                = after.authorization == Authorization::authorized ? upcoming(after) : std::vector<Instant>{};
            EXPECT_EQ(*decision.datesToSchedule, expected) << c.name;
        }
        EXPECT_FALSE(evaluate(policy, after).datesToSchedule) << c.name << ": the changed inputs are remembered";
    }
}

TEST(ReminderPolicy, Unauthorized_ClearsPendingRemindersAndReportsAWantedReminder)
{
    ReminderPolicy policy;
    Inputs in = baseline();
    in.authorization = Authorization::notAuthorized;

    const ReminderDecision refused = evaluate(policy, in);
    ASSERT_TRUE(refused.datesToSchedule);
    EXPECT_TRUE(refused.datesToSchedule->empty());
    EXPECT_TRUE(refused.permissionDenied);

    // Nothing can be posted, so another time changes nothing to post.
    in.state.reminderHour = 7;
    const ReminderDecision stillRefused = evaluate(policy, in);
    EXPECT_FALSE(stillRefused.datesToSchedule);
    EXPECT_TRUE(stillRefused.permissionDenied);

    in.state.reminderEnabled = false;
    EXPECT_FALSE(evaluate(policy, in).permissionDenied) << "denial matters only to a user who wants reminders";

    in.state.reminderEnabled = true;
    in.authorization = Authorization::authorized;
    const ReminderDecision granted = evaluate(policy, in);
    ASSERT_TRUE(granted.datesToSchedule);
    EXPECT_EQ(*granted.datesToSchedule, upcoming(in));
    EXPECT_FALSE(granted.permissionDenied);
}

struct ClearCase {
    const char* name = "";
    const char* zone = "UTC";
    const char* practiceDay = "";
    Instant now;
    bool reminderEnabled = true;
    Authorization authorization = Authorization::authorized;
    bool clearDelivered = false;
};

// Asked on every evaluation, whether or not the dates changed.
TEST(ReminderPolicy, ClearDelivered_WhenTodayInTheCallersZoneIsAPracticeDay)
{
    const ClearCase cases[] = {
        {"today practised", "Europe/Berlin", "2025-03-14", utc(2025, 3, 14, 7), true, Authorization::authorized, true},
        {"yesterday practised", "Europe/Berlin", "2025-03-13", utc(2025, 3, 14, 7), true, Authorization::authorized,
            false},
        {"tomorrow practised", "Europe/Berlin", "2025-03-15", utc(2025, 3, 14, 7), true, Authorization::authorized,
            false},
        // 23:30 UTC on the 14th is 00:30 on the 15th in Berlin.
        {"the local day counts", "Europe/Berlin", "2025-03-15", utc(2025, 3, 14, 23, 30), true,
            Authorization::authorized, true},
        {"not the UTC day", "Europe/Berlin", "2025-03-14", utc(2025, 3, 14, 23, 30), true, Authorization::authorized,
            false},
        {"reminders off", "UTC", "2025-03-14", utc(2025, 3, 14, 7), false, Authorization::authorized, true},
        {"not authorized", "UTC", "2025-03-14", utc(2025, 3, 14, 7), true, Authorization::notAuthorized, true},
    };
    for (const ClearCase& c : cases) {
        ReminderPolicy policy;
        Inputs in = baseline();
        in.calendar = UserCalendar::inTimeZone(c.zone);
        in.state.practiceDays = {c.practiceDay};
        in.now = c.now;
        in.state.reminderEnabled = c.reminderEnabled;
        in.authorization = c.authorization;
        EXPECT_EQ(evaluate(policy, in).clearDelivered, c.clearDelivered) << c.name;
        EXPECT_EQ(evaluate(policy, in).clearDelivered, c.clearDelivered) << c.name << ", unchanged";
    }
}

} // namespace
} // namespace velmora
