#include <algorithm>
#include <fstream>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "CoordinatorTestDoubles.h"
#include "VelmoraMac/EventEnvelope.h"
#include "VelmoraMac/Platform/Headless/HeadlessSystemEnvironment.h"
#include "VelmoraMac/PracticeCoordinator.h"
#include "tests/VelmoraCore/CoreTestSupport.h"
#include "tests/VelmoraCore/TemporaryFolder.h"

namespace velmora {
namespace {

using nlohmann::json;
using test::utc;

// The snapshot as the JSON library writes it from a tree of its values: the
// text the renderer has always received, which the spliced text must match
// byte for byte.
std::string treeSnapshot(const PracticeCoordinator& coordinator, const SystemEnvironment& system)
{
    using ordered_json = nlohmann::ordered_json;
    const PracticeState& state = coordinator.state().get();
    const ContentCatalog& catalog = coordinator.catalog();
    const Instant now = system.now();
    const UserCalendar calendar = system.currentCalendar();
    const std::string language = coordinator.resolvedLanguage();
    const std::size_t index = coordinator.languageIndex();

    ordered_json topics = ordered_json::array();
    for (const Topic& topic : catalog.topics()) {
        if (!state.selected.contains(topic.id))
            continue;
        const auto lotus = state.lotuses.find(topic.id);
        topics.push_back({
            {"id", topic.id},
            {"title", topic.names.at(index)},
            {"moments", lotus == state.lotuses.end() ? 0 : lotus->second.moments},
            {"growthMoments", state.growthMoments(topic.id, now, calendar)},
            {"freshness", state.freshness(topic.id, now, calendar)},
            {"color", topic.color},
            {"icon", topic.icon},
        });
    }
    const ordered_json snapshot = {
        {"version", 1},
        {"topics", std::move(topics)},
        {"language", language},
        {"waterSoundEnabled", state.waterSoundEnabled},
        {"bellSoundEnabled", state.bellSoundEnabled},
        {"daysLabel", catalog.text("days", language, static_cast<std::int64_t>(state.practiceDays.size()))},
        {"daysSuffix", catalog.text("daysSuffix", language)},
        {"backLabel", catalog.text("back", language)},
        {"settingsLabel", catalog.text("settings", language)},
        {"noticeLabel", catalog.text("notice", language)},
        {"savedLabel", catalog.text("noticed", language)},
        {"errorLabel", catalog.text("saveError", language)},
    };
    return snapshot.dump();
}

json shippedCatalog()
{
    std::ifstream file(VELMORA_CONTENT_RESOURCE);
    return json::parse(file);
}

// Quotes, backslashes, control characters, DEL and characters beyond ASCII
// in every kind of text the snapshot carries from the catalog.
json awkwardCatalog()
{
    json document = test::coordinatorCatalogDocument();
    const std::vector<std::string> awkward = {
        "say \"hi\"",
        R"(back\slash \")",
        "tab\there\nline\r\b\f",
        std::string("nul\0and\x01\x1F", 9),
        "del\x7F/slash",
        "Телефон",
        "फ़ोन 🪷",
    };
    for (json& topic : document["topics"]) {
        topic["names"] = awkward;
        topic["color"] = "#\"1\\2\n";
        topic["icon"] = "ic\"on\\\t" + topic["id"].get<std::string>();
    }
    for (const char* language : {"en", "fr", "pi"}) {
        document["strings"][language]["days"] = "{count} «дней» \"q\" \\ \n{count}";
        document["strings"][language]["notice"] = std::string("\0\x7F", 2);
        document["strings"][language]["back"] = "\\u0041 is not A";
    }
    return document;
}

PracticeState practising()
{
    PracticeState state;
    state.onboarded = true;
    state.selected = {"alcohol", "phone", "delusion"};
    state.lotuses["phone"] = LotusProgress(9, "2025-03-10", 9); // four days ago: three days of decay
    state.lotuses["money"] = LotusProgress(4, "2025-03-14", 4); // not selected
    state.practiceDays = {"2025-03-09", "2025-03-10"};
    state.waterSoundEnabled = false;
    return state;
}

// Every topic selected and grown in its own way: never noticed, noticed
// today, decayed, and with moments as large as they get.
PracticeState everyTopic(std::string language)
{
    PracticeState state;
    state.onboarded = true;
    state.language = std::move(language);
    state.selected = PracticeState::topicIDs();
    std::int64_t day = 0;
    for (const std::string& id : PracticeState::topicIDs()) {
        if (id == "phone")
            continue;
        const std::string lastDay = "2025-03-" + std::to_string(14 - (day % 4));
        state.lotuses[id] = LotusProgress(day * 1000 + 1, lastDay, day % (LotusProgress::fullGrowth + 1));
        ++day;
    }
    state.lotuses["money"]
        = LotusProgress(std::numeric_limits<std::int64_t>::max(), "2025-03-14", LotusProgress::fullGrowth);
    for (int practised = 1; practised <= 28; ++practised)
        state.practiceDays.insert("2025-02-" + std::string(practised < 10 ? "0" : "") + std::to_string(practised));
    state.bellSoundEnabled = false;
    return state;
}

class PracticeCoordinatorSnapshotTest : public testing::Test {
protected:
    // A coordinator whose state is `state`, saved and loaded as at start-up.
    PracticeCoordinator& coordinatorWith(
        const PracticeState& state, const nlohmann::json& catalog = test::coordinatorCatalogDocument())
    {
        m_coordinator.reset();
        m_published.clear();
        m_catalog = std::make_shared<const ContentCatalog>(ContentCatalog::fromJSON(catalog.dump()));
        auto store = std::make_unique<PracticeStore>(m_folder / "practice.json");
        store->load();
        store->update([&state](const PracticeState&) { return state; });
        m_coordinator = std::make_unique<PracticeCoordinator>(m_catalog, std::move(store),
            std::make_shared<test::FakeLoginLaunch>(), std::make_shared<test::RecordingReminders>(), nullptr, m_system);
        m_coordinator->setOnSnapshot([this](const PondSnapshot& snapshot) { m_published.push_back(snapshot); });
        m_coordinator->load();
        return *m_coordinator;
    }

