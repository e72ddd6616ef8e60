#include <string>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "PondColor.h"
#include "PondSnapshot.h"

namespace pond {
namespace {

using nlohmann::json;

// The envelope as the library writes it: the snapshot as a string inside.
std::string envelope(const json& snapshot, const json& kind = "practice")
{
    return json{{"version", 1}, {"kind", kind}, {"payload", snapshot.dump()}}.dump();
}

json topic(const std::string& id, const json& growth)
{
    return {{"id", id}, {"title", "T " + id}, {"moments", 5}, {"growthMoments", growth}, {"freshness", 1.0},
        {"color", "#EBB45E"}, {"icon", "iVBOR"}};
}

json snapshot(json topics)
{
    return {{"version", 1}, {"topics", std::move(topics)}, {"language", "en"}, {"waterSoundEnabled", true},
        {"bellSoundEnabled", true}, {"daysLabel", "Days of practice: 3"}, {"daysSuffix", "days"}, {"backLabel", "Back"},
        {"settingsLabel", "Settings"}, {"noticeLabel", "Notice"}, {"savedLabel", "Noticed"}, {"errorLabel", "E"}};
}

TEST(PondSnapshot, ReadsTopicsInOrder_WithGrowthClampedAndLabels)
{
    json members = snapshot(json::array({topic("smoking", 15), topic("alcohol", -2), topic("phone", 3.0)}));
    members["futureMember"] = {{"anything", 1}};
    const PondSnapshot read = PondSnapshot::fromEvent(envelope(members));

    ASSERT_EQ(read.topics.size(), 3U);
    EXPECT_EQ(read.topics[0].id, "smoking");
    EXPECT_EQ(read.topics[0].growthMoments, 14);
    EXPECT_EQ(read.topics[1].growthMoments, 0);
    EXPECT_EQ(read.topics[2].growthMoments, 3);
    EXPECT_EQ(read.topics[0].color, PondColor::fromBytes(0xEB, 0xB4, 0x5E));
    EXPECT_EQ(read.savedLabel, "Noticed");
    EXPECT_TRUE(read.waterSoundEnabled);
    EXPECT_TRUE(read.bellSoundEnabled);

    // A missing label is not drawn, and is no reason to drop the pond; a
    // missing or odd sound switch is off.
    members.erase("savedLabel");
    members.erase("waterSoundEnabled");
    members["bellSoundEnabled"] = "yes";
    members["topics"] = json::array();
    const PondSnapshot empty = PondSnapshot::fromEvent(envelope(members));
    EXPECT_TRUE(empty.topics.empty());
    EXPECT_EQ(empty.savedLabel, "");
    EXPECT_FALSE(empty.waterSoundEnabled);
    EXPECT_FALSE(empty.bellSoundEnabled);
}

TEST(PondSnapshot, RejectsWhatIsNoPracticeSnapshot)
{
    const json good = snapshot(json::array({topic("smoking", 1)}));
    json noId = good;
    noId["topics"][0].erase("id");
    json textGrowth = good;
    textGrowth["topics"][0]["growthMoments"] = "3";
    json noTopics = good;
    noTopics.erase("topics");
    json newer = good;
    newer["version"] = 2;
    struct Case {
        const char* name = "";
        std::string event;
    };
    const Case cases[] = {
        {"not JSON", "{\"version\":1,"},
        {"not an object", "[1,2]"},
        {"a lone value", "\"practice\""},
        {"no payload", json{{"version", 1}, {"kind", "practice"}}.dump()},
        {"another kind", envelope(good, "reminder")},
        {"payload as an object", json{{"version", 1}, {"kind", "practice"}, {"payload", good}}.dump()},
        {"payload not JSON", json{{"version", 1}, {"kind", "practice"}, {"payload", "{oops"}}.dump()},
        {"envelope of a later version", json{{"version", 2}, {"kind", "practice"}, {"payload", good.dump()}}.dump()},
        {"snapshot of a later version", envelope(newer)},
        {"no topics", envelope(noTopics)},
        {"topic without id", envelope(noId)},
        {"growth as text", envelope(textGrowth)},
    };
    for (const Case& c : cases)
        EXPECT_THROW((void)PondSnapshot::fromEvent(c.event), PondSnapshotError) << c.name;
}

TEST(PondColor, ReadsCatalogColours_AndFallsBackOnTextsThatAreNone)
{
    const PondColor fallback = PondColor::fromBytes(1, 2, 3);
    struct Case {
        const char* text = "";
        PondColor expected;
    };
    const Case cases[] = {
        {"#EBB45E", PondColor::fromBytes(0xEB, 0xB4, 0x5E)},
        {"#80FF00FF", PondColor::fromBytes(0xFF, 0, 0xFF)}, // with alpha: the colour is the last six digits
        {"", fallback},
        {"#12 34", fallback},
    };
    for (const Case& c : cases)
        EXPECT_EQ(PondColor::parse(c.text, fallback), c.expected) << c.text;
}

} // namespace
} // namespace pond
