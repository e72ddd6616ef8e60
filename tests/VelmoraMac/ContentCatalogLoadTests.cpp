#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "CatalogFixture.h"
#include "VelmoraCore/PracticeError.h"
#include "VelmoraCore/PracticeState.h"
#include "VelmoraMac/ContentCatalog.h"
#include "tests/VelmoraCore/CoreTestSupport.h"
#include "tests/VelmoraCore/TemporaryFolder.h"

namespace velmora {
namespace {

using nlohmann::json;
using test::minimalCatalogDocument;

enum class Outcome : std::uint8_t {
    loads,
    decodingError,
    invalidData,
};

class ContentCatalogFile : public testing::Test {
protected:
    std::filesystem::path write(const std::string& bytes)
    {
        std::filesystem::path path = m_folder / "content.json";
        test::writeFileBytes(path, bytes);
        return path;
    }

    // Loads `bytes` through the file entry point and checks the outcome.
    void expectOutcome(const std::string& bytes, Outcome outcome, const std::string& name)
    {
        const std::filesystem::path path = write(bytes);
        try {
            const ContentCatalog catalog(path);
            EXPECT_EQ(outcome, Outcome::loads) << name << ": loaded";
        } catch (const json::exception& error) {
            EXPECT_EQ(outcome, Outcome::decodingError) << name << ": " << error.what();
        } catch (const PracticeError& error) {
            EXPECT_EQ(outcome, Outcome::invalidData) << name << ": " << error.what();
            EXPECT_EQ(error.kind(), PracticeError::invalidData) << name;
        } catch (const std::exception& error) {
            ADD_FAILURE() << name << ": unexpected error " << error.what();
        }
    }

private:
    test::TemporaryFolder m_folder;
};

json& topicNamed(json& document, const std::string& id)
{
    for (json& topic : document["topics"]) {
        if (topic["id"] == id)
            return topic;
    }
    throw std::logic_error("no topic " + id);
}

json::iterator topicIterator(json& document, const std::string& id)
{
    json& topics = document["topics"];
    for (auto topic = topics.begin(); topic != topics.end(); ++topic) {
        if ((*topic)["id"] == id)
            return topic;
    }
    throw std::logic_error("no topic " + id);
}

// Appends a copy of the topic `id` and gives the copy.
json& appendedCopy(json& document, const std::string& id)
{
    json copy = topicNamed(document, id);
    document["topics"].push_back(std::move(copy));
    return document["topics"].back();
}

struct DocumentCase {
    const char* name;
    std::function<void(json&)> change;
    Outcome outcome;
};

class ContentCatalogValidation : public ContentCatalogFile, public testing::WithParamInterface<DocumentCase> { };

TEST_P(ContentCatalogValidation, LoadsOrFailsWithTheRightError)
{
    json document = minimalCatalogDocument();
    GetParam().change(document);
    expectOutcome(document.dump(), GetParam().outcome, GetParam().name);
}

std::vector<DocumentCase> documentCases()
{
    return {
        // Content that is complete, whatever else it carries.
        {"Minimal", [](json&) {}, Outcome::loads},
        {"UnknownMembersEverywhere",
            [](json& d) {
                d["version"] = 9;
                topicNamed(d, "phone")["extra"] = {1, 2};
                d["strings"]["en"]["x"] = json::object();
            },
            Outcome::loads},

        // The typed part decodes strictly.
        {"TopicsMissing", [](json& d) { d.erase("topics"); }, Outcome::decodingError},
        {"TopicWithoutID", [](json& d) { topicNamed(d, "phone").erase("id"); }, Outcome::decodingError},
        {"FractionalGroup", [](json& d) { topicNamed(d, "phone")["group"] = 1.5; }, Outcome::decodingError},
        {"NumberAmongNames", [](json& d) { topicNamed(d, "phone")["names"][6] = 6; }, Outcome::decodingError},
        {"NumericLanguageName", [](json& d) { d["languages"]["fr"] = 2; }, Outcome::decodingError},
        // Decoding comes first: wrong types win over incomplete content.
        {"WrongTypeAndNoStrings",
            [](json& d) {
                topicNamed(d, "phone")["group"] = 1.5;
                d.erase("strings");
            },
            Outcome::decodingError},

        // The text tables must be an object of objects.
        {"StringsMissing", [](json& d) { d.erase("strings"); }, Outcome::invalidData},
        {"ExtraTextTableAnArray", [](json& d) { d["strings"]["de"] = json::array(); }, Outcome::invalidData},

        // Exactly the fixed topics.
        {"SixteenTopics", [](json& d) { d["topics"].erase(topicIterator(d, "delusion")); }, Outcome::invalidData},
        {"EighteenthUnknownTopic", [](json& d) { appendedCopy(d, "phone")["id"] = "coffee"; }, Outcome::invalidData},
        {"EighteenthDuplicateTopic", [](json& d) { appendedCopy(d, "phone"); }, Outcome::invalidData},
        {"UnknownTopicInsteadOfAKnownOne", [](json& d) { topicNamed(d, "phone")["id"] = "Phone"; },
            Outcome::invalidData},

        // One name and one description per practice language.
        {"SixNames", [](json& d) { topicNamed(d, "craving")["names"].erase(6); }, Outcome::invalidData},
        {"SixDescriptions", [](json& d) { topicNamed(d, "alcohol")["descriptions"].erase(0); }, Outcome::invalidData},

        // A table for every practice language.
        {"NoPaliTable", [](json& d) { d["strings"].erase("pi"); }, Outcome::invalidData},
        {"UpperCaseCode",
            [](json& d) {
                d["strings"].erase("hi");
                d["strings"]["HI"] = json::object();
            },
            Outcome::invalidData},
    };
}

INSTANTIATE_TEST_SUITE_P(Rules, ContentCatalogValidation, testing::ValuesIn(documentCases()),
    [](const testing::TestParamInfo<DocumentCase>& param) { return std::string(param.param.name); });

TEST_F(ContentCatalogFile, DecodingErrors_NameTheOffendingMember)
{
    json document = minimalCatalogDocument();
    document["topics"][4]["names"][2] = false;
    try {
        (void)ContentCatalog::fromJSON(document.dump());
        FAIL() << "loaded";
    } catch (const json::exception& error) {
        EXPECT_NE(std::string(error.what()).find("topics[4].names[2]"), std::string::npos) << error.what();
    }
}

TEST_F(ContentCatalogFile, UnreadableFile_FailsWithTheFileSystemsErrorNamingThePath)
{
    const test::TemporaryFolder folder;
    for (const std::filesystem::path& path : {folder / "missing.json", folder.path()}) {
        try {
            const ContentCatalog catalog(path);
            ADD_FAILURE() << path << ": loaded";
        } catch (const std::filesystem::filesystem_error& error) {
            EXPECT_EQ(error.path1(), path) << error.what();
            EXPECT_TRUE(error.code()) << error.what();
        }
    }
}

TEST_F(ContentCatalogFile, Load_KeepsTheFileContentWithTopicsInFileOrder)
{
    json document = minimalCatalogDocument();
    // Reversed, so that neither the fixed list's order nor sorting explains
    // the result.
    json reversed = json::array();
    for (auto topic = document["topics"].rbegin(); topic != document["topics"].rend(); ++topic)
        reversed.push_back(*topic);
    document["topics"] = reversed;
    topicNamed(document, "phone")["group"] = 3;
    topicNamed(document, "phone")["color"] = "#7FB8A4";
    document["languages"] = {{"ru", "Русский"}, {"pi", "Pāli"}};
    document["palette"] = {{"paper", "#0E2422"}, {"gold", "#D9C59A"}};
    document["strings"]["en"] = {{"back", "Back"}, {"groups", {"One", "Two"}}};

    const ContentCatalog catalog(write(document.dump()));
    ASSERT_EQ(catalog.topics().size(), 17U);
    for (std::size_t index = 0; index < 17; ++index) {
        const json& expected = document["topics"][index];
        const Topic& topic = catalog.topics()[index];
        EXPECT_EQ(topic.id, expected["id"]);
        EXPECT_EQ(topic.group, expected["group"]);
        EXPECT_EQ(topic.color, expected["color"]);
        EXPECT_EQ(topic.names, expected["names"].get<std::vector<std::string>>());
        EXPECT_EQ(topic.descriptions, expected["descriptions"].get<std::vector<std::string>>());
        EXPECT_EQ(topic.icon, expected["icon"]);
    }
    EXPECT_EQ(catalog.topics().front().id, *PracticeState::topicIDs().rbegin());
    EXPECT_EQ(catalog.languages(), (ContentCatalog::StringMap{{"ru", "Русский"}, {"pi", "Pāli"}}));
    EXPECT_EQ(catalog.palette(), (ContentCatalog::StringMap{{"paper", "#0E2422"}, {"gold", "#D9C59A"}}));
    EXPECT_EQ(catalog.strings(), document["strings"]);
}

} // namespace
} // namespace velmora
