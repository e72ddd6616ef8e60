#include <functional>
#include <limits>

#include <gtest/gtest.h>

#include "CoreTestSupport.h"
#include "VelmoraCore/PracticeState.h"

namespace velmora {
namespace {

using test::expectPracticeError;

struct ValidationCase {
    const char* name;
    std::function<void(PracticeState&)> change;
    bool valid;
};

class PracticeStateValidation : public testing::TestWithParam<ValidationCase> { };

TEST_P(PracticeStateValidation, AcceptsOrRejectsWithInvalidData)
{
    PracticeState state;
    GetParam().change(state);
    if (GetParam().valid) {
        EXPECT_EQ(&state.validated(), &state) << "validated() hands back the record itself";
    } else {
        const PracticeState before = state;
        expectPracticeError([&] { (void)state.validated(); }, PracticeError::invalidData);
        EXPECT_EQ(state, before) << "validation never repairs";
    }
}

std::vector<ValidationCase> validationCases()
{
    return {
        {"Version2", [](PracticeState& s) { s.version = 2; }, false},
        {"SelectedKnownTopics",
            [](PracticeState& s) {
                s.selected = {"phone", "craving"};
            },
            true},
        {"SelectedUnknownTopic",
            [](PracticeState& s) {
                s.selected = {"phone", "coffee"};
            },
            false},
        {"LotusForUnselectedKnownTopic", [](PracticeState& s) { s.lotuses["money"] = LotusProgress(3); }, true},
        {"LotusForUnknownTopic", [](PracticeState& s) { s.lotuses["coffee"] = LotusProgress(3); }, false},
        {"OnboardedWithSelection",
            [](PracticeState& s) {
                s.onboarded = true;
                s.selected = {"phone"};
            },
            true},
        {"OnboardedWithoutSelection", [](PracticeState& s) { s.onboarded = true; }, false},
        {"LanguagePali", [](PracticeState& s) { s.language = "pi"; }, true},
        {"LanguageGerman", [](PracticeState& s) { s.language = "de"; }, false},
        {"LanguageRegion", [](PracticeState& s) { s.language = "pt-BR"; }, false},
        {"ReminderLatestTime",
            [](PracticeState& s) {
                s.reminderHour = 23;
                s.reminderMinute = 59;
            },
            true},
        {"ReminderHour24", [](PracticeState& s) { s.reminderHour = 24; }, false},
        {"ReminderHourNegative", [](PracticeState& s) { s.reminderHour = -1; }, false},
        {"ReminderMinute60", [](PracticeState& s) { s.reminderMinute = 60; }, false},
        {"PracticeDayOneBadAmongGood",
            [](PracticeState& s) {
                s.practiceDays = {"2024-02-03", "2024-02-04", "yesterday"};
            },
            false},
        {"WiltWeekSeenDay", [](PracticeState& s) { s.wiltWeekSeen = "2025-03-10"; }, true},
        {"WiltWeekSeenGarbage", [](PracticeState& s) { s.wiltWeekSeen = "week 11"; }, false},
        {"GrowthFull", [](PracticeState& s) { s.lotuses["phone"] = LotusProgress(1, std::nullopt, 14); }, true},
        {"GrowthAboveFull", [](PracticeState& s) { s.lotuses["phone"] = LotusProgress(1, std::nullopt, 15); }, false},
        {"GrowthAboveMoments", [](PracticeState& s) { s.lotuses["phone"] = LotusProgress(2, std::nullopt, 9); }, true},
        {"MomentsNegative", [](PracticeState& s) { s.lotuses["phone"] = LotusProgress(-1); }, false},
        {"LastDayMalformed", [](PracticeState& s) { s.lotuses["phone"] = LotusProgress(1, "2025-1-1"); }, false},
    };
}

INSTANTIATE_TEST_SUITE_P(Rules, PracticeStateValidation, testing::ValuesIn(validationCases()),
    [](const testing::TestParamInfo<ValidationCase>& param) { return std::string(param.param.name); });

struct LanguageCase {
    const char* stored;
    std::vector<std::string> preferred;
    const char* expected;
};

TEST(PracticeState, ResolvedLanguage_FollowsStoredCodeThenPreferredPrimaryCodesThenEnglish)
{
    const LanguageCase cases[] = {
        {"system", {"fr_CA", "en-US"}, "fr"},
        {"system", {}, "en"},
        {"system", {"PT-br"}, "en"},
        {"system", {"zh-Hans-CN", "hi-IN"}, "hi"},
        {"system", {"pi"}, "pi"},
        {"system", {"fr-CA_x"}, "fr"},
        {"ru", {"fr_CA", "en-US"}, "ru"},
        {"de", {"es-MX"}, "es"},
        {"", {"ru"}, "ru"},
    };
    for (const LanguageCase& c : cases)
        EXPECT_EQ(PracticeState::resolvedLanguage(c.stored, c.preferred), c.expected)
            << "stored \"" << c.stored << "\", first preferred \"" << (c.preferred.empty() ? "" : c.preferred.front())
            << '"';
}

} // namespace
} // namespace velmora
