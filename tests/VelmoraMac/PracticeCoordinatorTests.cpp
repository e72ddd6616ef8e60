#include <filesystem>
#include <memory>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "CoordinatorTestDoubles.h"
#include "VelmoraMac/Platform/Headless/HeadlessSystemEnvironment.h"
#include "VelmoraMac/PracticeCoordinator.h"
#include "tests/VelmoraCore/CoreTestSupport.h"
#include "tests/VelmoraCore/TemporaryFolder.h"

namespace velmora {
namespace {

namespace fs = std::filesystem;
using test::fileBytes;
using test::utc;
using test::writeFileBytes;

PracticeState onboarded(bool hintSeen = true)
{
    PracticeState state;
    state.onboarded = true;
    state.selected = {"phone", "money"};
    state.hintSeen = hintSeen;
    return state;
}

class PracticeCoordinatorTest : public testing::Test {
protected:
    PracticeCoordinatorTest()
    {
        m_system->setPreferredLanguages({"fr_FR"});
        m_system->setCalendar(UserCalendar::inTimeZone("Europe/Helsinki"));
        m_system->setNow(utc(2025, 3, 14, 22, 30)); // 00:30 on the 15th in Helsinki
        rebuild();
    }

    // A coordinator over the file as it now is, with the host's callbacks counted.
    void rebuild()
    {
        m_coordinator.reset();
        m_coordinator = std::make_unique<PracticeCoordinator>(
            m_catalog, std::make_unique<PracticeStore>(url()), m_login, m_reminders, [this] { ++m_settingsOpened; },
            m_system);
        m_coordinator->setOnSnapshot([this](const PondSnapshot& snapshot) { m_snapshots.push_back(snapshot.text); });
        m_coordinator->setOnEnterPond([this] { ++m_pondEntered; });
        m_coordinator->setOnOpenPanel([this] { ++m_panelOpened; });
        m_coordinator->setOnChromeChanged([this] { ++m_chromeChanged; });
    }

    fs::path url() const { return m_folder / "app.velmora.mac" / "practice.json"; }

    void saveBeforeStart(const PracticeState& state)
    {
        fs::create_directories(url().parent_path());
        writeFileBytes(url(), state.toJSON());
    }

    PracticeCoordinator& coordinator() { return *m_coordinator; }

    void loadOnboarded()
    {
        saveBeforeStart(onboarded());
        rebuild();
        coordinator().load();
    }

