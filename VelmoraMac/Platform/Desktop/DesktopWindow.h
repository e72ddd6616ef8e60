#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include <gtk/gtk.h>

#include "VelmoraMac/Platform/GLibPointer.h"
#include "VelmoraMac/Platform/GLibSignal.h"
#include "VelmoraMac/Platform/GtkViewFactory.h"
#include "VelmoraMac/Platform/NotNullShared.h"
#include "VelmoraMac/Platform/SystemNotifications.h"
#include "VelmoraMac/Platform/Window.h"

namespace velmora {

class DesktopContentView;
class DesktopEventMonitors;
class SystemNotificationHub;

// A GTK toplevel as the shell's Window: the renderer's, adopted and
// watched weakly (the renderer owns it; once GTK destroys it every call
// here does nothing and it reports being off screen), or a panel of ours,
// which this object owns and destroys.
//
// Frames are in the shell's screen coordinates, title bar included. A new
// frame is what frame() reports at once; the window manager's answer
// (configure-event) then replaces it, as does any move or resize the user
// makes. The title bar's size is learnt once the window is on screen, and a
// frame asked for before that is asked again with it. Wayland does not let
// clients place their windows: there only sizes take.
//
// Window managers report their changes after the fact, so:
//  - full screen posts will-enter (will-exit) during toggleFullScreen and
//    did-enter (did-exit) when the window's state says so, or after
//    fullScreenPatience if the window manager never answers (without one,
//    nothing does): then the window stays as it was and the styleMask says
//    so, but the transition ends. A change the user makes through the
//    window manager posts both at once;
//  - miniaturizing posts will-miniaturize when the window is already
//    iconified, and did-deminiaturize when it is back (Wayland never says);
//  - losing the keyboard focus posts did-resign-key; a size change seen in
//    a configure-event posts did-resize (a window not on screen posts it
//    with the new frame, since no configure-event comes).
//
// Title-bar buttons: an action for close replaces the window's deletion
// (delete-event); an action for zoom replaces maximizing, which is what
// the window manager's maximize button does here. A window manager's
// miniaturize button cannot be intercepted and always miniaturizes.
// Attributes without a counterpart on this desktop (transparent title bar,
// hiding single buttons, moving by the background, collection behaviour,
// hiding on deactivation) are kept and reported but change nothing.
//
// A panel shows its content in the widget the shell's view factory makes
// for it; content the factory does not draw leaves the panel empty.
//
// Children follow their parent's frame (configure-event) and are ordered
// in and out with it; transient-for keeps them above it, or keeps the
// parent above a child ordered below.
//
// Where clients cannot place their windows (Wayland), a panel cannot lie
// over the renderer's window as a toplevel of its own: the compositor puts
// it where it likes, at a size of its choosing. Given an embedding host, a
// panel ordered in is drawn inside the host's window instead, above its
// content and the overlays, and takes the host's keyboard focus; ordered
// out it leaves it. While embedded its frame, visibility and key state are
// the host's, and the host takes the pointer whatever its own mouse events
// say, since the panel lies in it. Without a host to embed in it is a
// window of its own, as elsewhere.
// Main thread only (GTK's).
class DesktopWindow final : public Window {
public:
    enum class Kind : std::uint8_t {
        // The renderer's window, watched weakly.
        adopted,
        // Ours: held and destroyed with this object.
        panel,
    };

    static constexpr std::chrono::milliseconds fullScreenPatience{2000};

    DesktopWindow(Kind kind, GtkWindow* window, std::shared_ptr<SystemNotificationHub> notifications,
        DesktopEventMonitors& monitors, NotNullShared<GtkViewFactory> views);
    DesktopWindow(const DesktopWindow&) = delete;
    DesktopWindow& operator=(const DesktopWindow&) = delete;
    DesktopWindow(DesktopWindow&&) = delete;
    DesktopWindow& operator=(DesktopWindow&&) = delete;
    ~DesktopWindow() override;

    [[nodiscard]] bool isPanel() const override { return m_kind == Kind::panel; }
    [[nodiscard]] ContentView* contentView() override;
    void setContent(std::shared_ptr<WindowContent> content) override;
    [[nodiscard]] WindowAttributes attributes() const override { return m_attributes; }
    void setAttributes(const WindowAttributes& attributes) override;
    [[nodiscard]] std::uint64_t styleMask() const override;
    void setButtonAction(WindowButton button, Action action) override;
    [[nodiscard]] Rect frame() const override;
    void setFrame(const Rect& frame, FrameDisplay display) override;
    [[nodiscard]] bool isVisible() const override;
    [[nodiscard]] bool isKeyWindow() const override;
    [[nodiscard]] bool isMiniaturized() const override;
    void deminiaturize() override;
    void orderOut() override;
    void orderFront() override;
    void makeKeyAndOrderFront() override;
    void toggleFullScreen() override;
    void setMouseEvents(MouseEvents events) override;
    [[nodiscard]] Window* parentWindow() const override { return m_parent; }
    void addChildWindow(Window& child, WindowOrdering ordering) override;
    void removeChildWindow(Window& child) override;

