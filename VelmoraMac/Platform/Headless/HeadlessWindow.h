#pragma once

#include <map>
#include <memory>
#include <optional>
#include <vector>

#include "HeadlessContentView.h"
#include "VelmoraMac/Platform/SystemNotifications.h"
#include "VelmoraMac/Platform/Window.h"

namespace velmora {

class HeadlessWindowSystem;

// A window in memory that follows a real window system's rules: only one
// window is key; ordering a parent in or out takes its children along and
// moving it moves them; a window that resizes, miniaturizes or loses key
// status reports it; full screen starts with a will-notification during
// the call and ends on the main loop with the frame of the main screen (or
// the windowed frame back) and a did-notification.
//
// The user's own actions are here too: miniaturize(), pressButton(), and
// setFrame() as a drag of the window's edge would.
// Main thread only.
class HeadlessWindow final : public Window, public std::enable_shared_from_this<HeadlessWindow> {
public:
    enum class Kind : std::uint8_t {
        window,
        panel,
    };

    // Made by HeadlessWindowSystem.
    HeadlessWindow(std::weak_ptr<HeadlessWindowSystem> system, Kind kind, Rect frame,
        std::unique_ptr<HeadlessContentView> contentView);

    [[nodiscard]] bool isPanel() const override { return m_kind == Kind::panel; }
    [[nodiscard]] ContentView* contentView() override { return m_contentView.get(); }
    void setContent(std::shared_ptr<WindowContent> content) override;
    [[nodiscard]] WindowAttributes attributes() const override { return m_attributes; }
    void setAttributes(const WindowAttributes& attributes) override;
    [[nodiscard]] std::uint64_t styleMask() const override;
    void setButtonAction(WindowButton button, Action action) override;
    [[nodiscard]] Rect frame() const override { return m_frame; }
    void setFrame(const Rect& frame, FrameDisplay display) override;
    [[nodiscard]] bool isVisible() const override { return m_ordered && !m_miniaturized; }
    [[nodiscard]] bool isKeyWindow() const override;
    [[nodiscard]] bool isMiniaturized() const override { return m_miniaturized; }
    void deminiaturize() override;
    void orderOut() override;
    void orderFront() override;
    void makeKeyAndOrderFront() override;
    void toggleFullScreen() override;
    void setMouseEvents(MouseEvents events) override { m_mouseEvents = events; }
    [[nodiscard]] Window* parentWindow() const override { return m_parent; }
    void addChildWindow(Window& child, WindowOrdering ordering) override;
    void removeChildWindow(Window& child) override;

    // The user's actions.
    void miniaturize();
    // The title-bar button: its action when set, else its standard
    // behaviour (close orders out, miniaturize, zoom toggles full screen).
    void pressButton(WindowButton button);

    // What tests read.
    [[nodiscard]] HeadlessContentView* headlessContentView() const { return m_contentView.get(); }
    [[nodiscard]] const std::shared_ptr<WindowContent>& content() const { return m_content; }
    [[nodiscard]] MouseEvents mouseEvents() const { return m_mouseEvents; }
    [[nodiscard]] bool isOrderedIn() const { return m_ordered; }
    [[nodiscard]] bool hasButtonAction(WindowButton button) const;
    // A transition asked for whose did-notification has not come yet.
    [[nodiscard]] bool inFullScreenTransition() const { return m_transition; }
    [[nodiscard]] std::optional<WindowOrdering> childOrdering(const Window& child) const;
    [[nodiscard]] FrameDisplay lastFrameDisplay() const { return m_lastFrameDisplay; }

private:
    friend class HeadlessWindowSystem;

    void post(SystemNotification notification);
    // Tells the content when the window has just come on screen.
    void appearedIfShown(bool wasVisible) const;
    void moveChildren(Point offset);
    void orderChildren(bool ordered);
    void finishFullScreen(bool entering);

    std::weak_ptr<HeadlessWindowSystem> m_system;
    Kind m_kind;
    Rect m_frame;
    std::unique_ptr<HeadlessContentView> m_contentView;
    std::shared_ptr<WindowContent> m_content;
    WindowAttributes m_attributes;
    std::map<WindowButton, Action> m_buttonActions;
    bool m_ordered = false;
    bool m_miniaturized = false;
    bool m_fullScreen = false;
    bool m_transition = false;
    // The frame to return to from full screen.
    Rect m_windowedFrame;
    MouseEvents m_mouseEvents = MouseEvents::accepted;
    FrameDisplay m_lastFrameDisplay = FrameDisplay::deferred;
    HeadlessWindow* m_parent = nullptr;
    std::vector<std::pair<HeadlessWindow*, WindowOrdering>> m_children;
};

} // namespace velmora
