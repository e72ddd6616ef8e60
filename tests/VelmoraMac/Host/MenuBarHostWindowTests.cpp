#include <gtest/gtest.h>

#include "HostFixture.h"
#include "VelmoraMac/Host/PondChromeView.h"

namespace velmora {
namespace {

using test::HostFixture;

constexpr std::uint64_t controlCommand = ModifierFlag::control | ModifierFlag::command;
constexpr Rect defaultFrame{330, 117.5, 780, 640};
constexpr Screen secondScreen{Rect(1440, 0, 1920, 1080), Rect(1440, 0, 1920, 1080)};

class MenuBarHostWindowTest : public HostFixture {
protected:
    // An onboarded host with the pond shown.
    void startWithPond()
    {
        storeOnboarded();
        m_window = addRendererWindow();
        start();
        ASSERT_TRUE(m_window->isVisible());
    }

    void enterFullScreen()
    {
        host().toggleFullScreen();
        runPending();
        ASSERT_TRUE(m_window->isFullScreen());
    }

    [[nodiscard]] bool joinedWindowed() const
    {
        return m_window->parentWindow() == panel() && panel()->childOrdering(*m_window) == WindowOrdering::below;
    }
    [[nodiscard]] bool joinedFullScreen() const
    {
        return panel()->parentWindow() == m_window.get() && m_window->childOrdering(*panel()) == WindowOrdering::above;
    }

