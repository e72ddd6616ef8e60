#include <array>
#include <cctype>
#include <cstdint>
#include <filesystem>
#include <map>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "CheckedPNG.h"
#include "VelmoraCore/PracticeState.h"
#include "VelmoraMac/ContentCatalog.h"

namespace velmora {
namespace {

using nlohmann::json;

// The content file exactly as the library ships it.
const ContentCatalog& shippedCatalog()
{
    static const ContentCatalog catalog{std::filesystem::path(VELMORA_CONTENT_RESOURCE)};
    return catalog;
}

// Every text key that the coordinator, the snapshot, the menu, the pond
// chrome and the panel ask the catalog for.
constexpr std::array<std::string_view, 45> textKeys = {"loadError", "saveError", "permissionDenied", "dailyGentle",
    "days", "daysSuffix", "back", "settings", "notice", "noticed", "retry", "language", "systemLanguage", "cancel",
    "close", "chooseOne", "selected", "begin", "enterPond", "next", "save", "welcomeTitle", "welcomeBody",
    "welcomeFoot", "privacy", "selectionBody", "poisonsBody", "hintTitle", "hintBody", "wiltTitle", "wiltBody",
    "understood", "sounds", "waterSound", "waterSoundBody", "bellSound", "bellSoundBody", "topicsTitle", "retained",
    "guide", "reminder", "reminderBody", "time", "localOnly", "privacyPolicy"};

constexpr std::int64_t groupCount = 5;

bool isColour(std::string_view text)
{
    return text.size() == 7 && text[0] == '#'
        && text.find_first_not_of("0123456789abcdefABCDEF", 1) == std::string_view::npos;
}

std::string lowerCase(std::string text)
{
    for (char& letter : text)
        letter = static_cast<char>(std::tolower(static_cast<unsigned char>(letter)));
    return text;
}

TEST(ShippedContent, EveryLanguageHasEveryTextAndTheFiveGroupsOfItsOwn)
{
    const ContentCatalog& catalog = shippedCatalog();
    for (const std::string& language : PracticeState::languages()) {
        const json& table = catalog.strings().at(language);
        for (const std::string_view key : textKeys) {
            const auto entry = table.find(key);
            if (entry == table.end() || !entry->is_string()) {
                ADD_FAILURE() << language << " has no text " << key;
                continue;
            }
            EXPECT_FALSE(entry->get<std::string>().empty()) << language << " " << key;
            EXPECT_EQ(catalog.text(key, language), entry->get<std::string>()) << language << " " << key;
        }
        for (const char* key : {"days", "selected", "chooseOne"}) {
            const std::string counted = catalog.text(key, language, 42);
            EXPECT_EQ(counted.find("{count}"), std::string::npos) << language << " " << key;
            EXPECT_NE(counted.find("42"), std::string::npos) << language << " " << key;
        }
        // group() gives nothing unless the language has a list of texts.
        for (std::int64_t index = 0; index < groupCount; ++index)
            EXPECT_FALSE(catalog.group(index, language).empty()) << language << " " << index;
        EXPECT_EQ(catalog.group(groupCount, language), "") << language << " has more groups";
    }
}

TEST(ShippedContent, EveryTopicIsNamedDescribedColouredAndGroupedOnItsOwn)
{
    std::map<std::string, std::string> topicOfColour;
    std::map<std::int64_t, std::set<std::string>> topicsOfGroup;
    for (const Topic& topic : shippedCatalog().topics()) {
        EXPECT_GE(topic.group, 0) << topic.id;
        EXPECT_LT(topic.group, groupCount) << topic.id;
        topicsOfGroup[topic.group].insert(topic.id);
        for (std::size_t index = 0; index < PracticeState::languages().size(); ++index) {
            EXPECT_FALSE(topic.names[index].empty()) << topic.id << " " << PracticeState::languages()[index];
            EXPECT_FALSE(topic.descriptions[index].empty()) << topic.id << " " << PracticeState::languages()[index];
        }
        EXPECT_TRUE(isColour(topic.color)) << topic.id << " " << topic.color;
        const auto [previous, unique] = topicOfColour.emplace(lowerCase(topic.color), topic.id);
        EXPECT_TRUE(unique) << topic.id << " shares " << topic.color << " with " << previous->second;
    }
    // The last group holds the three poisons; no group is left empty.
    EXPECT_EQ(topicsOfGroup[4], (std::set<std::string>{"craving", "aversion", "delusion"}));
    for (std::int64_t group = 0; group < 4; ++group)
        EXPECT_FALSE(topicsOfGroup[group].empty()) << "group " << group << " has no topic";
}

TEST(ShippedContent, PaletteHoldsEveryColourOfThePanel)
{
    const ContentCatalog::StringMap& palette = shippedCatalog().palette();
    for (const char* key :
        {"paper", "ink", "muted", "gold", "primary", "onPrimary", "surfaceContainerHighest", "outline"}) {
        const auto found = palette.find(key);
        ASSERT_NE(found, palette.end()) << key;
        EXPECT_TRUE(isColour(found->second)) << key << " " << found->second;
    }
}

void expectTemplateIcon(const std::string& base64, const std::string& name)
{
    try {
        const test::CheckedPNG image = test::checkedPNG(test::decodedBase64(base64));
        EXPECT_EQ(image.width, image.height) << name << " is drawn into a square";
        // Icons show at up to 68 points, which is 136 pixels on a Retina screen.
        EXPECT_GE(image.width, 136U) << name << " would be blurred at its largest size";
    } catch (const std::runtime_error& error) {
        ADD_FAILURE() << name << ": " << error.what();
    }
}

TEST(ShippedContent, EveryIconIsAPNGWithAnAlphaChannel)
{
    const ContentCatalog& catalog = shippedCatalog();
    for (const char* name : {"lotus", "settings", "lock", "privacy", "wifi", "language", "expand", "next", "guide",
             "checked", "unchecked", "back", "close"}) {
        const auto icon = catalog.uiIcons().find(name);
        if (icon == catalog.uiIcons().end()) {
            ADD_FAILURE() << "no UI icon " << name;
            continue;
        }
        expectTemplateIcon(icon->second, std::string("UI icon ") + name);
    }
    for (const Topic& topic : catalog.topics())
        expectTemplateIcon(topic.icon, "icon of " + topic.id);
}

} // namespace
} // namespace velmora
