#include <set>
#include <string>

#include <gtest/gtest.h>

#include "VelmoraMac/MacStrings.h"

namespace velmora {
namespace {

TEST(MacStrings, Values_HaveSixTablesWithTheSameSixteenKeysAndNoPali)
{
    std::set<std::string> languages;
    for (const auto& [language, table] : MacStrings::values())
        languages.insert(language);
    EXPECT_EQ(languages, (std::set<std::string>{"en", "ru", "fr", "es", "pt", "hi"}));

    std::set<std::string> englishKeys;
    for (const auto& [key, text] : MacStrings::values().at("en"))
        englishKeys.insert(key);
    EXPECT_EQ(englishKeys.size(), 16U);
    for (const auto& [language, table] : MacStrings::values()) {
        std::set<std::string> keys;
        for (const auto& [key, text] : table) {
            keys.insert(key);
            EXPECT_FALSE(text.empty()) << language << " " << key;
            EXPECT_EQ(text.find("{count}"), std::string::npos) << language << " " << key;
        }
        EXPECT_EQ(keys, englishKeys) << language;
    }
}

TEST(MacStrings, Table_FallsBackToEnglishForALanguageWithoutATable)
{
    EXPECT_EQ(MacStrings::table("fr").at("quitApp"), "Quitter Velmora");
    for (const char* language : {"pi", "de", "", "EN"}) {
        EXPECT_EQ(&MacStrings::table(language), &MacStrings::values().at("en")) << language;
        EXPECT_EQ(MacStrings::table(language).at("startupError"), "Velmora could not start") << language;
    }
}

} // namespace
} // namespace velmora
