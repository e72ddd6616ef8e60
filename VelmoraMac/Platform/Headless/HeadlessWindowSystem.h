#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "HeadlessContentView.h"
#include "HeadlessWindow.h"
#include "VelmoraMac/Platform/MainThread.h"
#include "VelmoraMac/Platform/WindowSystem.h"

namespace velmora {

class SystemNotificationHub;

// Windows and screens in memory. A test adds the renderer's windows and
// changes the screens; panels come from the shell. Starts with one screen
// of 1440 × 900 points whose visible frame leaves 25 points for the menu
// bar. Make it with make_shared: its windows refer back to it.
// Main thread only.
class HeadlessWindowSystem final : public WindowSystem, public std::enable_shared_from_this<HeadlessWindowSystem> {
public:
    static constexpr Screen defaultScreen{Rect(0, 0, 1440, 900), Rect(0, 0, 1440, 875)};

    HeadlessWindowSystem(std::shared_ptr<MainThread> mainThread, std::shared_ptr<SystemNotificationHub> notifications);

    [[nodiscard]] std::vector<std::shared_ptr<Window>> windows() const override;
    [[nodiscard]] std::vector<Screen> screens() const override { return m_screens; }
    [[nodiscard]] std::optional<Screen> mainScreen() const override;
    std::shared_ptr<Window> createPanel(const Rect& frame, const WindowAttributes& attributes) override;

    // A window of the renderer's, not shown yet; with a content view of the
    // frame's size unless told otherwise.
    std::shared_ptr<HeadlessWindow> addWindow(
        Rect frame, HeadlessContentView::Orientation orientation = HeadlessContentView::Orientation::standard);
    std::shared_ptr<HeadlessWindow> addWindowWithoutContent(Rect frame);
    // Displays are plugged, unplugged or rearranged; reported to observers.
    // `mainIndex` picks the main screen; none makes no screen the main one.
    void setScreens(std::vector<Screen> screens, std::optional<std::size_t> mainIndex = 0);

    [[nodiscard]] HeadlessWindow* keyWindow() const { return m_keyWindow; }
    // The user clicks into another application's window: the key window
    // resigns.
    void resignKeyWindow();
    // Every window, front to back, as the concrete type.
    [[nodiscard]] const std::vector<std::shared_ptr<HeadlessWindow>>& headlessWindows() const { return m_windows; }
    // The panels the shell created, in order.
    [[nodiscard]] std::vector<std::shared_ptr<HeadlessWindow>> panels() const;

private:
    friend class HeadlessWindow;

    std::shared_ptr<HeadlessWindow> add(
        HeadlessWindow::Kind kind, Rect frame, std::unique_ptr<HeadlessContentView> contentView);
    void makeKey(HeadlessWindow* window);
    void resignKey(HeadlessWindow* window);
    void bringToFront(HeadlessWindow* window);

    std::shared_ptr<MainThread> m_mainThread;
    std::shared_ptr<SystemNotificationHub> m_notifications;
    std::vector<std::shared_ptr<HeadlessWindow>> m_windows;
    std::vector<Screen> m_screens{defaultScreen};
    std::optional<std::size_t> m_mainIndex = 0;
    HeadlessWindow* m_keyWindow = nullptr;
};

} // namespace velmora
