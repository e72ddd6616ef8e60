#pragma once

#include <functional>
#include <memory>

#include "ContentView.h"
#include "FrameDisplay.h"
#include "MouseEvents.h"
#include "VelmoraCore/Rect.h"
#include "WindowAttributes.h"
#include "WindowButton.h"
#include "WindowContent.h"
#include "WindowOrdering.h"

namespace velmora {

// A window of the application: the renderer's, or a panel the shell made.
// Windows are compared by identity. The changes a window reports through
// SystemNotifications (miniaturizing, resizing, full screen, key status)
// are reported whoever caused them, the user or a call here.
// Main thread only.
class Window {
public:
    using Action = std::function<void()>;

    Window() = default;
    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;
    Window(Window&&) = delete;
    Window& operator=(Window&&) = delete;
    virtual ~Window() = default;

    // Whether the shell made it as a panel (WindowSystem::createPanel).
    [[nodiscard]] virtual bool isPanel() const = 0;
    // None for a window that has no content yet.
    [[nodiscard]] virtual ContentView* contentView() = 0;
    // Replaces the content, for windows the shell made.
    virtual void setContent(std::shared_ptr<WindowContent> content) = 0;

    [[nodiscard]] virtual WindowAttributes attributes() const = 0;
    // Every attribute at once; the full-screen bit of styleMask is the
    // window system's and is ignored here.
    virtual void setAttributes(const WindowAttributes& attributes) = 0;
    // The style mask in effect, with the full-screen bit while in full
    // screen.
    [[nodiscard]] virtual std::uint64_t styleMask() const = 0;
    [[nodiscard]] bool isFullScreen() const { return (styleMask() & WindowAttributes::fullScreen) != 0; }
    // What a title-bar button does instead of its standard behaviour; an
    // empty action restores that.
    virtual void setButtonAction(WindowButton button, Action action) = 0;

    // In screen coordinates, title bar included.
    [[nodiscard]] virtual Rect frame() const = 0;
    virtual void setFrame(const Rect& frame, FrameDisplay display) = 0;

    // On screen: ordered in, and not miniaturized.
    [[nodiscard]] virtual bool isVisible() const = 0;
    [[nodiscard]] virtual bool isKeyWindow() const = 0;
    [[nodiscard]] virtual bool isMiniaturized() const = 0;
    virtual void deminiaturize() = 0;
    virtual void orderOut() = 0;
    virtual void orderFront() = 0;
    // Orders it front and gives it the keyboard.
    virtual void makeKeyAndOrderFront() = 0;
    // Starts entering or leaving full screen. The transition runs on the
    // main loop: will-enter (or will-exit) is reported during this call,
    // did-enter (or did-exit) later, once the window has changed.
    virtual void toggleFullScreen() = 0;
    virtual void setMouseEvents(MouseEvents events) = 0;

    // The window this one is a child of, if any. Children move with their
    // parent and are ordered with it.
    [[nodiscard]] virtual Window* parentWindow() const = 0;
    virtual void addChildWindow(Window& child, WindowOrdering ordering) = 0;
    virtual void removeChildWindow(Window& child) = 0;
};

} // namespace velmora
