#include <memory>
#include <vector>

#include <gtest/gtest.h>

#include "VelmoraMac/Platform/Headless/HeadlessSystemNotifications.h"
#include "VelmoraMac/Platform/Headless/HeadlessWindow.h"
#include "VelmoraMac/Platform/Headless/HeadlessWindowSystem.h"
#include "VelmoraMac/Platform/Headless/ManualMainThread.h"
#include "VelmoraMac/Platform/WindowContent.h"

namespace velmora {
namespace {

// Records which window each notification was about.
struct Heard {
    SystemNotification notification;
    Window* window;

    friend bool operator==(const Heard&, const Heard&) = default;
};

class HeadlessWindowSystemTest : public testing::Test {
protected:
    HeadlessWindowSystemTest()
    {
        for (const SystemNotification notification : {
                 SystemNotification::windowWillMiniaturize, SystemNotification::windowDidDeminiaturize,
                 SystemNotification::windowDidResize, SystemNotification::windowWillEnterFullScreen,
                 SystemNotification::windowWillExitFullScreen, SystemNotification::windowDidEnterFullScreen,
                 SystemNotification::windowDidExitFullScreen, SystemNotification::windowDidResignKey,
                 SystemNotification::applicationDidChangeScreenParameters}) {
            m_tokens.push_back(m_notifications->addObserver(notification, [this, notification](Window* window) {
                m_heard.push_back({notification, window});
            }));
        }
    }

    std::vector<Heard> heard() { return std::exchange(m_heard, {}); }

