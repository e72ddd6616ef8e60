#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "CoreTestSupport.h"
#include "VelmoraCore/PracticeState.h"

namespace velmora {
namespace {

using test::utc;

struct Expected {
    UserCalendar calendar;
    Instant instant;
    std::string dayKey;
    std::string weekKey;
};

// Day keys are reckoned with per-thread ICU calendars and formatters; many
// threads in different zones at once must each get their own zone's answer.
TEST(PracticeStateConcurrency, DayKeysFromManyThreadsInDifferentZones_AgreeWithOneThread)
{
    std::vector<Expected> expected;
    for (const char* zone :
        {"UTC", "Europe/Helsinki", "America/Los_Angeles", "America/Sao_Paulo", "Pacific/Apia", "Asia/Kolkata"}) {
        const UserCalendar calendar = UserCalendar::inTimeZone(zone);
        for (int hour = 0; hour < 48; hour += 5) {
            const Instant instant = utc(2018, 11, 3, hour);
            expected.push_back({calendar, instant, PracticeState::dayKey(instant, calendar),
                PracticeState::weekKey(instant, calendar)});
        }
    }

    PracticeState state;
    state.selected = {"phone"};
    std::vector<std::thread> threads;
    std::vector<int> mismatches(8, 0);
    for (std::size_t thread = 0; thread < mismatches.size(); ++thread) {
        threads.emplace_back([&, thread] {
            for (int round = 0; round < 50; ++round) {
                for (std::size_t i = (thread + static_cast<std::size_t>(round)) % expected.size(), n = 0;
                     n < expected.size(); ++n, i = (i + 1) % expected.size()) {
                    const Expected& e = expected[i];
                    mismatches[thread] += PracticeState::dayKey(e.instant, e.calendar) != e.dayKey ? 1 : 0;
                    mismatches[thread] += PracticeState::weekKey(e.instant, e.calendar) != e.weekKey ? 1 : 0;
                    mismatches[thread] += PracticeState::parseDay(e.dayKey).has_value() ? 0 : 1;
                    mismatches[thread]
                        += state.notice("phone", e.instant, e.calendar).lotuses.at("phone").lastDay != e.dayKey ? 1 : 0;
                }
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    for (std::size_t thread = 0; thread < mismatches.size(); ++thread)
        EXPECT_EQ(mismatches[thread], 0) << "thread " << thread;
}

} // namespace
} // namespace velmora
