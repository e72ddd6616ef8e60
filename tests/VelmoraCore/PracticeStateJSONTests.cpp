#include <cstdint>
#include <functional>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "VelmoraCore/PracticeError.h"
#include "VelmoraCore/PracticeState.h"

namespace velmora {
namespace {

using nlohmann::json;

constexpr std::string_view defaultDocument
    = R"({"version":1,"onboarded":false,"selected":[],"lotuses":{},"practiceDays":[],)"
      R"("language":"system","hintSeen":false,"reminderEnabled":false,"reminderHour":20,)"
      R"("reminderMinute":0,"waterSoundEnabled":true,"bellSoundEnabled":true})";

PracticeState exampleState()
{
    PracticeState state;
    state.onboarded = true;
    state.selected = {"phone"};
    state.lotuses["phone"] = LotusProgress(2, "2025-03-14", 2);
    state.practiceDays = {"2025-03-13", "2025-03-14"};
    return state;
}

TEST(PracticeStateJSON, Encode_WritesCompactMembersWithoutAbsentOptionals)
{
    EXPECT_EQ(PracticeState().toJSON(), std::string(defaultDocument));
}

// The record as the JSON library's own tree writes it, members inserted in
// field order: the form every state file has been written in.
std::string treeEncoding(const PracticeState& state)
{
    using nlohmann::ordered_json;
    const auto strings = [](const PracticeState::StringSet& set) {
        ordered_json array = ordered_json::array();
        for (const std::string& string : set)
            array.push_back(string);
        return array;
    };
    ordered_json encoded = ordered_json::object();
    encoded["version"] = state.version;
    encoded["onboarded"] = state.onboarded;
    encoded["selected"] = strings(state.selected);
    ordered_json& lotusObject = encoded["lotuses"] = ordered_json::object();
    for (const auto& [topicID, lotus] : state.lotuses) {
        ordered_json& encodedLotus = lotusObject[topicID] = ordered_json::object();
        encodedLotus["moments"] = lotus.moments;
        if (lotus.lastDay)
            encodedLotus["lastDay"] = *lotus.lastDay;
        if (lotus.growthMoments)
            encodedLotus["growthMoments"] = *lotus.growthMoments;
    }
    encoded["practiceDays"] = strings(state.practiceDays);
    encoded["language"] = state.language;
    encoded["hintSeen"] = state.hintSeen;
    if (state.wiltWeekSeen)
        encoded["wiltWeekSeen"] = *state.wiltWeekSeen;
    encoded["reminderEnabled"] = state.reminderEnabled;
    encoded["reminderHour"] = state.reminderHour;
    encoded["reminderMinute"] = state.reminderMinute;
    encoded["waterSoundEnabled"] = state.waterSoundEnabled;
    encoded["bellSoundEnabled"] = state.bellSoundEnabled;
    return encoded.dump();
}

struct EncodingCase {
    const char* name = nullptr;
    std::function<void(PracticeState&)> change;
};

TEST(PracticeStateJSON, Encode_WritesTheSameBytesAsTheLibrarysTree)
{
    const EncodingCase cases[] = {
        {"default", [](PracticeState&) {}},
        {"example", [](PracticeState& s) { s = exampleState(); }},
        {"extreme integers",
            [](PracticeState& s) {
                s.version = std::numeric_limits<std::int64_t>::min();
                s.reminderHour = std::numeric_limits<std::int64_t>::max();
                s.reminderMinute = -1;
                s.lotuses["phone"] = LotusProgress(
                    std::numeric_limits<std::int64_t>::min(), std::nullopt, std::numeric_limits<std::int64_t>::max());
            }},
        {"lotus with only moments", [](PracticeState& s) { s.lotuses["phone"] = LotusProgress(0); }},
        {"lotus with growth, no last day",
            [](PracticeState& s) { s.lotuses["phone"] = LotusProgress(3, std::nullopt, 2); }},
        {"lotus with last day, no growth",
            [](PracticeState& s) { s.lotuses["phone"] = LotusProgress(3, "2025-03-14"); }},
        {"wilt week seen", [](PracticeState& s) { s.wiltWeekSeen = "2025-03-10"; }},
        {"every flag flipped",
            [](PracticeState& s) {
                s.onboarded = s.hintSeen = s.reminderEnabled = true;
                s.waterSoundEnabled = s.bellSoundEnabled = false;
            }},
        {"non-ASCII",
            [](PracticeState& s) {
                s.language = "日本語 café";
                s.selected = {"ñandú", "😀"};
            }},
        {"quote and backslash", [](PracticeState& s) { s.lotuses[R"(a"b\c)"] = LotusProgress(1, R"(\")"); }},
        {"slash is not escaped", [](PracticeState& s) { s.wiltWeekSeen = "2025/03/10"; }},
        {"control characters",
            [](PracticeState& s) {
                s.practiceDays = {"tab\there", "\n", std::string("nul\0", 4), "\x01\x1f", "del\x7f"};
            }},
        {"every plain character",
            [](PracticeState& s) {
                std::string all;
                for (char c = ' '; c <= '~'; ++c)
                    all += c;
                s.language = all;
            }},
        {"large",
            [](PracticeState& s) {
                s = exampleState();
                s.selected = PracticeState::topicIDs();
                std::vector<std::string> days;
                for (int year = 1970; year < 2025; ++year)
                    for (int day = 1; day <= 365; ++day)
                        days.push_back(std::to_string(year) + "/" + std::to_string(day));
                s.practiceDays = PracticeState::StringSet(std::move(days));
            }},
    };
    for (const EncodingCase& c : cases) {
        PracticeState state;
        c.change(state);
        EXPECT_EQ(state.toJSON(), treeEncoding(state)) << c.name;
    }

    // Invalid UTF-8 anywhere fails as the tree's dump() did.
    const EncodingCase invalid[] = {
        {"in a practice day",
            [](PracticeState& s) {
                s.practiceDays = {"2025-03-14", "\xff"};
            }},
        {"in a topic key", [](PracticeState& s) { s.lotuses["ph\xc3one"] = LotusProgress(1); }},
        {"in a last day", [](PracticeState& s) { s.lotuses["phone"] = LotusProgress(1, "\xe2\x82"); }},
        {"in the language", [](PracticeState& s) { s.language = "\xc0\xaf"; }},
        {"in the wilt week", [](PracticeState& s) { s.wiltWeekSeen = "\xed\xa0\x80"; }},
    };
    for (const EncodingCase& c : invalid) {
        PracticeState state;
        c.change(state);
        EXPECT_THROW((void)treeEncoding(state), json::type_error) << c.name;
        try {
            (void)state.toJSON();
            ADD_FAILURE() << c.name << ": nothing was thrown";
        } catch (const json::type_error& error) {
            EXPECT_EQ(error.id, 316) << c.name;
        }
    }
}

TEST(PracticeStateJSON, RoundTrip_GivesBackAnEqualRecord)
{
    PracticeState full = exampleState();
    full.selected = PracticeState::topicIDs();
    full.lotuses["craving"] = LotusProgress(9223372036854775807, "0001-01-01", 0);
    full.lotuses["delusion"] = LotusProgress(std::numeric_limits<std::int64_t>::min());
    full.language = "pi";
    full.hintSeen = true;
    full.wiltWeekSeen = "2025-03-10";
    full.reminderEnabled = true;
    full.reminderHour = 0;
    full.reminderMinute = 59;
    full.waterSoundEnabled = false;
    full.bellSoundEnabled = false;
    for (const PracticeState& state : {PracticeState(), exampleState(), full}) {
        const PracticeState decoded = PracticeState::fromJSON(state.toJSON());
        EXPECT_EQ(decoded, state);
        EXPECT_EQ(decoded.toJSON(), state.toJSON());
    }
}

TEST(PracticeStateJSON, Decode_AcceptsAnyOrderNullOptionalsUnknownMembersAndDuplicateSetElements)
{
    const PracticeState decoded = PracticeState::fromJSON(R"({
        "bellSoundEnabled": true, "waterSoundEnabled": true, "reminderMinute": 0, "reminderHour": 20,
        "reminderEnabled": false, "wiltWeekSeen": null, "hintSeen": false, "language": "system",
        "practiceDays": ["2025-03-14", "2025-03-13", "2025-03-14"],
        "lotuses": {"phone": {"growthMoments": 2, "lastDay": "2025-03-14", "moments": 2, "colour": "blue"}},
        "selected": ["phone", "phone"], "onboarded": true, "version": 1,
        "futureFeature": {"nested": [1, 2, {"deep": null}]}
    })");
    EXPECT_EQ(decoded, exampleState());

