#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "VelmoraCore/Point.h"
#include "VelmoraCore/Rect.h"
#include "VelmoraMac/Platform/Application.h"
#include "VelmoraMac/Platform/EventMonitors.h"
#include "VelmoraMac/Platform/MainThread.h"
#include "VelmoraMac/Platform/PlatformToken.h"
#include "VelmoraMac/Platform/ShellPlatform.h"
#include "VelmoraMac/Platform/StatusBar.h"
#include "VelmoraMac/Platform/Window.h"
#include "VelmoraMac/PondKeyboardState.h"
#include "VelmoraMac/PondPointerState.h"
#include "VelmoraMac/PracticeCoordinator.h"

namespace velmora {

class PondChromeView;

// Turns the library into a menu-bar application inside the renderer's
// process: the status item and its menu, the renderer's window adopted as
// the pond, the settings panel over it, the pond's input, its chrome, the
// one-second timer and the system's notifications. Created once at start-up
// and alive until the process ends; nothing tears it down.
//
// Every callback handed to the platform or the coordinator holds the host
// weakly and does nothing once it is gone.
//
// Main thread only.
class MenuBarHost : public std::enable_shared_from_this<MenuBarHost> {
public:
    // Width of the status item, in points.
    static constexpr double statusItemLength = 28;
    static constexpr const char* title = "Velmora";

    // Runs the whole construction sequence; main thread only.
    static std::shared_ptr<MenuBarHost> create(std::shared_ptr<PracticeCoordinator> model, ShellPlatform platform);

    // The process-wide host set once by start-up; never cleared. Main
    // thread only.
    static const std::shared_ptr<MenuBarHost>& current();
    static void setCurrent(std::shared_ptr<MenuBarHost> host);

    MenuBarHost(const MenuBarHost&) = delete;
    MenuBarHost& operator=(const MenuBarHost&) = delete;
    MenuBarHost(MenuBarHost&&) = delete;
    MenuBarHost& operator=(MenuBarHost&&) = delete;
    ~MenuBarHost();

    [[nodiscard]] PracticeCoordinator& model() { return *m_model; }
    // The queue the renderer pulls envelopes from, oldest first.
    [[nodiscard]] std::deque<std::string>& events() { return m_events; }
    // The pond is shown to the user.
    [[nodiscard]] bool visible() const { return m_visible; }
    // The pond takes pointer, wheel and navigation input now.
    [[nodiscard]] bool interactive() const;
    // The last pointer position in normalized pond coordinates.
    [[nodiscard]] Point eventPointer() const { return m_eventPointer; }
    // The readers consume the edges and the scroll.
    [[nodiscard]] PondPointerState& pointerState() { return m_pointerState; }
    [[nodiscard]] const PondKeyboardState& keyboardState() const { return m_keyboardState; }
    // Width of the pond's content bounds; none without a pond or a content
    // view.
    [[nodiscard]] std::optional<double> contentWidth() const;

    [[nodiscard]] bool launchedAtLogin() const { return m_launchedAtLogin; }
    [[nodiscard]] const std::string& lastDay() const { return m_lastDay; }
    [[nodiscard]] std::optional<Rect> lastFrame() const { return m_lastFrame; }
    [[nodiscard]] bool fullScreenTransition() const { return m_fullScreenTransition; }
    [[nodiscard]] bool restorePanelAfterFullScreen() const { return m_restorePanelAfterFullScreen; }
    [[nodiscard]] bool hideAfterFullScreen() const { return m_hideAfterFullScreen; }
    [[nodiscard]] const std::shared_ptr<Window>& pond() const { return m_pond; }
    [[nodiscard]] const std::shared_ptr<Window>& panel() const { return m_panel; }
    [[nodiscard]] const std::shared_ptr<PondChromeView>& chrome() const { return m_chrome; }
    [[nodiscard]] const std::shared_ptr<StatusItem>& statusItem() const { return m_status; }

    // Lifecycle and status item.
    void open();
    void hide();
    // The status button's action; a right click shows the menu.
    void toggle(InputEventType trigger);
    void showMenu();
    // The menu's and the gear's action.
    void settings();
    void quit();
    // The timer's body.
    void tick();
    void handleLaunchEvent(const LaunchEvent& event);
    // Forgets the pointer's buttons and scroll and the keys held; the
    // pointer's position stays.
    void resetInput();

    // Windows.
    void attachWindow();
    void showPond();
    void showPanel();
    void rememberFrame();
    [[nodiscard]] Rect targetFrame() const;
    void reposition();
    void detachWindows();
    // The zoom button's action, and Control+Command+F's and Escape's.
    void toggleFullScreen();
    // The close button's action: closing only hides.
    void closeWindow();

    // The three local event monitors' bodies.
    EventDisposition handleKeyEvent(const InputEvent& event);
    EventDisposition handlePointerEvent(const InputEvent& event);
    EventDisposition handleScrollEvent(const InputEvent& event);

private:
    struct ConstructionKey {
        explicit ConstructionKey() = default;
    };

public:
    // Use create(); public only for make_shared.
    MenuBarHost(ConstructionKey key, std::shared_ptr<PracticeCoordinator> model, ShellPlatform platform);

private:
    void construct();
    void installStatusButton();
    void installCallbacks();
    void installObservers();
    void installMonitors();
    void installWindowControls(Window& window);
    void installToolbar(Window& window);
    void updateChrome();
    void showChrome();
    void hideChrome();
    void createPanel();
    // Onboarded and loaded: the pond is what the user comes back to.
    [[nodiscard]] bool pondReady() const;
    [[nodiscard]] bool panelVisible() const;
    [[nodiscard]] bool pondInFullScreen() const;
    // The pond's content view when `event` happened in the pond window.
    [[nodiscard]] ContentView* pondContent(const InputEvent& event) const;
    // `local` in normalized pond coordinates.
    [[nodiscard]] static Point normalized(const ContentView& content, Point local);

    // Observer bodies.
    void windowWillMiniaturize(Window* window);
    void windowDidDeminiaturize(Window* window);
    void windowDidResize(Window* window);
    void fullScreenWillChange(Window* window);
    void fullScreenDidChange(Window* window);
    void windowDidResignKey(Window* window);

    ShellPlatform m_platform;

    std::shared_ptr<PracticeCoordinator> m_model;
    std::shared_ptr<StatusItem> m_status;
    std::shared_ptr<Window> m_pond;
    std::shared_ptr<Window> m_panel;
    std::vector<std::unique_ptr<PlatformToken>> m_monitors;
    std::vector<std::unique_ptr<PlatformToken>> m_observers;
    RepeatingTimer m_timer;
    std::deque<std::string> m_events;
    std::shared_ptr<PondChromeView> m_chrome;
    bool m_launchedAtLogin = false;
    std::string m_lastDay;
    std::optional<Rect> m_lastFrame;
    Point m_eventPointer;
    PondPointerState m_pointerState;
    PondKeyboardState m_keyboardState;
    bool m_fullScreenTransition = false;
    bool m_restorePanelAfterFullScreen = false;
    bool m_hideAfterFullScreen = false;
    bool m_visible = false;
};

} // namespace velmora
