#include <limits>
#include <string>

#include <gtest/gtest.h>

#include "CoreTestSupport.h"
#include "VelmoraCore/PracticeState.h"

namespace velmora {
namespace {

using test::expectPracticeError;
using test::utc;

PracticeState withLotus(LotusProgress lotus)
{
    PracticeState state;
    state.selected = {"phone"};
    state.lotuses["phone"] = std::move(lotus);
    return state;
}

struct GrowthCase {
    const char* name = nullptr;
    LotusProgress lotus;
    Instant readOn;
    std::int64_t expected = 0;
};

TEST(PracticeStateGrowth, GrowthMoments_DecaysOnePerIdleDayAfterOneDayOfGrace)
{
    const GrowthCase cases[] = {
        {"same day", LotusProgress(5, "2025-03-01", 5), utc(2025, 3, 1, 23), 5},
        {"next day is grace", LotusProgress(5, "2025-03-01", 5), utc(2025, 3, 2, 12), 5},
        {"two days later", LotusProgress(5, "2025-03-01", 5), utc(2025, 3, 3), 4},
        {"decays to zero, not below", LotusProgress(5, "2025-03-01", 5), utc(2025, 3, 9), 0},
        {"full lotus after nineteen days", LotusProgress(30, "2025-03-01", 14), utc(2025, 3, 20), 0},
        {"full lotus after fourteen days", LotusProgress(30, "2025-03-01", 14), utc(2025, 3, 15), 1},
        {"clock moved back", LotusProgress(5, "2025-03-10", 5), utc(2025, 3, 1), 5},
        {"across a month and leap day", LotusProgress(9, "2024-02-27", 9), utc(2024, 3, 2), 6},
        {"legacy counter limited to full", LotusProgress(40, "2025-03-01"), utc(2025, 3, 1), 14},
        {"no last day never decays", LotusProgress(5), utc(2030, 1, 1), 5},
        {"unparsable last day never decays", LotusProgress(5, "2025-3-1", 4), utc(2030, 1, 1), 4},
        {"growth counter above moments is kept", LotusProgress(1, "2025-03-01", 9), utc(2025, 3, 1), 9},
        {"negative counter reads zero", LotusProgress(-3), utc(2025, 3, 1), 0},
    };
    for (const GrowthCase& c : cases) {
        const PracticeState state = withLotus(c.lotus);
        EXPECT_EQ(state.growthMoments("phone", c.readOn, UserCalendar::utc()), c.expected) << c.name;
        const std::string today = PracticeState::dayKey(c.readOn, UserCalendar::utc());
        EXPECT_EQ(state.growthMoments("phone", today), c.expected) << c.name << ", by day key";
    }
}

TEST(PracticeStateGrowth, GrowthAndNotice_CountDaysInTheCallersZone)
{
    // 23:30 on the 2nd in Helsinki is still the grace day; an hour later it is the 3rd.
    const PracticeState state = withLotus(LotusProgress(5, "2025-03-01", 5));
    const UserCalendar helsinki = UserCalendar::inTimeZone("Europe/Helsinki");
    EXPECT_EQ(state.growthMoments("phone", utc(2025, 3, 2, 21, 30), helsinki), 5);
    EXPECT_EQ(state.growthMoments("phone", utc(2025, 3, 2, 22, 30), helsinki), 4);
    EXPECT_EQ(state.growthMoments("money", utc(2025, 3, 2), helsinki), 0) << "no lotus";

    // Noticing at 00:30 on the 3rd in Helsinki counts for the 3rd, not the UTC 2nd.
    const PracticeState noticed = state.notice("phone", utc(2025, 3, 2, 22, 30), helsinki);
    EXPECT_EQ(noticed.lotuses.at("phone"), (LotusProgress(6, "2025-03-03", 5)));
    EXPECT_EQ(noticed.practiceDays, PracticeState::StringSet{"2025-03-03"});
}

TEST(PracticeStateGrowth, Notice_GrowsByOneAndFoldsInTheDecaySinceTheLastNoticing)
{
    struct Step {
        Instant on;
        LotusProgress after;
    };
    const Step steps[] = {
        {utc(2025, 3, 1, 8), LotusProgress(1, "2025-03-01", 1)},
        {utc(2025, 3, 1, 20), LotusProgress(2, "2025-03-01", 2)},
        {utc(2025, 3, 2, 9), LotusProgress(3, "2025-03-02", 3)},
        {utc(2025, 3, 5, 9), LotusProgress(4, "2025-03-05", 2)},
        {utc(2025, 4, 1, 9), LotusProgress(5, "2025-04-01", 1)},
    };
    PracticeState state;
    state.selected = {"phone"};
    for (const Step& step : steps) {
        state = state.notice("phone", step.on, UserCalendar::utc());
        EXPECT_EQ(state.lotuses.at("phone"), step.after) << *step.after.lastDay << " moment " << step.after.moments;
    }
    EXPECT_EQ(state.practiceDays, (PracticeState::StringSet{"2025-03-01", "2025-03-02", "2025-03-05", "2025-04-01"}));
    EXPECT_NO_THROW(state.validated());
}

TEST(PracticeStateGrowth, Notice_KeepsAFullLotusFullAndRefusesToOverflowTheMomentCounter)
{
    const PracticeState fullGrown = withLotus(LotusProgress(40, "2025-03-01", 14));
    EXPECT_EQ(fullGrown.notice("phone", utc(2025, 3, 2), UserCalendar::utc()).lotuses.at("phone"),
        (LotusProgress(41, "2025-03-02", 14)));

    constexpr std::int64_t largest = std::numeric_limits<std::int64_t>::max();
    const PracticeState full = withLotus(LotusProgress(largest, "2025-01-01", 14));
    expectPracticeError(
        [&] { (void)full.notice("phone", utc(2025, 1, 2), UserCalendar::utc()); }, PracticeError::invalidData);

    const PracticeState almost = withLotus(LotusProgress(largest - 1));
    EXPECT_EQ(almost.notice("phone", utc(2025, 1, 2), UserCalendar::utc()).lotuses.at("phone").moments, largest);
}

} // namespace
} // namespace velmora
