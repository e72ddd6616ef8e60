#include <cstdint>
#include <limits>
#include <optional>
#include <string>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "CatalogFixture.h"
#include "VelmoraMac/ContentCatalog.h"

namespace velmora {
namespace {

using nlohmann::json;

// English and French catalog tables that overlap in some keys, lack some,
// hold non-text values and also define keys of the built-in texts.
const ContentCatalog& lookupCatalog()
{
    static const ContentCatalog catalog = [] {
        json document = test::minimalCatalogDocument();
        document["strings"]["en"] = json::parse(R"json({
            "greeting": "Hello",
            "onlyEnglish": "Only in English",
            "days": "{count} days",
            "twice": "{count} of {count}",
            "adjacent": "{count}{count}",
            "almost": "{count {COUNT} {{count}}",
            "plain": "No placeholder",
            "number": 5,
            "notTextInFrench": "English text",
            "quitApp": "Catalog quit",
            "loginError": "Catalog login error",
            "groups": ["Substances", "Desire", "Screens", "Mind", "Poisons"]
        })json");
        document["strings"]["fr"] = json::parse(R"json({
            "greeting": "Bonjour",
            "days": "{count} jours",
            "notTextInFrench": {"text": "Texte"},
            "quitApp": "Quitter (catalogue)",
            "startupError": "Démarrage impossible (catalogue)"
        })json");
        document["strings"]["ru"] = {{"groups", "not a list"}};
        document["strings"]["es"] = {{"groups", {"Uno", 2, "Tres"}}};
        document["strings"]["pt"] = {{"groups", json::array()}};
        document["strings"]["pi"] = {{"greeting", "Namo"}, {"groups", {"Paṭhama"}}};
        return ContentCatalog::fromJSON(document.dump());
    }();
    return catalog;
}

struct TextCase {
    const char* name;
    const char* key;
    const char* language;
    std::optional<std::int64_t> count;
    const char* expected;
};

class ContentCatalogText : public testing::TestWithParam<TextCase> { };

TEST_P(ContentCatalogText, FollowsTheFallbackOrder)
{
    const TextCase& lookup = GetParam();
    EXPECT_EQ(lookupCatalog().text(lookup.key, lookup.language, lookup.count), lookup.expected);
}

const TextCase textCases[] = {
    // The catalog: the language's own table, then English, then the key.
    {"OwnTable", "greeting", "fr", std::nullopt, "Bonjour"},
    {"MissingFallsBackToEnglish", "onlyEnglish", "fr", std::nullopt, "Only in English"},
    {"UnknownLanguageReadsEnglish", "greeting", "de", std::nullopt, "Hello"},
    {"MissingEverywhereGivesTheKey", "nowhere", "fr", std::nullopt, "nowhere"},
    {"NonTextInTheOwnTableGivesTheKey", "notTextInFrench", "fr", std::nullopt, "notTextInFrench"},
    {"ListGivesTheKey", "groups", "en", std::nullopt, "groups"},

    // "{count}" in catalog texts: every occurrence, only with a count.
    {"CountReplaced", "days", "fr", 3, "3 jours"},
    {"CountKeptWithoutCount", "days", "fr", std::nullopt, "{count} jours"},
    {"CountEveryOccurrence", "twice", "fr", 2, "2 of 2"},
    {"CountAdjacentOccurrences", "adjacent", "en", 7, "77"},
    {"CountOnlyTheExactPlaceholder", "almost", "en", 4, "{count {COUNT} {4}"},
    {"CountInTheKeyFallback", "{count} left", "en", 5, "5 left"},

    // Built-in texts first, in the language or in English, never substituted.
    {"BuiltInWinsOverTheCatalog", "quitApp", "fr", 2, "Quitter Velmora"},
    {"BuiltInWithoutCatalogEntry", "okay", "es", std::nullopt, "Aceptar"},
    {"BuiltInOwnLanguageOverCatalogOwnLanguage", "startupError", "fr", std::nullopt, "Velmora n’a pas pu démarrer"},
};

INSTANTIATE_TEST_SUITE_P(Rules, ContentCatalogText, testing::ValuesIn(textCases),
    [](const testing::TestParamInfo<TextCase>& param) { return std::string(param.param.name); });

TEST(ContentCatalogGroup, ReadsTheLanguagesOwnListWithoutFallback)
{
    const ContentCatalog& catalog = lookupCatalog();
    EXPECT_EQ(catalog.group(0, "en"), "Substances");
    EXPECT_EQ(catalog.group(4, "en"), "Poisons");
    EXPECT_EQ(catalog.group(0, "pi"), "Paṭhama");
    // No "groups" in the French table, or one that is not a list of
    // strings: no English fallback.
    for (const char* language : {"fr", "de", "ru", "es", "pt"})
        EXPECT_EQ(catalog.group(0, language), "") << language;
    for (const std::int64_t index : {std::int64_t{5}, std::int64_t{-1}, std::numeric_limits<std::int64_t>::max(),
             std::numeric_limits<std::int64_t>::min()})
        EXPECT_EQ(catalog.group(index, "en"), "") << index;
    EXPECT_EQ(catalog.group(1, "pi"), "");
}

} // namespace
} // namespace velmora
