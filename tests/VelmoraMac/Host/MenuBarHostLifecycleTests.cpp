#include <chrono>
#include <string>

#include <gtest/gtest.h>

#include "HostFixture.h"
#include "VelmoraMac/Host/PondChromeView.h"
#include "VelmoraMac/Platform/Headless/HeadlessPowerAssertionRegistry.h"

namespace velmora {
namespace {

using namespace std::chrono_literals;
using test::HostFixture;

class MenuBarHostLifecycleTest : public HostFixture { };

TEST_F(MenuBarHostLifecycleTest, Construction_WithoutButtonOrIcon_DegradesQuietly)
{
    m_platform->statusBar().withholdButtons();
    m_platform->eventMonitors().refuse(0x66);
    storeOnboarded();
    addRendererWindow();
    MenuBarHost& host = start();

    EXPECT_EQ(statusItem().button(), nullptr);
    EXPECT_EQ(m_platform->eventMonitors().monitorCount(), 2U);
    EXPECT_TRUE(host.visible());
}

TEST_F(MenuBarHostLifecycleTest, Start_WithRendererWindow_ShowsWhatTheStateCallsFor)
{
    struct StartCase {
        const char* name = nullptr;
        std::optional<PracticeState> stored;
        const char* storedBytes = nullptr;
        bool pondShown = false;
        bool panelShown = false;
    };
    PracticeState hintPending = onboardedState();
    hintPending.hintSeen = false;
    const StartCase cases[] = {
        {"fresh install", std::nullopt, nullptr, false, true},
        {"onboarded", onboardedState(), nullptr, true, false},
        // The one-time hint is a panel page shown over the pond.
        {"hint not seen", hintPending, nullptr, true, true},
        {"unreadable file", std::nullopt, "{not json", false, true},
    };
    for (const StartCase& c : cases) {
        SCOPED_TRACE(c.name);
        std::filesystem::remove_all(m_folder.path() / "app.velmora.mac");
        if (c.stored)
            store(*c.stored);
        if (c.storedBytes != nullptr) {
            std::filesystem::create_directories(stateFile().parent_path());
            test::writeFileBytes(stateFile(), c.storedBytes);
        }
        m_host.reset();
        m_platform = HeadlessShellPlatform::create(m_mainThread, m_system);
        const auto window = addRendererWindow();
        MenuBarHost& host = start();

        ASSERT_EQ(host.pond().get(), window.get());
        EXPECT_EQ(window->isVisible(), c.pondShown);
        EXPECT_EQ(host.visible(), c.pondShown);
        EXPECT_EQ(panel() != nullptr && panel()->isVisible(), c.panelShown);
        EXPECT_EQ(host.interactive(), c.pondShown && !c.panelShown);
        ASSERT_TRUE(host.chrome());
        EXPECT_EQ(host.chrome()->isHidden(), c.panelShown);
    }
}

TEST_F(MenuBarHostLifecycleTest, WindowAppearingAfterStart_IsAdoptedByTheNextTickIfItHasContent)
{
    storeOnboarded();
    const auto bare = windows().addWindowWithoutContent(test::rendererFrame);
    start();
    // The panel is ours, never the pond.
    host().settings();
    advance(2500ms);
    EXPECT_FALSE(host().pond());
    host().showPond();

    const auto window = addRendererWindow();
    advance(500ms);
    EXPECT_EQ(host().pond().get(), window.get());
    EXPECT_TRUE(window->isKeyWindow());
    EXPECT_TRUE(host().interactive());
}

TEST_F(MenuBarHostLifecycleTest, LaunchAtLogin_WithTheWindowComingLater_KeepsItHiddenUntilAReminderIsClicked)
{
    storeOnboarded();
    start();
    application().deliverLaunchEvent(LaunchEvent{"oapp", "lgit"});
    const auto window = addRendererWindow();
    advance(1s);
    EXPECT_EQ(host().pond().get(), window.get());
    EXPECT_FALSE(window->isVisible());
    EXPECT_TRUE(host().launchedAtLogin());
    m_reminders->onOpen()();
    EXPECT_TRUE(window->isVisible());
}

TEST_F(MenuBarHostLifecycleTest, NotOnboarded_LeftClickTogglesThePanelAndSettingsOpensTheWelcomePage)
{
    addRendererWindow();
    start();
    ASSERT_TRUE(panel() && panel()->isVisible());

    statusItem().click(InputEventType::leftMouseUp);
    EXPECT_FALSE(panel()->isVisible());
    statusItem().click(InputEventType::leftMouseUp);
    EXPECT_TRUE(panel()->isVisible());
    EXPECT_FALSE(host().visible());

    model().setPage("language");
    host().settings();
    EXPECT_EQ(model().page().get(), "welcome");
}

TEST_F(MenuBarHostLifecycleTest, RightClick_PopsUpTheMenuWhoseItemsOpenSettingsAndQuit)
{
    storeOnboarded();
    const auto window = addRendererWindow();
    start();

    statusItem().click(InputEventType::rightMouseUp);
    ASSERT_EQ(statusItem().poppedMenus().size(), 1U);
    const Menu& menu = statusItem().poppedMenus()[0];
    ASSERT_EQ(menu.items.size(), 3U);
    // Detached again, or the next left click would open the menu.
    EXPECT_FALSE(statusItem().menu());
    statusItem().click(InputEventType::leftMouseUp);
    EXPECT_EQ(statusItem().poppedMenus().size(), 1U);
    EXPECT_FALSE(window->isVisible());

    menu.items[0].action();
    EXPECT_EQ(model().page().get(), "settings");
    EXPECT_TRUE(panel()->isKeyWindow());
    menu.items[2].action();
    EXPECT_EQ(application().terminations(), 1);
}

TEST_F(MenuBarHostLifecycleTest, TickAndWaking_RefreshOnceADayAndTheTickLowersAssertionsEverySecond)
{
    storeOnboarded();
    m_system->setNow(test::utc(2025, 3, 14, 21, 59, 58)); // 23:59:58 in Helsinki
    start();
    takeEvent();
    const int queries = m_platform->powerAssertions().queryCount();

    advance(1s);
    EXPECT_EQ(host().lastDay(), "2025-03-14");
    EXPECT_TRUE(takeEvent()) << "the first tick always refreshes";

    m_system->advance(1s);
    advance(1s);
    EXPECT_FALSE(takeEvent());
    // Waking may be on another day: no waiting for the tick.
    notifications().post(SystemNotification::workspaceDidWake);
    EXPECT_TRUE(takeEvent());

    m_system->advance(1s);
    advance(1s);
    EXPECT_EQ(host().lastDay(), "2025-03-15");
    EXPECT_TRUE(takeEvent());
    EXPECT_EQ(m_platform->powerAssertions().queryCount(), queries + 3);
}

TEST_F(MenuBarHostLifecycleTest, Snapshots_ReplaceTheQueueAndTheChromeFollowsTheState)
{
    storeOnboarded();
    addRendererWindow();
    start();
    ASSERT_TRUE(host().chrome());
    EXPECT_EQ(host().chrome()->daysText(), "Days of practice: 2");

    host().open();
    host().open();
    EXPECT_EQ(host().events().size(), 1U);
    const std::string envelope = host().events().front();

    ASSERT_TRUE(model().notice("phone"));
    EXPECT_EQ(host().chrome()->daysText(), "Days of practice: 3");
    EXPECT_EQ(host().events().size(), 1U);
    EXPECT_NE(host().events().front(), envelope);

    ASSERT_TRUE(model().change([](PracticeState state) {
        state.language = "fr";
        return state;
    }));
    EXPECT_EQ(host().chrome()->gearAccessibilityLabel(), model().text("settings"));
    EXPECT_NE(host().chrome()->gearAccessibilityLabel(), "Settings");
}

TEST_F(MenuBarHostLifecycleTest, Gear_OpensSettingsAndOtherClicksReachThePond)
{
    storeOnboarded();
    const auto window = addRendererWindow();
    start();
    HeadlessContentView& content = *window->headlessContentView();
    const Rect bounds = content.bounds();
    // Window coordinates grow upwards; the gear sits at the top right.
    const Point gear{bounds.width() - 18 - 24, bounds.height() - 32};
    EXPECT_FALSE(content.click({bounds.width() / 2, bounds.height() / 2}));

    EXPECT_TRUE(content.click(gear));
    EXPECT_EQ(model().page().get(), "settings");
    EXPECT_FALSE(content.click(gear)) << "a hidden chrome takes no clicks";
}

TEST_F(MenuBarHostLifecycleTest, Callbacks_DoNothingOnceTheHostIsGone)
{
    storeOnboarded();
    const auto window = addRendererWindow();
    start();
    m_host.reset();

    statusItem().click(InputEventType::leftMouseUp);
    notifications().post(SystemNotification::workspaceWillSleep);
    EXPECT_EQ(dispatch(key(InputEventType::keyDown, KeyCode::escape, window.get())), EventDisposition::passOn);
    application().deliverLaunchEvent(LaunchEvent{"rapp", std::nullopt});
    ASSERT_TRUE(model().notice("phone"));
    advance(2s);
    EXPECT_TRUE(window->isVisible());
}

} // namespace
} // namespace velmora