    const PracticeState nulls = PracticeState::fromJSON(R"({"version":1,"onboarded":false,"selected":[],
        "lotuses":{"phone":{"moments":3,"lastDay":null,"growthMoments":null}},"practiceDays":[],"language":"system",
        "hintSeen":false,"reminderEnabled":false,"reminderHour":20,"reminderMinute":0,"waterSoundEnabled":true,
        "bellSoundEnabled":true})");
    EXPECT_EQ(nulls.lotuses.at("phone"), LotusProgress(3));
    EXPECT_FALSE(nulls.wiltWeekSeen);
}

struct DecodeFailure {
    const char* name;
    std::string document;
};

std::string replacing(const std::string& member, const std::string& value)
{
    std::string document(defaultDocument);
    const std::string key = "\"" + member + "\":";
    const std::size_t start = document.find(key) + key.size();
    const bool emptyContainer = document[start] == '{' || document[start] == '[';
    const std::size_t end = emptyContainer ? start + 2 : document.find_first_of(",}", start);
    return document.replace(start, end - start, value);
}

std::string withLotus(const std::string& lotus)
{
    return replacing("lotuses", R"({"phone":)" + lotus + "}");
}

std::string without(const std::string& member)
{
    json document = json::parse(std::string(defaultDocument));
    document.erase(member);
    return document.dump();
}

