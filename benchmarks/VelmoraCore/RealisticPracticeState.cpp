#include "RealisticPracticeState.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace velmora::bench {

namespace {

using namespace std::chrono;

Instant daysBefore(Instant day, std::int64_t count)
{
    return day - duration_cast<milliseconds>(days(count));
}

} // namespace

Instant lastPracticeDay()
{
    return time_point_cast<milliseconds>(sys_days(year(2025) / March / 14));
}

PracticeState realisticPracticeState(std::int64_t practiceDayCount)
{
    const UserCalendar utc = UserCalendar::utc();
    PracticeState state;
    state.onboarded = true;
    state.selected = PracticeState::topicIDs();
    state.language = "fr";
    state.hintSeen = true;
    state.wiltWeekSeen = PracticeState::weekKey(lastPracticeDay(), utc);
    state.reminderEnabled = true;
    state.reminderHour = 21;
    state.reminderMinute = 30;

    // The first keyable day is 0001-01-01, so only the largest records start
    // there and run past lastPracticeDay().
    const Instant firstKeyableDay = *PracticeState::parseDay("0001-01-01");
    const Instant firstDay = std::max(daysBefore(lastPracticeDay(), practiceDayCount - 1), firstKeyableDay);
    std::vector<std::string> practiceDays;
    practiceDays.reserve(static_cast<std::size_t>(practiceDayCount));
    for (std::int64_t i = 0; i < practiceDayCount; ++i)
        practiceDays.push_back(PracticeState::dayKey(daysBefore(firstDay, -i), utc));
    state.practiceDays = PracticeState::StringSet(std::move(practiceDays));

    // Topics differ in how often they come up and in how recently: some are
    // noticed several times a day and fully grown, others were last noticed
    // weeks ago and have decayed.
    std::int64_t index = 0;
    for (const std::string& topicID : PracticeState::topicIDs()) {
        const std::int64_t moments = practiceDayCount * (index % 4 + 1) + index;
        const std::int64_t idleDays = (index * 3) % 20;
        std::string lastDay = PracticeState::dayKey(daysBefore(lastPracticeDay(), idleDays), utc);
        if (index == 0)
            state.lotuses.emplace(topicID, LotusProgress(moments, std::move(lastDay)));
        else
            state.lotuses.emplace(
                topicID, LotusProgress(moments, std::move(lastDay), (index * 5) % (LotusProgress::fullGrowth + 1)));
        ++index;
    }
    return state;
}

} // namespace velmora::bench
