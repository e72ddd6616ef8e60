#include "RealisticPracticeState.h"

#include <chrono>

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

    for (std::int64_t i = 0; i < practiceDayCount; ++i)
        state.practiceDays.insert(PracticeState::dayKey(daysBefore(lastPracticeDay(), i), utc));

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
            state.lotuses.emplace(topicID, LotusProgress(moments, std::move(lastDay), (index * 5) % (LotusProgress::fullGrowth + 1)));
        ++index;
    }
    return state;
}

} // namespace velmora::bench