    // The window a panel is drawn inside while ordered in; for panels only.
    using EmbeddingHost = std::function<DesktopWindow*()>;
    void setEmbeddingHost(EmbeddingHost host);
    // The panel drawn inside this window now, if any.
    [[nodiscard]] DesktopWindow* embeddedPanel() const { return m_embeddedPanel; }

    // None once GTK has destroyed the window.
    [[nodiscard]] GtkWindow* gtkWindow() const { return m_window; }
    // Grows whenever the window is brought to the front: the larger, the
    // nearer the front.
    [[nodiscard]] std::uint64_t frontOrder() const { return m_frontOrder; }
    [[nodiscard]] MouseEvents mouseEvents() const { return m_mouseEvents; }
    [[nodiscard]] const std::shared_ptr<WindowContent>& content() const { return m_content; }

private:
    using SourcePointer = GLibPointer<GSource, g_source_ref, g_source_unref>;
    using WindowPointer = GLibPointer<GtkWindow, g_object_ref, g_object_unref>;

    static gboolean deleted(GtkWidget* widget, GdkEvent* event, gpointer self);
    static gboolean stateChanged(GtkWidget* widget, GdkEventWindowState* event, gpointer self);
    static gboolean configured(GtkWidget* widget, GdkEventConfigure* event, gpointer self);
    static gboolean mapped(GtkWidget* widget, GdkEvent* event, gpointer self);
    static gboolean unmapped(GtkWidget* widget, GdkEvent* event, gpointer self);
    static void activeChanged(GObject* object, GParamSpec* property, gpointer self);
    static void realized(GtkWidget* widget, gpointer self);
    static void destroyed(GtkWidget* widget, gpointer self);
    static gboolean patienceEnded(GSource* source, GSourceFunc callback, gpointer data);

    void connect();
    void forgetWindow();
    void post(SystemNotification notification);
    void applyAttributes();
    // What only a realized window takes: the functions the window manager
    // offers, and the dark title bar.
    void applyToGdkWindow();
    [[nodiscard]] bool onScreen() const;
    void appearIfNew(bool wasOnScreen);
    [[nodiscard]] std::optional<Rect> actualFrame() const;
    void moveAndResize(const Rect& frame);
    void followParent();
    void showChildren();
    void finishFullScreen();
    void startPatience();
    void stopPatience();
    void onStateChanged(GdkWindowState changed, GdkWindowState state);
    void onConfigured(const GdkEventConfigure& event);
    // True when the panel lies inside its host now.
    bool embed();
    void leaveHost();
    void applyMouseEvents();

    Kind m_kind;
    // A panel's reference; none for the renderer's window.
    WindowPointer m_ownedWindow;
    GtkWindow* m_window;
    std::shared_ptr<SystemNotificationHub> m_notifications;
    DesktopEventMonitors& m_monitors;
    NotNullShared<GtkViewFactory> m_views;
    WindowAttributes m_attributes;
    std::map<WindowButton, Action> m_buttonActions;
    Rect m_frame;
    // Asked for and not yet seen from the window manager.
    std::optional<Rect> m_requestedFrame;
    // The title bar and borders: frame size minus content size.
    Size m_decorations;
    Size m_reportedSize;
    MouseEvents m_mouseEvents = MouseEvents::accepted;
    bool m_mapped = false;
    bool m_fullScreen = false;
    bool m_transition = false;
    bool m_enteringFullScreen = false;
    bool m_wasActive = false;
    std::uint64_t m_frontOrder = 0;
    SourcePointer m_patience;
    std::shared_ptr<WindowContent> m_content;
    std::unique_ptr<GtkViewFactory::View> m_contentWidget;
    std::unique_ptr<DesktopContentView> m_contentView;
    DesktopWindow* m_parent = nullptr;
    EmbeddingHost m_embeddingHost;
    // The host this panel lies in, and the panel lying in this window.
    DesktopWindow* m_embeddedIn = nullptr;
    DesktopWindow* m_embeddedPanel = nullptr;
    std::vector<std::pair<DesktopWindow*, WindowOrdering>> m_children;
    // Last: disconnected before anything above goes.
    std::vector<std::unique_ptr<GLibSignal>> m_signals;
};

} // namespace velmora
