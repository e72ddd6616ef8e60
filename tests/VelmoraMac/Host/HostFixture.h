#pragma once

#include <chrono>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include <gtest/gtest.h>

#include "VelmoraCore/PracticeState.h"
#include "VelmoraCore/PracticeStore.h"
#include "VelmoraMac/ContentCatalog.h"
#include "VelmoraMac/Host/MenuBarHost.h"
#include "VelmoraMac/Platform/EventMonitorChain.h"
#include "VelmoraMac/Platform/Headless/HeadlessApplication.h"
#include "VelmoraMac/Platform/Headless/HeadlessLoginItemService.h"
#include "VelmoraMac/Platform/Headless/HeadlessShellPlatform.h"
#include "VelmoraMac/Platform/Headless/HeadlessStatusBar.h"
#include "VelmoraMac/Platform/Headless/HeadlessSystemEnvironment.h"
#include "VelmoraMac/Platform/Headless/HeadlessWindowSystem.h"
#include "VelmoraMac/Platform/Headless/ManualMainThread.h"
#include "VelmoraMac/Platform/SystemNotificationHub.h"
#include "VelmoraMac/PracticeCoordinator.h"
#include "VelmoraMac/Services/LoginLaunchService.h"
#include "tests/VelmoraCore/CoreTestSupport.h"
#include "tests/VelmoraCore/TemporaryFolder.h"
#include "tests/VelmoraMac/CoordinatorTestDoubles.h"

namespace velmora::test {

// The renderer's usual window before the host places it.
constexpr Rect rendererFrame{100, 100, 800, 600};

// A host over the headless platform driven from the test's thread, with a
// real coordinator and store in a temporary folder and the shipped content.
// Nothing is built until start(), so that a test can first prepare the
// stored state, the renderer's window or the launch request.
class HostFixture : public testing::Test {
public:
    HostFixture(const HostFixture&) = delete;
    HostFixture& operator=(const HostFixture&) = delete;
    HostFixture(HostFixture&&) = delete;
    HostFixture& operator=(HostFixture&&) = delete;

protected:
    HostFixture()
    {
        m_system->setCalendar(UserCalendar::inTimeZone("Europe/Helsinki"));
        m_system->setNow(utc(2025, 3, 14, 10, 0));
        m_system->setPreferredLanguages({"en_GB"});
    }

    ~HostFixture() override
    {
        // Before the main thread, whose destructor runs what is still queued.
        m_host.reset();
        m_model.reset();
    }

    static PracticeState onboardedState()
    {
        PracticeState state;
        state.onboarded = true;
        state.hintSeen = true;
        state.selected = {"phone", "money"};
        state.practiceDays = {"2025-03-10", "2025-03-12"};
        return state;
    }

    void store(const PracticeState& state) const
    {
        std::filesystem::create_directories(stateFile().parent_path());
        writeFileBytes(stateFile(), state.toJSON());
    }
    void storeOnboarded() const { store(onboardedState()); }

    std::shared_ptr<HeadlessWindow> addRendererWindow(
        HeadlessContentView::Orientation orientation = HeadlessContentView::Orientation::standard) const
    {
        return windows().addWindow(rendererFrame, orientation);
    }

    MenuBarHost& start()
    {
        auto catalog = std::make_shared<const ContentCatalog>(std::filesystem::path(VELMORA_CONTENT_RESOURCE));
        m_model = std::make_shared<PracticeCoordinator>(
            std::move(catalog), std::make_unique<PracticeStore>(stateFile()),
            std::make_shared<LoginLaunchService>(m_platform->platform().loginItemService), m_reminders, [] {},
            m_system);
        m_host = MenuBarHost::create(m_model, m_platform->platform());
        return *m_host;
    }

    // What the renderer pulls next, or none.
    std::optional<std::string> takeEvent() const
    {
        auto& events = m_host->events();
        if (events.empty())
            return std::nullopt;
        std::string event = std::move(events.front());
        events.pop_front();
        return event;
    }

    void advance(std::chrono::milliseconds duration) const { m_mainThread->advance(duration); }
    // Lets the main loop finish what was started, such as full-screen
    // transitions.
    void runPending() const { m_mainThread->runPending(); }

    // Events as the window system reports them.
    static InputEvent key(
        InputEventType type, std::uint16_t code, Window* window, std::uint64_t flags = 0, bool repeat = false)
    {
        return {.modifierFlags = flags,
            .window = window,
            .locationInWindow = {},
            .type = type,
            .keyCode = code,
            .isARepeat = repeat};
    }
    static InputEvent mouse(InputEventType type, Window* window, Point location)
    {
        return {.window = window, .locationInWindow = location, .type = type};
    }
    static InputEvent wheel(Window* window, Point location, double deltaX, double deltaY, bool precise)
    {
        return {.window = window,
            .locationInWindow = location,
            .scrollingDeltaX = deltaX,
            .scrollingDeltaY = deltaY,
            .type = InputEventType::scrollWheel,
            .hasPreciseScrollingDeltas = precise};
    }
    EventDisposition dispatch(const InputEvent& event) const { return m_platform->eventMonitors().dispatch(event); }
    EventDisposition press(std::uint16_t code, Window* window, std::uint64_t flags = 0, bool repeat = false) const
    {
        return dispatch(key(InputEventType::keyDown, code, window, flags, repeat));
    }

    // Reads the buttons as the renderer's reader does: the edges go.
    PondPointerState readButtons() const
    {
        PondPointerState& state = m_host->pointerState();
        const PondPointerState read = state;
        state.down = false;
        state.up = false;
        return read;
    }
    // The steering the renderer reads.
    Point navigation() const { return m_host->interactive() ? m_host->keyboardState().direction() : Point(); }

    [[nodiscard]] std::filesystem::path stateFile() const { return m_folder / "app.velmora.mac" / "practice.json"; }
    [[nodiscard]] HeadlessWindowSystem& windows() const { return m_platform->windowSystem(); }
    [[nodiscard]] HeadlessApplication& application() const { return m_platform->application(); }
    [[nodiscard]] SystemNotificationHub& notifications() const { return m_platform->systemNotifications(); }
    [[nodiscard]] HeadlessStatusItem& statusItem() const { return *m_platform->statusBar().items().at(0); }
    [[nodiscard]] HeadlessWindow* panel() const { return dynamic_cast<HeadlessWindow*>(m_host->panel().get()); }
    [[nodiscard]] MenuBarHost& host() const { return *m_host; }
    [[nodiscard]] PracticeCoordinator& model() const { return *m_model; }

    std::shared_ptr<ManualMainThread> m_mainThread = std::make_shared<ManualMainThread>();
    std::shared_ptr<HeadlessSystemEnvironment> m_system = std::make_shared<HeadlessSystemEnvironment>();
    std::shared_ptr<HeadlessShellPlatform> m_platform = HeadlessShellPlatform::create(m_mainThread, m_system);
    std::shared_ptr<RecordingReminders> m_reminders = std::make_shared<RecordingReminders>();
    TemporaryFolder m_folder;
    std::shared_ptr<PracticeCoordinator> m_model;
    std::shared_ptr<MenuBarHost> m_host;
};

} // namespace velmora::test