    std::shared_ptr<ManualMainThread> m_mainThread = std::make_shared<ManualMainThread>();
    std::shared_ptr<HeadlessSystemNotifications> m_notifications = std::make_shared<HeadlessSystemNotifications>();
    std::shared_ptr<HeadlessWindowSystem> m_system = std::make_shared<HeadlessWindowSystem>(m_mainThread, m_notifications);
    std::vector<std::unique_ptr<PlatformToken>> m_tokens;
    std::vector<Heard> m_heard;
};

TEST_F(HeadlessWindowSystemTest, FullScreen_WillDuringTheCall_DidOnTheMainLoop)
{
    const auto window = m_system->addWindow(Rect(100, 100, 800, 600));
    window->toggleFullScreen();
    EXPECT_EQ(heard(), (std::vector<Heard>{{SystemNotification::windowWillEnterFullScreen, window.get()}}));
    EXPECT_FALSE(window->isFullScreen());
    EXPECT_TRUE(window->inFullScreenTransition());
    // A second request during the transition is dropped, as the animation
    // already runs.
    window->toggleFullScreen();

    m_mainThread->runPending();
    EXPECT_TRUE(window->isFullScreen());
    EXPECT_EQ(window->styleMask() & WindowAttributes::fullScreen, WindowAttributes::fullScreen);
    EXPECT_EQ(window->frame(), HeadlessWindowSystem::defaultScreen.frame);
    EXPECT_EQ(window->contentView()->bounds().size, Size(1440, 900));
    EXPECT_EQ(heard(), (std::vector<Heard>{{SystemNotification::windowDidResize, window.get()}, {SystemNotification::windowDidEnterFullScreen, window.get()}}));

    window->toggleFullScreen();
    m_mainThread->runPending();
    EXPECT_FALSE(window->isFullScreen());
    EXPECT_EQ(window->frame(), Rect(100, 100, 800, 600));
    EXPECT_EQ(heard().back(), (Heard{SystemNotification::windowDidExitFullScreen, window.get()}));
}

TEST_F(HeadlessWindowSystemTest, FullScreenBit_IsTheWindowSystemsAlone)
{
    const auto window = m_system->addWindow(Rect(0, 0, 10, 10));
    WindowAttributes attributes;
    attributes.styleMask = 15 | WindowAttributes::fullScreen;
    window->setAttributes(attributes);
    EXPECT_FALSE(window->isFullScreen());
    EXPECT_EQ(window->attributes().styleMask, 15U);
}

TEST_F(HeadlessWindowSystemTest, KeyWindow_IsOnlyOneAndResignsWhenLeaving)
{
    const auto first = m_system->addWindow(Rect(0, 0, 10, 10));
    const auto second = m_system->addWindow(Rect(0, 0, 10, 10));
    first->makeKeyAndOrderFront();
    EXPECT_TRUE(first->isKeyWindow());
    EXPECT_EQ(m_system->windows().front(), first);

    second->makeKeyAndOrderFront();
    EXPECT_FALSE(first->isKeyWindow());
    EXPECT_TRUE(second->isKeyWindow());
    EXPECT_EQ(heard(), (std::vector<Heard>{{SystemNotification::windowDidResignKey, first.get()}}));

    second->miniaturize();
    EXPECT_EQ(heard(), (std::vector<Heard>{{SystemNotification::windowWillMiniaturize, second.get()}, {SystemNotification::windowDidResignKey, second.get()}}));
    EXPECT_FALSE(second->isVisible());
    // From the Dock only by deminiaturizing.
    second->makeKeyAndOrderFront();
    EXPECT_EQ(m_system->keyWindow(), nullptr);
    second->deminiaturize();
    EXPECT_TRUE(second->isVisible());
    EXPECT_EQ(heard(), (std::vector<Heard>{{SystemNotification::windowDidDeminiaturize, second.get()}}));

    first->makeKeyAndOrderFront();
    first->orderOut();
    EXPECT_EQ(m_system->keyWindow(), nullptr);
}

TEST_F(HeadlessWindowSystemTest, Children_MoveAndOrderWithTheirParent)
{
    const auto parent = m_system->createPanel(Rect(0, 0, 400, 300), WindowAttributes());
    const auto child = m_system->addWindow(Rect(0, 0, 400, 300));
    parent->orderFront();
    parent->addChildWindow(*child, WindowOrdering::below);
    EXPECT_EQ(child->parentWindow(), parent.get());
    EXPECT_TRUE(child->isVisible());

    heard();
    parent->setFrame(Rect(50, 20, 400, 300), FrameDisplay::immediate);
    EXPECT_EQ(child->frame(), Rect(50, 20, 400, 300));
    EXPECT_TRUE(heard().empty()) << "a move is no resize";

    parent->setFrame(Rect(50, 20, 500, 300), FrameDisplay::immediate);
    EXPECT_EQ(child->frame(), Rect(50, 20, 400, 300)) << "children are moved, not resized";
    EXPECT_EQ(heard(), (std::vector<Heard>{{SystemNotification::windowDidResize, parent.get()}}));

    parent->orderOut();
    EXPECT_FALSE(child->isVisible());
    parent->orderFront();
    EXPECT_TRUE(child->isVisible());

    // Joining elsewhere leaves the old parent.
    const auto other = m_system->createPanel(Rect(0, 0, 10, 10), WindowAttributes());
    other->addChildWindow(*child, WindowOrdering::above);
    EXPECT_EQ(child->parentWindow(), other.get());
    parent->orderOut();
    EXPECT_TRUE(child->isOrderedIn());
    other->removeChildWindow(*child);
    EXPECT_EQ(child->parentWindow(), nullptr);
}

TEST_F(HeadlessWindowSystemTest, Buttons_RunTheirActionOrTheStandardBehaviour)
{
    const auto window = m_system->addWindow(Rect(0, 0, 10, 10));
    window->orderFront();
    int closes = 0;
    window->setButtonAction(WindowButton::close, [&closes] { ++closes; });
    window->pressButton(WindowButton::close);
    EXPECT_EQ(closes, 1);
    EXPECT_TRUE(window->isVisible());

    window->setButtonAction(WindowButton::close, nullptr);
    window->pressButton(WindowButton::close);
    EXPECT_FALSE(window->isVisible());
    window->pressButton(WindowButton::zoom);
    EXPECT_TRUE(window->inFullScreenTransition());
}

TEST_F(HeadlessWindowSystemTest, Screens_ReportTheirChangesAndTheMainOne)
{
    EXPECT_EQ(m_system->mainScreen(), HeadlessWindowSystem::defaultScreen);
    const Screen other{Rect(1440, 0, 800, 600), Rect(1440, 0, 800, 580)};
    m_system->setScreens({HeadlessWindowSystem::defaultScreen, other}, 1);
    EXPECT_EQ(m_system->mainScreen(), other);
    EXPECT_EQ(heard(), (std::vector<Heard>{{SystemNotification::applicationDidChangeScreenParameters, nullptr}}));
    m_system->setScreens({}, std::nullopt);
    EXPECT_EQ(m_system->mainScreen(), std::nullopt);
}

TEST_F(HeadlessWindowSystemTest, ContentView_ConvertsWindowPointsAndRoutesClicks)
{
    struct Overlay final : OverlayView {
        void setSize(Size value) override { size = value; }
        [[nodiscard]] bool isHidden() const override { return false; }
        [[nodiscard]] bool takesClick(Point point) const override { return point.y < 10; }
        void click(Point point) override { clicks.push_back(point); }
        Size size;
        std::vector<Point> clicks;
    };
    const auto standard = m_system->addWindow(Rect(0, 0, 200, 100));
    const auto flipped = m_system->addWindow(Rect(0, 0, 200, 100), HeadlessContentView::Orientation::flipped);
    EXPECT_EQ(standard->contentView()->convertFromWindow({20, 30}), Point(20, 30));
    EXPECT_EQ(flipped->contentView()->convertFromWindow({20, 30}), Point(20, 70));

    const auto overlay = std::make_shared<Overlay>();
    standard->contentView()->addOverlay(overlay);
    EXPECT_EQ(overlay->size, Size(200, 100));
    // The overlay's coordinates are flipped: the top edge is y = 0.
    EXPECT_TRUE(standard->headlessContentView()->click({5, 95}));
    EXPECT_FALSE(standard->headlessContentView()->click({5, 50}));
    EXPECT_EQ(overlay->clicks, (std::vector<Point>{{5, 5}}));
    standard->setFrame(Rect(0, 0, 300, 150), FrameDisplay::immediate);
    EXPECT_EQ(overlay->size, Size(300, 150));
}

// Content learns each time its window comes on screen, however it came.
TEST_F(HeadlessWindowSystemTest, Content_IsToldEachTimeTheWindowComesOnScreen)
{
    struct Content final : WindowContent {
        void didAppear() override { ++appearances; }
        int appearances = 0;
    };
    const auto parent = m_system->createPanel(Rect(0, 0, 200, 100), WindowAttributes());
    const auto window = m_system->createPanel(Rect(0, 0, 200, 100), WindowAttributes());
    const auto content = std::make_shared<Content>();
    window->setContent(content);
    EXPECT_EQ(content->appearances, 0) << "given while off screen";

    window->makeKeyAndOrderFront();
    window->orderFront();
    EXPECT_EQ(content->appearances, 1) << "already on screen the second time";

    auto& headless = dynamic_cast<HeadlessWindow&>(*window);
    headless.miniaturize();
    window->deminiaturize();
    EXPECT_EQ(content->appearances, 2);

    window->orderOut();
    parent->orderFront();
    parent->addChildWindow(*window, WindowOrdering::above);
    EXPECT_EQ(content->appearances, 3) << "a child shows with its parent";
    parent->orderOut();
    parent->orderFront();
    EXPECT_EQ(content->appearances, 4);

    const auto replacement = std::make_shared<Content>();
    window->setContent(replacement);
    EXPECT_EQ(replacement->appearances, 1) << "given while on screen";
}

} // namespace
} // namespace velmora
