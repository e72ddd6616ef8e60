#include <memory>

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

class PracticeCoordinatorSnapshotTest : public testing::Test {
protected:
    // A coordinator whose state is `state`, saved and loaded as at start-up.
    PracticeCoordinator& coordinatorWith(const PracticeState& state, const nlohmann::json& catalog = test::coordinatorCatalogDocument())
    {
        m_catalog = std::make_shared<const ContentCatalog>(ContentCatalog::fromJSON(catalog.dump()));
        auto store = std::make_unique<PracticeStore>(m_folder / "practice.json");
        store->load();
        store->update([&state](const PracticeState&) { return state; });
        m_coordinator = std::make_unique<PracticeCoordinator>(m_catalog, std::move(store), std::make_shared<test::FakeLoginLaunch>(), std::make_shared<test::RecordingReminders>(), nullptr, m_system);
        m_coordinator->load();
        return *m_coordinator;
    }

    test::TemporaryFolder m_folder;
    std::shared_ptr<HeadlessSystemEnvironment> m_system = std::make_shared<HeadlessSystemEnvironment>(utc(2025, 3, 14, 12), UserCalendar::utc(), std::vector<std::string>{"en_GB"});
    std::shared_ptr<const ContentCatalog> m_catalog;
    std::unique_ptr<PracticeCoordinator> m_coordinator;
};

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

TEST_F(PracticeCoordinatorSnapshotTest, Snapshot_HoldsTheTwelveMembersAndTheSelectedTopicsInCatalogOrder)
{
    const json snapshot = json::parse(coordinatorWith(practising()).snapshot());
    std::vector<std::string> keys;
    for (const auto& [key, value] : snapshot.items())
        keys.push_back(key);
    std::sort(keys.begin(), keys.end());
    EXPECT_EQ(keys, (std::vector<std::string>{"backLabel", "bellSoundEnabled", "daysLabel", "daysSuffix", "errorLabel", "language", "noticeLabel", "savedLabel", "settingsLabel", "topics", "version", "waterSoundEnabled"}));
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

    // The envelope itself is read through the exported interface; text that
    // is not UTF-8 is dropped there rather than sent half-escaped.
    EXPECT_EQ(EventEnvelope::wrap("caf\xC3"), std::nullopt);
}

} // namespace
} // namespace velmora
