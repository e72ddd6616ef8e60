#include <unistd.h>

#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "VelmoraMac/Platform/Headless/HeadlessApplication.h"
#include "VelmoraMac/Platform/Headless/HeadlessDiagnosticLog.h"
#include "VelmoraMac/Platform/Headless/HeadlessEventMonitors.h"
#include "VelmoraMac/Platform/Headless/HeadlessShellPlatform.h"
#include "VelmoraMac/Platform/Headless/HeadlessStatusBar.h"
#include "VelmoraMac/Platform/Headless/HeadlessSystemEnvironment.h"
#include "VelmoraMac/Platform/Headless/HeadlessSystemNotifications.h"
#include "VelmoraMac/Platform/Headless/ManualMainThread.h"

namespace velmora {
namespace {

class HeadlessShellPlatformTest : public testing::Test {
protected:
    std::shared_ptr<ManualMainThread> m_mainThread = std::make_shared<ManualMainThread>();
    std::shared_ptr<HeadlessShellPlatform> m_headless = HeadlessShellPlatform::create(m_mainThread, std::make_shared<HeadlessSystemEnvironment>());
};

TEST_F(HeadlessShellPlatformTest, Platform_IsCompleteAndOutlivesItsBuilder)
{
    const ShellPlatform platform = m_headless->platform();
    EXPECT_EQ(platform.mainThread, m_mainThread);
    for (const bool present : {
             platform.systemEnvironment != nullptr, platform.notificationCenter != nullptr,
             platform.notificationSettingsOpener != nullptr, platform.loginItemService != nullptr,
             platform.powerAssertions != nullptr, platform.diagnosticLog != nullptr, platform.application != nullptr,
             platform.windowSystem != nullptr, platform.statusBar != nullptr, platform.eventMonitors != nullptr,
             platform.systemNotifications != nullptr}) {
        EXPECT_TRUE(present);
    }
    platform.diagnosticLog->write("a line");
    ASSERT_NE(m_headless->recordedLog(), nullptr);
    EXPECT_EQ(m_headless->recordedLog()->lines(), std::vector<std::string>{"a line"});

    m_headless.reset();
    EXPECT_EQ(platform.application->processID(), static_cast<std::int32_t>(::getpid()));
    EXPECT_EQ(platform.windowSystem->screens().size(), 1U);
}

TEST_F(HeadlessShellPlatformTest, LaunchEvents_AreCurrentWhileHandled)
{
    HeadlessApplication& application = m_headless->application();
    std::vector<std::optional<LaunchEvent>> seen;
    application.deliverLaunchEvent(LaunchEvent{"oapp", std::nullopt});
    application.setLaunchHandler([&](const LaunchEvent& event) {
        EXPECT_EQ(application.currentLaunchEvent(), event);
        seen.push_back(application.currentLaunchEvent());
    });
    application.deliverLaunchEvent(LaunchEvent{"oapp", "lgit"});
    application.deliverLaunchEvent(LaunchEvent{"rapp", std::nullopt});
    EXPECT_EQ(seen.size(), 2U);
    EXPECT_EQ(application.currentLaunchEvent(), std::nullopt);
}

TEST_F(HeadlessShellPlatformTest, Application_ReportsBecomingAndResigningActiveOnlyOnAChange)
{
    HeadlessApplication& application = m_headless->application();
    int became = 0;
    int resigned = 0;
    const auto becameToken = m_headless->systemNotifications().addObserver(SystemNotification::applicationDidBecomeActive, [&became](Window* /*window*/) { ++became; });
    const auto resignedToken = m_headless->systemNotifications().addObserver(SystemNotification::applicationDidResignActive, [&resigned](Window* /*window*/) { ++resigned; });
    application.resignActive();
    application.activate();
    application.activate();
    EXPECT_TRUE(application.isActive());
    EXPECT_EQ(application.activations(), 2);
    application.resignActive();
    application.resignActive();
    application.activate();
    EXPECT_EQ(became, 2);
    EXPECT_EQ(resigned, 1);

    application.runModalAlert("Oops", "Details", "OK");
    application.terminate();
    EXPECT_EQ(application.alerts(), (std::vector<HeadlessApplication::Alert>{{"Oops", "Details", "OK"}}));
    EXPECT_EQ(application.terminations(), 1);
}

TEST_F(HeadlessShellPlatformTest, StatusItem_SendsTheClicksAskedForOrPopsUpItsMenu)
{
    const auto item = m_headless->statusBar().statusItem(28);
    auto& headless = *m_headless->statusBar().items().at(0);
    std::vector<InputEventType> clicks;
    item->button()->setAction([&clicks](InputEventType trigger) { clicks.push_back(trigger); });

    headless.click(InputEventType::rightMouseUp);
    EXPECT_TRUE(clicks.empty()) << "by default only left clicks send";
    item->button()->sendActionOn(eventMaskBit(InputEventType::leftMouseUp) | eventMaskBit(InputEventType::rightMouseUp));
    headless.click(InputEventType::rightMouseUp);
    item->button()->performClick();
    EXPECT_EQ(clicks, (std::vector<InputEventType>{InputEventType::rightMouseUp, InputEventType::leftMouseUp}));

    int chosen = 0;
    Menu menu;
    menu.items.push_back(MenuItem::item("One", "1", [&chosen] { ++chosen; }));
    item->setMenu(menu);
    headless.setMenuTracker([](const Menu& shown) { shown.items[0].action(); });
    headless.click(InputEventType::leftMouseUp);
    EXPECT_EQ(chosen, 1);
    EXPECT_EQ(clicks.size(), 2U);
    EXPECT_EQ(headless.poppedMenus().size(), 1U);
}

TEST_F(HeadlessShellPlatformTest, Notifications_ReachObserversUntilTheirTokenGoes)
{
    HeadlessSystemNotifications& notifications = m_headless->systemNotifications();
    std::vector<int> calls;
    auto first = notifications.addObserver(SystemNotification::workspaceDidWake, [&calls](Window* /*window*/) { calls.push_back(1); });
    std::unique_ptr<PlatformToken> second;
    second = notifications.addObserver(SystemNotification::workspaceDidWake, [&](Window* /*window*/) {
        calls.push_back(2);
        // Removing itself while called is safe.
        second.reset();
    });
    notifications.post(SystemNotification::workspaceDidWake);
    notifications.post(SystemNotification::workspaceDidWake);
    notifications.post(SystemNotification::workspaceWillSleep);
    EXPECT_EQ(calls, (std::vector<int>{1, 2, 1}));
    first.reset();
    EXPECT_EQ(notifications.observerCount(SystemNotification::workspaceDidWake), 0U);
}

TEST_F(HeadlessShellPlatformTest, Monitors_SeeTheirEventsInOrderUntilOneConsumes)
{
    HeadlessEventMonitors& monitors = m_headless->eventMonitors();
    std::vector<int> calls;
    std::vector<std::unique_ptr<PlatformToken>> tokens;
    tokens.push_back(monitors.addLocalMonitor(eventMaskBit(InputEventType::keyDown), [&](const InputEvent& /*event*/) {
        calls.push_back(1);
        // Added while dispatching: sees the next event.
        if (tokens.size() == 2)
            tokens.push_back(monitors.addLocalMonitor(eventMaskBit(InputEventType::keyDown), [&](const InputEvent& /*event*/) {
                calls.push_back(3);
                return EventDisposition::passOn;
            }));
        return EventDisposition::passOn;
    }));
    tokens.push_back(monitors.addLocalMonitor(eventMaskBit(InputEventType::keyDown) | eventMaskBit(InputEventType::keyUp), [&](const InputEvent& event) {
        calls.push_back(2);
        return event.type == InputEventType::keyDown ? EventDisposition::consume : EventDisposition::passOn;
    }));

    InputEvent event;
    event.type = InputEventType::keyDown;
    EXPECT_EQ(monitors.dispatch(event), EventDisposition::consume);
    EXPECT_EQ(calls, (std::vector<int>{1, 2}));
    event.type = InputEventType::keyUp;
    EXPECT_EQ(monitors.dispatch(event), EventDisposition::passOn);
    event.type = InputEventType::mouseMoved;
    EXPECT_EQ(monitors.dispatch(event), EventDisposition::passOn);
    EXPECT_EQ(calls, (std::vector<int>{1, 2, 2}));

    tokens[1].reset();
    event.type = InputEventType::keyDown;
    EXPECT_EQ(monitors.dispatch(event), EventDisposition::passOn);
    EXPECT_EQ(calls, (std::vector<int>{1, 2, 2, 1, 3}));
    EXPECT_EQ(monitors.monitorCount(), 2U);

    monitors.refuse(eventMaskBit(InputEventType::scrollWheel));
    EXPECT_EQ(monitors.addLocalMonitor(eventMaskBit(InputEventType::scrollWheel), [](const InputEvent& /*event*/) { return EventDisposition::consume; }), nullptr);
}

} // namespace
} // namespace velmora