TEST(PracticeStateJSON, Decode_FailsWithTheJSONLibrarysErrorOnEveryWrongShape)
{
    const std::string deepNesting = std::string(100000, '[') + std::string(100000, ']');
    const DecodeFailure failures[] = {
        {"empty text", ""},
        {"truncated", std::string(defaultDocument).substr(0, std::string(defaultDocument).size() - 1)},
        {"trailing garbage", std::string(defaultDocument) + "x"},
        {"NUL byte after the document", std::string(defaultDocument) + std::string(1, '\0') + "garbage"},
        {"NUL byte inside a string", replacing("language", std::string("\"sys\0tem\"", 9))},
        {"invalid UTF-8", replacing("language", "\"\xC3\x28\"")},
        {"array", "[]"},
        {"deep nesting in an unknown member", replacing("hintSeen", "false,\"x\":" + deepNesting)},
        {"number for a Boolean", replacing("onboarded", "0")},
        {"fraction for an integer", replacing("version", "1.5")},
        {"string for an integer", replacing("reminderHour", "\"20\"")},
        {"integer above the signed range", replacing("reminderHour", "9223372036854775808")},
        {"integer below the signed range", replacing("reminderHour", "-9223372036854775809")},
        {"string for a set", replacing("selected", "\"phone\"")},
        {"object inside practiceDays", replacing("practiceDays", "[{}]")},
        {"number for a lotus", withLotus("3")},
        {"lotus without moments", withLotus(R"({"lastDay":"2025-03-14","growthMoments":2})")},
        {"lotus with null moments", withLotus(R"({"moments":null})")},
        {"lotus with a number for lastDay", withLotus(R"({"moments":1,"lastDay":20250314})")},
        {"lotus with a huge growthMoments", withLotus(R"({"moments":1,"growthMoments":18446744073709551615})")},
        {"number for wiltWeekSeen", replacing("hintSeen", "false,\"wiltWeekSeen\":20250310")},
    };
    for (const DecodeFailure& failure : failures) {
        try {
            (void)PracticeState::fromJSON(failure.document);
            ADD_FAILURE() << failure.name << ": decoded";
        } catch (const json::exception& error) {
            SUCCEED() << failure.name << ": " << error.what();
        } catch (const std::exception& error) {
            ADD_FAILURE() << failure.name << ": not the JSON library's error: " << error.what();
        }
    }
}

TEST(PracticeStateJSON, Decode_RequiresEveryMemberButWiltWeekSeen)
{
    for (const char* member : {"version", "onboarded", "selected", "lotuses", "practiceDays", "language", "hintSeen",
             "reminderEnabled", "reminderHour", "reminderMinute", "waterSoundEnabled", "bellSoundEnabled"}) {
        EXPECT_THROW((void)PracticeState::fromJSON(without(member)), json::exception) << member;
    }
}

TEST(PracticeStateJSON, DecodeErrors_NameTheOffendingMember)
{
    try {
        (void)PracticeState::fromJSON(withLotus(R"({"moments":1.5})"));
        FAIL() << "decoded";
    } catch (const json::exception& error) {
        EXPECT_NE(std::string(error.what()).find("lotuses.phone.moments"), std::string::npos) << error.what();
    }
}

} // namespace
} // namespace velmora