    test::TemporaryFolder m_folder;
    std::shared_ptr<const ContentCatalog> m_catalog
        = std::make_shared<const ContentCatalog>(ContentCatalog::fromJSON(test::coordinatorCatalogDocument().dump()));
    std::shared_ptr<test::RecordingReminders> m_reminders = std::make_shared<test::RecordingReminders>();
    std::shared_ptr<test::FakeLoginLaunch> m_login = std::make_shared<test::FakeLoginLaunch>();
    std::shared_ptr<HeadlessSystemEnvironment> m_system = std::make_shared<HeadlessSystemEnvironment>();
    std::unique_ptr<PracticeCoordinator> m_coordinator;
    std::vector<std::string> m_snapshots;
    int m_pondEntered = 0;
    int m_panelOpened = 0;
    int m_chromeChanged = 0;
    int m_settingsOpened = 0;
};

TEST_F(PracticeCoordinatorTest, Load_ChoosesThePageAndRefreshesEverythingFromTheStoredState)
{
    struct PageCase {
        const char* name = nullptr;
        std::optional<PracticeState> stored;
        const char* page = nullptr;
    };
    PracticeState chosen;
    chosen.selected = {"phone"};
    const PageCase cases[] = {
        {"fresh install", std::nullopt, "welcome"},
        {"topics chosen, not onboarded", chosen, "loginIntro"},
        {"onboarded", onboarded(), "settings"},
    };
    for (const PageCase& c : cases) {
        SCOPED_TRACE(c.name);
        fs::remove(url());
        if (c.stored)
            saveBeforeStart(*c.stored);
        rebuild();
        m_snapshots.clear();
        m_reminders->scheduled.clear();
        m_chromeChanged = 0;
        m_login->status = 2;
        coordinator().load();
        EXPECT_EQ(coordinator().page().get(), c.page);
        EXPECT_EQ(m_snapshots.size(), c.stored && c.stored->onboarded ? 1U : 0U)
            << "the pond shows only after onboarding";
        // Every successful load refreshes the reminders, the chrome and the login status.
        ASSERT_EQ(m_reminders->scheduled.size(), 1U);
        EXPECT_EQ(m_reminders->scheduled[0].body, "dailyGentle in fr");
        EXPECT_EQ(m_reminders->scheduled[0].state, coordinator().state().get());
        EXPECT_EQ(m_chromeChanged, 1);
        EXPECT_TRUE(coordinator().loginRequiresApproval().get());
        EXPECT_EQ(coordinator().state().get(), c.stored.value_or(PracticeState()));
    }
}

TEST_F(PracticeCoordinatorTest, FailedLoad_ShowsTheLocalizedErrorAndBlocksEveryChangeUntilALoadSucceeds)
{
    saveBeforeStart(onboarded());
    const std::string good = fileBytes(url());
    writeFileBytes(url(), "{\"version\":");
    rebuild();
    coordinator().load();

    EXPECT_TRUE(coordinator().loadFailed().get());
    EXPECT_EQ(coordinator().errorText().get(), "loadError in fr");
    EXPECT_EQ(coordinator().page().get(), "welcome");
    EXPECT_TRUE(m_reminders->scheduled.empty()) << "no refresh after a failed load";
    EXPECT_EQ(m_chromeChanged, 0);

    EXPECT_FALSE(coordinator().change([](PracticeState state) {
        state.hintSeen = true;
        return state;
    }));
    EXPECT_FALSE(coordinator().notice("phone"));
    coordinator().refresh();
    EXPECT_TRUE(m_reminders->scheduled.empty());
    EXPECT_EQ(m_panelOpened, 0);
    EXPECT_EQ(fileBytes(url()), "{\"version\":") << "a file that could not be read is never overwritten";

    writeFileBytes(url(), good);
    coordinator().load();
    EXPECT_FALSE(coordinator().loadFailed().get());
    EXPECT_FALSE(coordinator().errorText().get());
    EXPECT_EQ(coordinator().page().get(), "settings");
}

TEST_F(PracticeCoordinatorTest, ChangeAndNotice_SaveBeforeTheyPublishThenRefreshAndCountTheUsersLocalDay)
{
    loadOnboarded();
    coordinator().setErrorText("an earlier error");
    std::optional<std::string> fileWhenPublished;
    const Subscription subscription
        = coordinator().state().observe([&](const PracticeState&) { fileWhenPublished = fileBytes(url()); });
    // The snapshot is built while the write waits for the device, but only
    // handed on once the file is in place.
    std::optional<std::string> fileWhenSnapshotHandedOn;
    coordinator().setOnSnapshot([&](const PondSnapshot& snapshot) {
        m_snapshots.push_back(snapshot.text);
        fileWhenSnapshotHandedOn = fileBytes(url());
    });

    EXPECT_TRUE(coordinator().change([](PracticeState state) {
        state.bellSoundEnabled = false;
        return state;
    }));

    EXPECT_FALSE(coordinator().state().get().bellSoundEnabled);
    ASSERT_TRUE(fileWhenPublished);
    EXPECT_EQ(PracticeState::fromJSON(*fileWhenPublished), coordinator().state().get())
        << "published only once on disk";
    ASSERT_TRUE(fileWhenSnapshotHandedOn);
    EXPECT_EQ(PracticeState::fromJSON(*fileWhenSnapshotHandedOn), coordinator().state().get());
    EXPECT_EQ(nlohmann::json::parse(m_snapshots.back())["bellSoundEnabled"], false) << "the snapshot of the new state";
    EXPECT_FALSE(coordinator().errorText().get());
    EXPECT_EQ(m_snapshots.size(), 2U);
    EXPECT_EQ(m_reminders->scheduled.size(), 2U);
    EXPECT_FALSE(m_reminders->scheduled.back().state.bellSoundEnabled);

    // 22:30 UTC on the 14th is already the 15th in Helsinki.
    EXPECT_TRUE(coordinator().notice("phone"));
    EXPECT_EQ(coordinator().state().get().lotuses.at("phone"), LotusProgress(1, "2025-03-15", 1));
    EXPECT_EQ(coordinator().state().get().practiceDays, PracticeState::StringSet{"2025-03-15"});
}

TEST_F(PracticeCoordinatorTest, FailedChange_KeepsStateAndFileShowsSaveErrorAndOpensThePanelOnce)
{
    loadOnboarded();
    const std::string saved = fileBytes(url());

    EXPECT_FALSE(coordinator().notice("alcohol")) << "not selected";
    EXPECT_EQ(coordinator().errorText().get(), "saveError in fr");
    EXPECT_EQ(m_panelOpened, 1);
    EXPECT_EQ(coordinator().state().get(), onboarded());
    EXPECT_EQ(fileBytes(url()), saved);
    EXPECT_EQ(m_snapshots.size(), 1U) << "nothing republished";

    EXPECT_FALSE(coordinator().change([](PracticeState state) {
        state.reminderMinute = 60;
        return state;
    }));
    EXPECT_EQ(m_panelOpened, 2);
    EXPECT_EQ(fileBytes(url()), saved);
}

TEST_F(PracticeCoordinatorTest, Select_FollowsTheOnboardingFlow)
{
    coordinator().load();
    coordinator().select({});
    EXPECT_EQ(m_reminders->scheduled.size(), 1U) << "an empty choice changes nothing";
    EXPECT_EQ(m_panelOpened, 0);

    coordinator().setPage("selection");
    coordinator().select({"phone", "not-a-topic"});
    EXPECT_EQ(coordinator().page().get(), "selection") << "a choice that cannot be saved stays on its page";
    EXPECT_EQ(coordinator().errorText().get(), "saveError in fr");
    EXPECT_TRUE(coordinator().state().get().selected.empty());
    m_panelOpened = 0;

    coordinator().select({"phone", "craving"});
    EXPECT_EQ(coordinator().state().get().selected, (PracticeState::StringSet{"craving", "phone"}));
    EXPECT_EQ(coordinator().page().get(), "loginIntro");
    EXPECT_EQ(m_panelOpened, 1);

    coordinator().finishLoginIntro();
    EXPECT_TRUE(coordinator().state().get().onboarded);
    EXPECT_EQ(coordinator().page().get(), "hint") << "the hint comes before the pond";
    EXPECT_EQ(m_panelOpened, 2);
    EXPECT_EQ(m_pondEntered, 0);

    coordinator().dismissExplanation();
    EXPECT_TRUE(coordinator().state().get().hintSeen);
    EXPECT_EQ(m_pondEntered, 1);

    coordinator().select({"money"});
    EXPECT_EQ(coordinator().state().get().selected, PracticeState::StringSet{"money"});
    EXPECT_EQ(m_pondEntered, 2) << "an onboarded user goes straight back to the pond";
    EXPECT_EQ(m_panelOpened, 2);
}

TEST_F(PracticeCoordinatorTest, SetReminder_SwitchesOnOnlyWhenGrantedAndReportsARefusal)
{
    loadOnboarded();

    coordinator().setReminder(true);
    EXPECT_FALSE(coordinator().state().get().reminderEnabled) << "nothing before the answer";
    m_reminders->answerRequest(true);
    EXPECT_TRUE(coordinator().state().get().reminderEnabled);
    EXPECT_FALSE(coordinator().reminderPermissionDenied().get());

    coordinator().setReminder(false);
    EXPECT_FALSE(coordinator().state().get().reminderEnabled);
    EXPECT_TRUE(m_reminders->pendingRequests.empty()) << "switching off needs no permission";

    // A refusal clears the permission text, and only that text.
    coordinator().setErrorText("permissionDenied in fr");
    coordinator().setReminder(true);
    m_reminders->answerRequest(false);
    EXPECT_TRUE(coordinator().reminderPermissionDenied().get());
    EXPECT_FALSE(coordinator().state().get().reminderEnabled);
    EXPECT_FALSE(coordinator().errorText().get());
    coordinator().setErrorText("saveError in fr");
    coordinator().setReminder(true);
    m_reminders->answerRequest(false);
    EXPECT_EQ(coordinator().errorText().get(), "saveError in fr");
}

TEST_F(PracticeCoordinatorTest, PermissionAnswer_AfterTheCoordinatorIsGone_DoesNothing)
{
    coordinator().load();
    coordinator().setReminder(true);
    m_coordinator.reset();
    m_reminders->answerRequest(true);
    EXPECT_FALSE(fs::exists(url()));
    EXPECT_FALSE(m_reminders->onPermissionDenied()) << "the coordinator takes its callback with it";
}

TEST_F(PracticeCoordinatorTest, LanguageIndex_FollowsTheStoredChoiceThenTheSystem)
{
    struct LanguageCase {
        const char* stored;
        std::vector<std::string> preferred;
        std::size_t index;
    };
    const LanguageCase cases[] = {
        {"system", {"fr_FR"}, 2},
        {"system", {"de_DE"}, 1},
        {"pi", {"fr_FR"}, 6},
        {"ru", {}, 0},
    };
    for (const LanguageCase& c : cases) {
        PracticeState state;
        state.language = c.stored;
        saveBeforeStart(state);
        m_system->setPreferredLanguages(c.preferred);
        rebuild();
        coordinator().load();
        EXPECT_EQ(coordinator().languageIndex(), c.index) << c.stored;
    }
}

} // namespace
} // namespace velmora
