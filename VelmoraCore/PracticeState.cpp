#include "PracticeState.h"

#include <algorithm>

#include "PracticeError.h"

namespace velmora {

const PracticeState::StringSet& PracticeState::topicIDs()
{
    static const StringSet ids{
        "alcohol",
        "smoking",
        "drugs",
        "sex",
        "porn",
        "overeating",
        "social_media",
        "doomscrolling",
        "phone",
        "shopping",
        "money",
        "control",
        "approval",
        "past_relationship",
        "craving",
        "aversion",
        "delusion",
    };
    return ids;
}

const std::vector<std::string>& PracticeState::languages()
{
    static const std::vector<std::string> codes{"ru", "en", "fr", "hi", "es", "pt", "pi"};
    return codes;
}

namespace {

bool isLanguage(std::string_view code)
{
    const auto& codes = PracticeState::languages();
    return std::find(codes.begin(), codes.end(), code) != codes.end();
}

bool isTopic(std::string_view topicID)
{
    return PracticeState::topicIDs().contains(topicID);
}

bool isDayKeyOrNone(const std::optional<std::string>& key)
{
    return !key || PracticeState::parseDay(*key);
}

bool isValidLotus(const LotusProgress& lotus)
{
    if (lotus.moments < 0)
        return false;
    if (lotus.growthMoments && (*lotus.growthMoments < 0 || *lotus.growthMoments > LotusProgress::fullGrowth))
        return false;
    return isDayKeyOrNone(lotus.lastDay);
}

} // namespace

std::string PracticeState::resolvedLanguage(std::string_view language, const std::vector<std::string>& preferred)
{
    if (isLanguage(language))
        return std::string(language);
    for (std::string_view identifier : preferred) {
        // "fr_CA", "fr-CA" and "fr" all name French; only the primary code counts.
        std::string_view primary = identifier.substr(0, identifier.find_first_of("-_"));
        if (isLanguage(primary))
            return std::string(primary);
    }
    return "en";
}

const PracticeState& PracticeState::validated() const
{
    const bool valid = version == 1 && std::all_of(selected.begin(), selected.end(), isTopic)
        && std::all_of(lotuses.begin(), lotuses.end(), [](const auto& entry) { return isTopic(entry.first); })
        && (!onboarded || !selected.empty()) && (isLanguage(language) || language == "system") && reminderHour >= 0
        && reminderHour <= 23 && reminderMinute >= 0 && reminderMinute <= 59
        && std::all_of(
            practiceDays.begin(), practiceDays.end(), [](const std::string& day) { return parseDay(day).has_value(); })
        && isDayKeyOrNone(wiltWeekSeen)
        && std::all_of(lotuses.begin(), lotuses.end(), [](const auto& entry) { return isValidLotus(entry.second); });
    if (!valid)
        throw PracticeError(PracticeError::invalidData);
    return *this;
}

} // namespace velmora