    std::shared_ptr<HeadlessWindow> m_window;
};

TEST_F(MenuBarHostWindowTest, Panel_OverThePond_IsJoinedAndEscapeReturnsToThePond)
{
    startWithPond();
    host().settings();

    ASSERT_TRUE(panel());
    EXPECT_TRUE(panel()->isKeyWindow());
    EXPECT_TRUE(joinedWindowed());
    EXPECT_EQ(panel()->frame(), m_window->frame());
    EXPECT_EQ(m_window->mouseEvents(), MouseEvents::ignored);
    EXPECT_TRUE(host().chrome()->isHidden());
    EXPECT_FALSE(host().interactive());

    // Moving the panel carries the pond along.
    panel()->setFrame(Rect(50, 60, 780, 640), FrameDisplay::immediate);
    EXPECT_EQ(m_window->frame(), Rect(50, 60, 780, 640));

    EXPECT_EQ(press(KeyCode::escape, panel()), EventDisposition::consume);
    EXPECT_FALSE(panel()->isVisible());
    EXPECT_EQ(m_window->parentWindow(), nullptr);
    EXPECT_EQ(m_window->mouseEvents(), MouseEvents::accepted);
    EXPECT_FALSE(host().chrome()->isHidden());
    EXPECT_TRUE(host().interactive());
}

TEST_F(MenuBarHostWindowTest, Escape_InEachState)
{
    startWithPond();

    // Full screen: leaves it.
    enterFullScreen();
    EXPECT_EQ(press(KeyCode::escape, m_window.get()), EventDisposition::consume);
    runPending();
    EXPECT_FALSE(m_window->isFullScreen());
    EXPECT_TRUE(m_window->isVisible());

    // Windowed pond: hides.
    EXPECT_EQ(press(KeyCode::escape, m_window.get()), EventDisposition::consume);
    EXPECT_FALSE(m_window->isVisible());
    EXPECT_FALSE(host().visible());

    // Panel alone, not onboarded: the pond is not ready, so the panel stays.
    ASSERT_TRUE(model().change([](PracticeState state) {
        state.onboarded = false;
        return state;
    }));
    host().settings();
    EXPECT_EQ(press(KeyCode::escape, panel()), EventDisposition::consume);
    EXPECT_TRUE(panel()->isVisible());
    EXPECT_FALSE(m_window->isVisible());
}

TEST_F(MenuBarHostWindowTest, ControlCommandF_TogglesFullScreenOnceWhileHeld)
{
    startWithPond();
    m_window->setFrame(Rect(100, 100, 600, 400), FrameDisplay::immediate);

    EXPECT_EQ(press(KeyCode::f, m_window.get(), controlCommand | ModifierFlag::shift), EventDisposition::consume);
    EXPECT_TRUE(host().fullScreenTransition());
    EXPECT_FALSE(host().interactive());
    EXPECT_EQ(press(KeyCode::f, m_window.get(), controlCommand, true), EventDisposition::consume);
    runPending();
    EXPECT_FALSE(host().fullScreenTransition());
    EXPECT_TRUE(m_window->isFullScreen());
    EXPECT_EQ(m_window->frame(), HeadlessWindowSystem::defaultScreen.frame);
    EXPECT_TRUE(host().interactive());

    // The repeats of a held shortcut change nothing.
    EXPECT_EQ(press(KeyCode::f, m_window.get(), controlCommand, true), EventDisposition::consume);
    runPending();
    EXPECT_TRUE(m_window->isFullScreen());

    // Without Control it is an ordinary key.
    EXPECT_EQ(press(KeyCode::f, m_window.get(), ModifierFlag::command), EventDisposition::passOn);

    EXPECT_EQ(press(KeyCode::f, m_window.get(), controlCommand), EventDisposition::consume);
    runPending();
    EXPECT_FALSE(m_window->isFullScreen());
    EXPECT_EQ(m_window->frame(), Rect(100, 100, 600, 400));
}

TEST_F(MenuBarHostWindowTest, ControlCommandF_WithThePanelOpen_BringsThePanelBackInFullScreenAndEscapeReturns)
{
    startWithPond();
    host().settings();
    EXPECT_EQ(press(KeyCode::f, panel(), controlCommand), EventDisposition::consume);
    EXPECT_FALSE(panel()->isVisible());
    runPending();

    EXPECT_TRUE(m_window->isFullScreen());
    EXPECT_FALSE(host().restorePanelAfterFullScreen());
    EXPECT_TRUE(panel()->isVisible());
    EXPECT_TRUE(joinedFullScreen());
    EXPECT_EQ(panel()->frame(), m_window->frame());

    EXPECT_EQ(press(KeyCode::escape, panel()), EventDisposition::consume);
    EXPECT_FALSE(panel()->isVisible());
    EXPECT_EQ(panel()->parentWindow(), nullptr);
    EXPECT_TRUE(m_window->isFullScreen());
    EXPECT_TRUE(host().interactive());
}

TEST_F(MenuBarHostWindowTest, Hide_InFullScreen_LeavesFullScreenFirstAndReopensWhereTheUserPutIt)
{
    startWithPond();
    const Rect windowed(200, 100, 700, 500);
    m_window->setFrame(windowed, FrameDisplay::immediate);
    enterFullScreen();

    host().hide();
    EXPECT_TRUE(host().fullScreenTransition());
    EXPECT_TRUE(m_window->isVisible());
    // Nothing more happens while the pond is on its way.
    host().hide();
    host().toggleFullScreen();
    runPending();

    EXPECT_FALSE(m_window->isFullScreen());
    EXPECT_FALSE(m_window->isVisible());
    EXPECT_FALSE(host().hideAfterFullScreen());

    statusItem().click(InputEventType::leftMouseUp);
    EXPECT_TRUE(m_window->isVisible());
    EXPECT_FALSE(m_window->isFullScreen());
    EXPECT_EQ(m_window->frame(), windowed);
}

// The desktop's end-to-end run sleeps the machine; the screens going to
// sleep hides as well.
TEST_F(MenuBarHostWindowTest, Sleep_InFullScreen_HidesOnceThePondHasLeft)
{
    for (const SystemNotification sleep :
        {SystemNotification::workspaceWillSleep, SystemNotification::workspaceScreensDidSleep}) {
        m_host.reset();
        m_platform = HeadlessShellPlatform::create(m_mainThread, m_system);
        startWithPond();
        host().settings();
        enterFullScreen();
        ASSERT_TRUE(panel()->isVisible());

        notifications().post(sleep);
        runPending();
        EXPECT_FALSE(m_window->isVisible());
        EXPECT_FALSE(panel()->isVisible());
        EXPECT_FALSE(host().restorePanelAfterFullScreen());
    }
}

TEST_F(MenuBarHostWindowTest, Miniaturize_ThePondStopsInputUntilItComesBack_AndThePanelTakesThePondAlong)
{
    startWithPond();
    press(KeyCode::w, m_window.get());
    ASSERT_EQ(navigation(), Point(0, 1));
    takeEvent();

    m_window->pressButton(WindowButton::miniaturize);
    EXPECT_FALSE(host().visible());
    EXPECT_FALSE(host().interactive());
    EXPECT_TRUE(host().keyboardState().empty());
    EXPECT_EQ(host().lastFrame(), m_window->frame());

    m_window->deminiaturize();
    EXPECT_TRUE(host().visible());
    EXPECT_TRUE(takeEvent()) << "the pond is refreshed when it comes back";

    // From the Dock through the status item.
    m_window->miniaturize();
    host().open();
    EXPECT_FALSE(m_window->isMiniaturized());
    EXPECT_TRUE(host().interactive());

    host().settings();
    panel()->miniaturize();
    EXPECT_FALSE(m_window->isVisible());
    EXPECT_FALSE(host().visible());
    panel()->deminiaturize();
    EXPECT_TRUE(m_window->isVisible());
    EXPECT_TRUE(joinedWindowed());
}

// Each change of the screens places the remembered frame anew.
TEST_F(MenuBarHostWindowTest, ScreenChange_PlacesTheFrameOnTheScreenThatHoldsItOrTheMainOne)
{
    struct ScreenCase {
        const char* name;
        std::vector<Screen> screens;
        std::optional<std::size_t> mainIndex;
        Rect expected;
    };
    const ScreenCase cases[] = {
        {"centre on the second screen", {HeadlessWindowSystem::defaultScreen, secondScreen}, 0,
            Rect(1600, 200, 780, 640)},
        {"second screen removed: moved in on the main one", {HeadlessWindowSystem::defaultScreen}, 0,
            Rect(652, 200, 780, 640)},
        {"no main screen: the first", {Screen{Rect(0, 0, 700, 500), Rect(0, 0, 700, 500)}}, std::nullopt,
            Rect(8, 8, 684, 484)},
        {"no screen at all: where it was", {}, std::nullopt, Rect(1600, 200, 780, 640)},
    };
    startWithPond();
    for (const ScreenCase& c : cases) {
        SCOPED_TRACE(c.name);
        m_window->setFrame(Rect(1600, 200, 780, 640), FrameDisplay::immediate);
        host().rememberFrame();
        windows().setScreens(c.screens, c.mainIndex);
        EXPECT_EQ(host().targetFrame(), c.expected);
        EXPECT_EQ(m_window->frame(), c.expected);
        EXPECT_EQ(host().lastFrame(), c.expected);
    }
}

TEST_F(MenuBarHostWindowTest, Panel_WithoutRendererWindow_WorksAlone)
{
    storeOnboarded();
    start();
    host().settings();
    ASSERT_TRUE(panel());
    EXPECT_EQ(panel()->frame(), defaultFrame);

    // The pond is "shown" with no window to show: the panel leaves.
    host().showPond();
    EXPECT_FALSE(panel()->isVisible());
    EXPECT_FALSE(host().interactive());
}

} // namespace
} // namespace velmora
