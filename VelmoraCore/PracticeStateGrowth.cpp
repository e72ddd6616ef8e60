// Noticing and the growth and decay of lotuses.

#include <algorithm>
#include <limits>

#include "PracticeError.h"
#include "PracticeState.h"

namespace velmora {

namespace {

// `notice` stores min(current, 13) + 1, so the counter never passes 14.
constexpr std::int64_t lastGrowingValue = LotusProgress::fullGrowth - 1;

// The counter of `lotus` as of `today` (midnight UTC of a day key): the first
// idle day after the last noticing is grace, each further day costs one.
std::int64_t decayedGrowth(const LotusProgress& lotus, std::optional<Instant> today)
{
    const std::int64_t base = lotus.baseGrowthMoments();
    if (!lotus.lastDay || !today)
        return base;
    const std::optional<Instant> lastDay = PracticeState::parseDay(*lotus.lastDay);
    if (!lastDay)
        return base;
    // Both are UTC midnights, and UTC days all have the same length, so the
    // quotient is the exact count of calendar days; negative when the clock
    // went back, which costs nothing.
    const std::int64_t days = std::chrono::duration_cast<std::chrono::days>(*today - *lastDay).count();
    const std::int64_t decay = std::max<std::int64_t>(days - 1, 0);
    return std::max<std::int64_t>(base - decay, 0);
}

} // namespace

std::int64_t PracticeState::growthMoments(std::string_view topicID, Instant date, const UserCalendar& calendar) const
{
    return growthMoments(topicID, dayKey(date, calendar));
}

std::int64_t PracticeState::growthMoments(std::string_view topicID, std::string_view todayKey) const
{
    const auto lotus = lotuses.find(topicID);
    if (lotus == lotuses.end())
        return 0;
    return decayedGrowth(lotus->second, parseDay(todayKey));
}

// NOLINTNEXTLINE(readability-convert-member-functions-to-static): a rule of the record, kept beside its siblings
double PracticeState::freshness(std::string_view /*topicID*/, Instant /*date*/, const UserCalendar& /*calendar*/) const
{
    return 1.0;
}

PracticeState PracticeState::notice(std::string_view topicID, Instant date, const UserCalendar& calendar) const
{
    if (!selected.contains(topicID))
        throw PracticeError(PracticeError::notSelected);
    const auto lotus = lotuses.find(topicID);
    const std::int64_t moments = lotus == lotuses.end() ? 0 : lotus->second.moments;
    if (moments == std::numeric_limits<std::int64_t>::max())
        throw PracticeError(PracticeError::invalidData);

    std::string today = dayKey(date, calendar);
    const std::int64_t growth = lotus == lotuses.end() ? 0 : decayedGrowth(lotus->second, parseDay(today));

    PracticeState noticed = *this;
    noticed.lotuses.insert_or_assign(
        std::string(topicID), LotusProgress(moments + 1, today, std::min(growth, lastGrowingValue) + 1));
    noticed.practiceDays.insert(std::move(today));
    return noticed;
}

} // namespace velmora
