#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "ContentView.h"
#include "VelmoraCore/Rect.h"

namespace velmora {

// Whether a window redraws at once for a new frame, or when it is next
// shown.
enum class FrameDisplay : std::uint8_t {
    deferred,
    immediate,
};

// Whether a window takes mouse events or lets them through to what lies
// beneath it.
enum class MouseEvents : std::uint8_t {
    accepted,
    ignored,
};

// The standard buttons of a window's title bar, with the window system's
// numbers.
enum class WindowButton : std::uint8_t {
    close = 0,
    miniaturize = 1,
    zoom = 2,
};

// Where a child window is kept relative to its parent, with the window
// system's numbers.
enum class WindowOrdering : std::int8_t {
    below = -1,
    above = 1,
};

// How a window looks and behaves, set as a whole. The values are the window
// system's own, so that a desktop implementation maps each one once.
struct WindowAttributes {
    // Bits of styleMask.
    static constexpr std::uint64_t titled = 1;
    static constexpr std::uint64_t closable = 2;
    static constexpr std::uint64_t miniaturizable = 4;
    static constexpr std::uint64_t resizable = 8;
    // Set by the window system, never by a caller, while the window is in
    // full screen.
    static constexpr std::uint64_t fullScreen = 0x4000;

    // Values of collectionBehavior.
    static constexpr std::uint64_t fullScreenPrimary = 128;
    static constexpr std::uint64_t fullScreenAuxiliary = 256;

    std::string title;
    std::uint64_t styleMask = titled | closable | miniaturizable | resizable;
    bool titleVisible = true;
    bool titlebarTransparent = false;
    // The dark variant of the system's look, whatever the user's choice.
    bool darkAppearance = false;
    // Close, miniaturize and zoom shown in the title bar.
    bool standardButtonsShown = true;
    bool movable = true;
    bool movableByWindowBackground = false;
    // Closing destroys the window; when false, closing only hides it.
    bool releasedWhenClosed = true;
    // 0 is the normal level of application windows.
    std::int32_t level = 0;
    std::uint64_t collectionBehavior = 0;
    bool opaque = true;
    // A transparent background, so that what is beneath shows through the
    // parts the content leaves undrawn.
    bool clearBackground = false;
    // A panel that floats above all normal windows.
    bool floatingPanel = false;
    bool hidesOnDeactivate = false;

    friend bool operator==(const WindowAttributes&, const WindowAttributes&) = default;
};

// What the shell puts into a window it creates: a model of the content that
// the platform's implementation knows how to present (each implementation
// recognises the kinds it can draw). The window keeps it alive.
// Main thread only.
class WindowContent {
public:
    WindowContent() = default;
    WindowContent(const WindowContent&) = delete;
    WindowContent& operator=(const WindowContent&) = delete;
    WindowContent(WindowContent&&) = delete;
    WindowContent& operator=(WindowContent&&) = delete;
    virtual ~WindowContent() = default;

    // The window came on screen: ordered in or brought back from the Dock,
    // or given this content while on screen.
    virtual void didAppear() { }
};

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