    // The snapshot matches the tree's text, and its envelope the JSON
    // library's envelope of that text.
    void expectAsWritten(const PondSnapshot& snapshot) const
    {
        const std::string expected = treeSnapshot(*m_coordinator, *m_system);
        EXPECT_EQ(snapshot.text, expected);
        const std::optional<std::string> envelope = EventEnvelope::wrap(expected);
        ASSERT_TRUE(envelope);
        const std::string spliced = EventEnvelope::wrap(snapshot);
        EXPECT_EQ(spliced, *envelope);
        const json parsed = json::parse(spliced);
        EXPECT_EQ(parsed["version"], 1);
        EXPECT_EQ(parsed["kind"], "practice");
        EXPECT_EQ(json::parse(parsed["payload"].get<std::string>()), json::parse(expected));
    }

    test::TemporaryFolder m_folder;
    std::shared_ptr<HeadlessSystemEnvironment> m_system = std::make_shared<HeadlessSystemEnvironment>(
        utc(2025, 3, 14, 12), UserCalendar::utc(), std::vector<std::string>{"en_GB"});
    std::shared_ptr<const ContentCatalog> m_catalog;
    std::unique_ptr<PracticeCoordinator> m_coordinator;
    std::vector<PondSnapshot> m_published;
};

TEST_F(PracticeCoordinatorSnapshotTest, Snapshot_HoldsTheTwelveMembersAndTheSelectedTopicsInCatalogOrder)
{
    const json snapshot = json::parse(coordinatorWith(practising()).snapshot().text);
    std::vector<std::string> keys;
    for (const auto& [key, value] : snapshot.items())
        keys.push_back(key);
    std::sort(keys.begin(), keys.end());
    EXPECT_EQ(keys,
        (std::vector<std::string>{"backLabel", "bellSoundEnabled", "daysLabel", "daysSuffix", "errorLabel", "language",
            "noticeLabel", "savedLabel", "settingsLabel", "topics", "version", "waterSoundEnabled"}));
    EXPECT_EQ(snapshot["language"], "en");
    EXPECT_EQ(snapshot["waterSoundEnabled"], false);
    EXPECT_EQ(snapshot["bellSoundEnabled"], true);
    EXPECT_EQ(snapshot["savedLabel"], "noticed in en");
    EXPECT_EQ(snapshot["errorLabel"], "saveError in en");
    // The count is replaced in the days label only.
    EXPECT_EQ(snapshot["daysLabel"], "2 days in en");
    EXPECT_EQ(snapshot["backLabel"], "back, not {count}");

    // Only the selected topics, in the catalog's order, grown as of today.
    const json& topics = snapshot["topics"];
    ASSERT_EQ(topics.size(), 3U);
    // The catalog lists the topics in reverse alphabetical order.
    EXPECT_EQ(topics[0]["id"], "phone");
    EXPECT_EQ(topics[1]["id"], "delusion");
    EXPECT_EQ(topics[2]["id"], "alcohol");

    const json& phone = topics[0];
    EXPECT_EQ(phone.size(), 7U);
    EXPECT_EQ(phone["title"], "phone (en)");
    EXPECT_EQ(phone["moments"], 9);
    EXPECT_EQ(phone["growthMoments"], 6);
    EXPECT_EQ(phone["freshness"], 1.0);
    EXPECT_EQ(phone["color"], "#112233");
    EXPECT_EQ(topics[1]["moments"], 0) << "selected, never noticed";
    EXPECT_EQ(topics[1]["growthMoments"], 0);
}

TEST_F(PracticeCoordinatorSnapshotTest, SnapshotAndEnvelope_AreWhatTheJSONLibraryWritesForEveryStateLanguageAndCatalog)
{
    struct Case {
        std::string name;
        PracticeState state;
        json catalog;
    };
    // Before the onboarding, when nothing is published but the panel may ask.
    std::vector<Case> cases = {
        {"nothing selected", PracticeState(), test::coordinatorCatalogDocument()},
        {"three selected", practising(), test::coordinatorCatalogDocument()},
        {"awkward texts", everyTopic("en"), awkwardCatalog()},
        {"awkward texts, in the system's language", everyTopic("system"), awkwardCatalog()},
    };
    // The shipped titles are Cyrillic, Devanagari and Latin with accents.
    for (const std::string& language : PracticeState::languages())
        cases.push_back({"shipped content in " + language, everyTopic(language), shippedCatalog()});

    for (const Case& row : cases) {
        SCOPED_TRACE(row.name);
        PracticeCoordinator& coordinator = coordinatorWith(row.state, row.catalog);
        expectAsWritten(coordinator.snapshot());
        // What the host receives is the same.
        if (row.state.onboarded) {
            ASSERT_FALSE(m_published.empty());
            EXPECT_EQ(m_published.back(), coordinator.snapshot());
        }
    }
}

TEST_F(PracticeCoordinatorSnapshotTest, Snapshot_FollowsChangesOfLanguageStateAndDay)
{
    PracticeCoordinator& coordinator = coordinatorWith(practising(), shippedCatalog());
    const auto published = [this] {
        EXPECT_FALSE(m_published.empty());
        return m_published.empty() ? PondSnapshot() : m_published.back();
    };
    expectAsWritten(published());

    ASSERT_TRUE(coordinator.change([](PracticeState state) {
        state.language = "hi";
        return state;
    }));
    expectAsWritten(published());
    EXPECT_NE(published().text.find(R"("language":"hi")"), std::string::npos);

    ASSERT_TRUE(coordinator.notice("phone"));
    ASSERT_TRUE(coordinator.change([](PracticeState state) {
        state.selected.erase("alcohol");
        state.language = "system";
        return state;
    }));
    expectAsWritten(published());

    // The preferred languages and the day are read at every snapshot.
    m_system->setPreferredLanguages({"ru_RU"});
    m_system->advance(std::chrono::days(3));
    coordinator.refresh();
    expectAsWritten(published());
    EXPECT_NE(published().text.find(R"("language":"ru")"), std::string::npos);
}

} // namespace
} // namespace velmora
