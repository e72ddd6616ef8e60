#include "DesktopWindow.h"

#include <algorithm>
#include <atomic>

#include <utility>

#ifdef GDK_WINDOWING_X11
#include <gdk/gdkx.h>
#endif
#ifdef GDK_WINDOWING_WAYLAND
#include <gdk/gdkwayland.h>
#endif

#include "DesktopContentView.h"
#include "DesktopWindowCoordinates.h"
#include "VelmoraMac/Platform/SystemNotificationHub.h"

namespace velmora {

namespace {

// Shared by every window, so that front orders compare across them.
std::uint64_t nextFrontOrder()
{
    static std::uint64_t counter = 0;
    return ++counter;
}

// Fires once, when its ready time has come.
struct PatienceSource {
    GSource source;
    DesktopWindow* owner;
};

GdkDisplay* displayOf(GtkWindow* window)
{
    return gtk_widget_get_display(GTK_WIDGET(window));
}

// A Wayland compositor reports a tiled window as maximized to clients that
// do not know tiled states (GTK 3's), and maximizes on its own, none of it
// asked for by the user; client-side title bars there have no zoom of ours.
bool maximizingIsTheWindowManagers(GtkWindow* window)
{
#ifdef GDK_WINDOWING_WAYLAND
    return GDK_IS_WAYLAND_DISPLAY(displayOf(window));
#else
    (void)window;
    return false;
#endif
}

} // namespace

DesktopWindow::DesktopWindow(Kind kind, GtkWindow* window, std::shared_ptr<SystemNotificationHub> notifications,
    DesktopEventMonitors& monitors, NotNullShared<GtkViewFactory> views)
    : m_kind(kind)
    , m_ownedWindow(kind == Kind::panel ? WindowPointer::share(window) : WindowPointer())
    , m_window(window)
    , m_notifications(std::move(notifications))
    , m_monitors(monitors)
    , m_views(std::move(views))
{
    g_object_add_weak_pointer(G_OBJECT(m_window), reinterpret_cast<gpointer*>(&m_window));
    m_attributes.title = gtk_window_get_title(m_window) != nullptr ? gtk_window_get_title(m_window) : "";
    int width = 0;
    int height = 0;
    gtk_window_get_size(m_window, &width, &height);
    int x = 0;
    int y = 0;
    gtk_window_get_position(m_window, &x, &y);
    m_frame = DesktopWindowCoordinates::toScreen(GdkRectangle{x, y, width, height}, displayOf(m_window));
    if (const std::optional<Rect> actual = actualFrame())
        m_frame = *actual;
    m_reportedSize = m_frame.size;
    m_mapped = gtk_widget_get_mapped(GTK_WIDGET(m_window));
    if (GdkWindow* gdkWindow = gtk_widget_get_window(GTK_WIDGET(m_window)))
        m_fullScreen = (gdk_window_get_state(gdkWindow) & GDK_WINDOW_STATE_FULLSCREEN) != 0;
    m_wasActive = gtk_window_is_active(m_window);
    connect();
}

DesktopWindow::~DesktopWindow()
{
    leaveHost();
    if (m_embeddedPanel != nullptr)
        m_embeddedPanel->leaveHost();
    stopPatience();
    if (m_parent != nullptr)
        m_parent->removeChildWindow(*this);
    while (!m_children.empty())
        removeChildWindow(*m_children.front().first);
    m_signals.clear();
    m_contentView.reset();
    if (m_window != nullptr) {
        GtkWindow* window = m_window;
        g_object_remove_weak_pointer(G_OBJECT(window), reinterpret_cast<gpointer*>(&m_window));
        m_window = nullptr;
        if (m_kind == Kind::panel) {
            if (m_contentWidget)
                gtk_container_remove(GTK_CONTAINER(window), m_contentWidget->widget());
            gtk_widget_destroy(GTK_WIDGET(window));
        }
    }
}

void DesktopWindow::connect()
{
    using When = GLibSignal::When;
    const auto add = [this](const char* signal, GCallback callback, When when = When::beforeDefault) {
        m_signals.push_back(std::make_unique<GLibSignal>(m_window, signal, callback, this, when));
    };
    add("delete-event", G_CALLBACK(&DesktopWindow::deleted));
    add("window-state-event", G_CALLBACK(&DesktopWindow::stateChanged));
    add("configure-event", G_CALLBACK(&DesktopWindow::configured));
    add("map-event", G_CALLBACK(&DesktopWindow::mapped));
    add("unmap-event", G_CALLBACK(&DesktopWindow::unmapped));
    add("notify::is-active", G_CALLBACK(&DesktopWindow::activeChanged));
    add("realize", G_CALLBACK(&DesktopWindow::realized), When::afterDefault);
    add("destroy", G_CALLBACK(&DesktopWindow::destroyed));
}

void DesktopWindow::forgetWindow()
{
    // Its widgets go with the window's: a panel lying in it leaves first.
    if (m_embeddedPanel != nullptr)
        m_embeddedPanel->leaveHost();
    leaveHost();
    stopPatience();
    m_signals.clear();
    m_transition = false;
    m_mapped = false;
    if (m_window != nullptr) {
        g_object_remove_weak_pointer(G_OBJECT(m_window), reinterpret_cast<gpointer*>(&m_window));
        m_window = nullptr;
    }
}

void DesktopWindow::post(SystemNotification notification)
{
    m_notifications->post(notification, this);
}

// MARK: - Content

ContentView* DesktopWindow::contentView()
{
    if (m_window == nullptr)
        return m_contentView.get();
    if (!m_contentView && (m_kind == Kind::panel || gtk_bin_get_child(GTK_BIN(m_window)) != nullptr))
        m_contentView = std::make_unique<DesktopContentView>(m_window, m_monitors, m_views);
    return m_contentView.get();
}

void DesktopWindow::setContent(std::shared_ptr<WindowContent> content)
{
    // The renderer draws its own window.
    if (m_kind != Kind::panel || m_window == nullptr)
        return;
    const bool wasOnScreen = onScreen();
    const bool wasEmbedded = m_embeddedIn != nullptr;
    leaveHost();
    if (m_contentWidget) {
        gtk_container_remove(GTK_CONTAINER(m_window), m_contentWidget->widget());
        m_contentWidget.reset();
    }
    m_content = std::move(content);
    if (m_content)
        m_contentWidget = m_views->contentView(m_content);
    if (m_contentWidget) {
        gtk_container_add(GTK_CONTAINER(m_window), m_contentWidget->widget());
        gtk_widget_show(m_contentWidget->widget());
    }
    if (wasEmbedded)
        embed();
    if (wasOnScreen && m_content) {
        // Held: the content may replace itself.
        const std::shared_ptr<WindowContent> shown = m_content;
        shown->didAppear();
    }
}

bool DesktopWindow::onScreen() const
{
    if (m_embeddedIn != nullptr)
        return m_embeddedIn->onScreen();
    return m_window != nullptr && m_mapped && !isMiniaturized();
}

// MARK: - Embedding

void DesktopWindow::setEmbeddingHost(EmbeddingHost host)
{
    if (m_kind == Kind::panel)
        m_embeddingHost = std::move(host);
}

bool DesktopWindow::embed()
{
    DesktopWindow* host = m_embeddingHost ? m_embeddingHost() : nullptr;
    if (host == nullptr || host == this || host->m_window == nullptr || m_window == nullptr || !m_contentWidget)
        return false;
    if (m_embeddedIn == host)
        return true;
    leaveHost();
    if (host->m_embeddedPanel != nullptr)
        host->m_embeddedPanel->leaveHost();
    auto* view = dynamic_cast<DesktopContentView*>(host->contentView());
    GtkWidget* container = view != nullptr ? view->overlayContainer() : nullptr;
    if (container == nullptr)
        return false;
    GtkWidget* widget = m_contentWidget->widget();
    gtk_container_remove(GTK_CONTAINER(m_window), widget);
    gtk_overlay_add_overlay(GTK_OVERLAY(container), widget);
    gtk_widget_show(widget);
    m_embeddedIn = host;
    host->m_embeddedPanel = this;
    host->applyMouseEvents();
    // The renderer's drawing area held the keyboard; the page's primary
    // control takes it, as it would in a window of its own.
    m_contentWidget->focusPrimary();
    return true;
}

void DesktopWindow::leaveHost()
{
    DesktopWindow* host = std::exchange(m_embeddedIn, nullptr);
    if (host == nullptr)
        return;
    host->m_embeddedPanel = nullptr;
    if (m_contentWidget) {
        GtkWidget* widget = m_contentWidget->widget();
        // The panel's widget holds its own reference across the move.
        if (GtkWidget* parent = gtk_widget_get_parent(widget))
            gtk_container_remove(GTK_CONTAINER(parent), widget);
        if (m_window != nullptr)
            gtk_container_add(GTK_CONTAINER(m_window), widget);
    }
    host->applyMouseEvents();
}

void DesktopWindow::appearIfNew(bool wasOnScreen)
{
    if (wasOnScreen || !onScreen() || !m_content)
        return;
    const std::shared_ptr<WindowContent> shown = m_content;
    shown->didAppear();
}

// MARK: - Attributes

void DesktopWindow::setAttributes(const WindowAttributes& attributes)
{
    m_attributes = attributes;
    m_attributes.styleMask &= ~WindowAttributes::fullScreen;
    applyAttributes();
}

std::uint64_t DesktopWindow::styleMask() const
{
    return m_fullScreen ? (m_attributes.styleMask | WindowAttributes::fullScreen) : m_attributes.styleMask;
}

void DesktopWindow::applyAttributes()
{
    if (m_window == nullptr)
        return;
    const std::uint64_t style = m_attributes.styleMask;
    gtk_window_set_title(m_window, m_attributes.titleVisible ? m_attributes.title.c_str() : "");
    gtk_window_set_decorated(m_window, (style & WindowAttributes::titled) != 0);
    gtk_window_set_deletable(m_window, (style & WindowAttributes::closable) != 0);
    gtk_window_set_resizable(m_window, (style & WindowAttributes::resizable) != 0);
    gtk_window_set_keep_above(m_window, m_attributes.floatingPanel || m_attributes.level > 0);
    // A window manager reads the type only when the window is mapped; the
    // renderer's window keeps the type its owner gave it.
    if (m_kind == Kind::panel && !gtk_widget_get_mapped(GTK_WIDGET(m_window)))
        gtk_window_set_type_hint(
            m_window, m_attributes.floatingPanel ? GDK_WINDOW_TYPE_HINT_UTILITY : GDK_WINDOW_TYPE_HINT_NORMAL);
    if (m_kind == Kind::panel) {
        // Without a compositor the panel is drawn opaque, by its theme.
        const bool clear = (m_attributes.clearBackground || !m_attributes.opaque)
            && gdk_screen_is_composited(gtk_widget_get_screen(GTK_WIDGET(m_window)));
        gtk_widget_set_app_paintable(GTK_WIDGET(m_window), clear ? TRUE : FALSE);
    }
    applyToGdkWindow();
}

void DesktopWindow::applyToGdkWindow()
{
    GdkWindow* gdkWindow = m_window != nullptr ? gtk_widget_get_window(GTK_WIDGET(m_window)) : nullptr;
    if (gdkWindow == nullptr)
        return;
    const std::uint64_t style = m_attributes.styleMask;
    unsigned functions = 0;
    if (m_attributes.movable)
        functions |= GDK_FUNC_MOVE;
    if ((style & WindowAttributes::resizable) != 0)
        functions |= GDK_FUNC_RESIZE | GDK_FUNC_MAXIMIZE;
    if ((style & WindowAttributes::miniaturizable) != 0)
        functions |= GDK_FUNC_MINIMIZE;
    if ((style & WindowAttributes::closable) != 0)
        functions |= GDK_FUNC_CLOSE;
    gdk_window_set_functions(gdkWindow, static_cast<GdkWMFunction>(functions));
#ifdef GDK_WINDOWING_X11
    // The window manager draws the title bar, and reads the variant from
    // the window; GTK's own setting would darken every window of the
    // process, the renderer's widgets included.
    // GDK takes the variant's name without const, and copies it.
    static char dark[] = "dark";
    if (GDK_IS_X11_WINDOW(gdkWindow))
        gdk_x11_window_set_theme_variant(gdkWindow, m_attributes.darkAppearance ? dark : nullptr);
#endif
}

void DesktopWindow::setButtonAction(WindowButton button, Action action)
{
    if (action)
        m_buttonActions[button] = std::move(action);
    else
        m_buttonActions.erase(button);
}

// MARK: - Frame

Rect DesktopWindow::frame() const
{
    return m_embeddedIn != nullptr ? m_embeddedIn->frame() : m_frame;
}

std::optional<Rect> DesktopWindow::actualFrame() const
{
    if (m_window == nullptr || !gtk_widget_get_mapped(GTK_WIDGET(m_window)))
        return std::nullopt;
    GdkWindow* gdkWindow = gtk_widget_get_window(GTK_WIDGET(m_window));
    GdkRectangle extents;
    gdk_window_get_frame_extents(gdkWindow, &extents);
    // Until the window manager has framed a new window GDK answers with a
    // 1 × 1 placeholder at the origin, even in the window's first
    // configure-event; taken for the frame, it would shrink the window and
    // everything that follows it. A real frame holds the content.
    if (extents.width < gdk_window_get_width(gdkWindow) || extents.height < gdk_window_get_height(gdkWindow))
        return std::nullopt;
    return DesktopWindowCoordinates::toScreen(extents, displayOf(m_window));
}

void DesktopWindow::setFrame(const Rect& frame, FrameDisplay display)
{
    if (m_window == nullptr)
        return;
    // Lying in its host, the panel has the host's frame.
    if (m_embeddedIn != nullptr) {
        m_frame = frame;
        return;
    }
    const Size oldSize = m_frame.size;
    m_frame = frame;
    m_requestedFrame = frame;
    moveAndResize(frame);
    if (display == FrameDisplay::immediate)
        gtk_widget_queue_draw(GTK_WIDGET(m_window));
    // Off screen no configure-event will tell.
    if (!m_mapped && frame.size != oldSize && frame.size != m_reportedSize) {
        m_reportedSize = frame.size;
        post(SystemNotification::windowDidResize);
    }
    followParent();
}

void DesktopWindow::moveAndResize(const Rect& frame)
{
    const GdkRectangle global = DesktopWindowCoordinates::toGlobal(frame, displayOf(m_window));
    // The default gravity places the window manager's frame, title bar
    // included, at the position; the size is the content's.
    gtk_window_move(m_window, global.x, global.y);
    const int width = std::max(1, global.width - static_cast<int>(m_decorations.width));
    const int height = std::max(1, global.height - static_cast<int>(m_decorations.height));
    gtk_window_resize(m_window, width, height);
}

void DesktopWindow::followParent()
{
    for (const auto& [child, ordering] : m_children) {
        if (child->m_frame != m_frame)
            child->setFrame(m_frame, FrameDisplay::immediate);
    }
}

void DesktopWindow::onConfigured(const GdkEventConfigure& event)
{
    const std::optional<Rect> actual = actualFrame();
    if (!actual)
        return;
    const Size decorations(
        std::max(0.0, actual->width() - event.width), std::max(0.0, actual->height() - event.height));
    if (decorations != m_decorations) {
        m_decorations = decorations;
        // Asked for before the title bar's size was known: ask again.
        if (m_requestedFrame && *m_requestedFrame != *actual) {
            moveAndResize(*m_requestedFrame);
            return;
        }
    }
    if (m_requestedFrame && *m_requestedFrame == *actual)
        m_requestedFrame.reset();
    m_frame = *actual;
    if (m_frame.size != m_reportedSize) {
        m_reportedSize = m_frame.size;
        post(SystemNotification::windowDidResize);
    }
    followParent();
}

// MARK: - Ordering

bool DesktopWindow::isVisible() const
{
    if (m_embeddedIn != nullptr)
        return m_embeddedIn->isVisible();
    return m_window != nullptr && gtk_widget_get_visible(GTK_WIDGET(m_window)) && !isMiniaturized();
}

bool DesktopWindow::isKeyWindow() const
{
    if (m_embeddedIn != nullptr)
        return m_embeddedIn->isKeyWindow();
    return m_window != nullptr && gtk_window_is_active(m_window);
}

bool DesktopWindow::isMiniaturized() const
{
    if (m_embeddedIn != nullptr)
        return m_embeddedIn->isMiniaturized();
    GdkWindow* gdkWindow = m_window != nullptr ? gtk_widget_get_window(GTK_WIDGET(m_window)) : nullptr;
    return gdkWindow != nullptr && gtk_widget_get_visible(GTK_WIDGET(m_window))
        && (gdk_window_get_state(gdkWindow) & GDK_WINDOW_STATE_ICONIFIED) != 0;
}

void DesktopWindow::deminiaturize()
{
    if (m_window == nullptr || !isMiniaturized())
        return;
    // Some window managers ignore deiconifying alone; presenting is what
    // they all answer.
    gtk_window_deiconify(m_window);
    gtk_window_present_with_time(m_window, gtk_get_current_event_time());
    m_frontOrder = nextFrontOrder();
}

void DesktopWindow::orderOut()
{
    if (m_window == nullptr)
        return;
    leaveHost();
    gtk_widget_hide(GTK_WIDGET(m_window));
    for (const auto& [child, ordering] : m_children)
        child->orderOut();
}

void DesktopWindow::orderFront()
{
    if (m_window == nullptr)
        return;
    if (m_embeddingHost) {
        const bool wasOnScreen = onScreen();
        if (embed()) {
            gtk_widget_show(GTK_WIDGET(m_embeddedIn->m_window));
            m_frontOrder = nextFrontOrder();
            showChildren();
            appearIfNew(wasOnScreen);
            return;
        }
    }
    gtk_widget_show(GTK_WIDGET(m_window));
    if (GdkWindow* gdkWindow = gtk_widget_get_window(GTK_WIDGET(m_window)))
        gdk_window_raise(gdkWindow);
    m_frontOrder = nextFrontOrder();
    showChildren();
}

void DesktopWindow::makeKeyAndOrderFront()
{
    if (m_window == nullptr)
        return;
    if (m_embeddingHost) {
        const bool wasOnScreen = onScreen();
        if (embed()) {
            gtk_window_present_with_time(m_embeddedIn->m_window, gtk_get_current_event_time());
            m_frontOrder = nextFrontOrder();
            showChildren();
            appearIfNew(wasOnScreen);
            return;
        }
    }
    gtk_window_present_with_time(m_window, gtk_get_current_event_time());
    m_frontOrder = nextFrontOrder();
    showChildren();
}

void DesktopWindow::showChildren()
{
    for (const auto& [child, ordering] : m_children) {
        if (ordering == WindowOrdering::above)
            child->orderFront();
        else if (child->m_window != nullptr)
            gtk_widget_show(GTK_WIDGET(child->m_window));
    }
}

void DesktopWindow::setMouseEvents(MouseEvents events)
{
    m_mouseEvents = events;
    applyMouseEvents();
}

void DesktopWindow::applyMouseEvents()
{
    if (m_window == nullptr)
        return;
    if (m_mouseEvents == MouseEvents::ignored && m_embeddedPanel == nullptr) {
        // An empty input shape: the pointer falls through to what lies
        // beneath.
        cairo_region_t* nothing = cairo_region_create();
        gtk_widget_input_shape_combine_region(GTK_WIDGET(m_window), nothing);
        cairo_region_destroy(nothing);
    } else {
        gtk_widget_input_shape_combine_region(GTK_WIDGET(m_window), nullptr);
    }
}

// MARK: - Full screen

void DesktopWindow::toggleFullScreen()
{
    if (m_window == nullptr || m_transition)
        return;
    m_transition = true;
    m_enteringFullScreen = !m_fullScreen;
    post(m_enteringFullScreen ? SystemNotification::windowWillEnterFullScreen
                              : SystemNotification::windowWillExitFullScreen);
    // An observer may have destroyed the window or ended the transition.
    if (m_window == nullptr || !m_transition)
        return;
    startPatience();
    if (m_enteringFullScreen)
        gtk_window_fullscreen(m_window);
    else
        gtk_window_unfullscreen(m_window);
}

void DesktopWindow::finishFullScreen()
{
    stopPatience();
    m_transition = false;
    post(m_enteringFullScreen ? SystemNotification::windowDidEnterFullScreen
                              : SystemNotification::windowDidExitFullScreen);
}

void DesktopWindow::startPatience()
{
    stopPatience();
    static GSourceFuncs functions = {nullptr, nullptr, &DesktopWindow::patienceEnded, nullptr, nullptr, nullptr};
    m_patience = SourcePointer::adopt(g_source_new(&functions, sizeof(PatienceSource)));
    reinterpret_cast<PatienceSource*>(m_patience.get())->owner = this;
    const auto patience = std::chrono::duration_cast<std::chrono::microseconds>(fullScreenPatience).count();
    g_source_set_ready_time(m_patience.get(), g_get_monotonic_time() + patience);
    g_source_set_name(m_patience.get(), "velmora full-screen patience");
    g_source_attach(m_patience.get(), nullptr);
}

void DesktopWindow::stopPatience()
{
    if (m_patience) {
        g_source_destroy(m_patience.get());
        m_patience.reset();
    }
}

gboolean DesktopWindow::patienceEnded(GSource* source, GSourceFunc /*callback*/, gpointer /*data*/)
{
    DesktopWindow* window = reinterpret_cast<PatienceSource*>(source)->owner;
    try {
        if (window->m_transition)
            window->finishFullScreen();
    } catch (...) {
        GLibSignal::reportFailure("ending a full-screen transition");
    }
    return G_SOURCE_REMOVE;
}

void DesktopWindow::onStateChanged(GdkWindowState changed, GdkWindowState state)
{
    if ((changed & GDK_WINDOW_STATE_FULLSCREEN) != 0) {
        m_fullScreen = (state & GDK_WINDOW_STATE_FULLSCREEN) != 0;
        if (m_transition) {
            // Whichever way the window manager went, the transition is
            // over; the styleMask says where it ended.
            finishFullScreen();
        } else {
            m_enteringFullScreen = m_fullScreen;
            post(m_fullScreen ? SystemNotification::windowWillEnterFullScreen
                              : SystemNotification::windowWillExitFullScreen);
            post(m_fullScreen ? SystemNotification::windowDidEnterFullScreen
                              : SystemNotification::windowDidExitFullScreen);
        }
    }
    if (m_window == nullptr)
        return;
    if ((changed & GDK_WINDOW_STATE_ICONIFIED) != 0) {
        if ((state & GDK_WINDOW_STATE_ICONIFIED) != 0) {
            post(SystemNotification::windowWillMiniaturize);
        } else {
            appearIfNew(false);
            post(SystemNotification::windowDidDeminiaturize);
        }
    }
    if (m_window == nullptr)
        return;
    const auto zoom = m_buttonActions.find(WindowButton::zoom);
    if ((changed & state & GDK_WINDOW_STATE_MAXIMIZED) != 0 && zoom != m_buttonActions.end() && !m_fullScreen
        && !maximizingIsTheWindowManagers(m_window)) {
        gtk_window_unmaximize(m_window);
        // A copy: the action may replace itself.
        const Action action = zoom->second;
        action();
    }
}

// MARK: - Children

void DesktopWindow::addChildWindow(Window& child, WindowOrdering ordering)
{
    auto* desktop = dynamic_cast<DesktopWindow*>(&child);
    if (desktop == nullptr || desktop == this || desktop->m_window == nullptr || m_window == nullptr)
        return;
    if (desktop->m_parent != nullptr)
        desktop->m_parent->removeChildWindow(*desktop);
    desktop->m_parent = this;
    m_children.emplace_back(desktop, ordering);
    // The window manager keeps a transient window above the one it belongs
    // to: the child, or for a child ordered below, the parent. A panel that
    // lies in its host is above it already.
    // Joined, the two are one window to the user: the pond's entry in the
    // taskbar stands for both.
    for (DesktopWindow* joined : {this, desktop}) {
        if (joined->m_kind == Kind::panel)
            gtk_window_set_skip_taskbar_hint(joined->m_window, TRUE);
    }
    const bool embedding = m_embeddingHost || desktop->m_embeddingHost;
    if (!embedding && ordering == WindowOrdering::above)
        gtk_window_set_transient_for(desktop->m_window, m_window);
    else if (!embedding)
        gtk_window_set_transient_for(m_window, desktop->m_window);
    if (gtk_widget_get_visible(GTK_WIDGET(m_window)))
        showChildren();
}

void DesktopWindow::removeChildWindow(Window& child)
{
    auto* desktop = dynamic_cast<DesktopWindow*>(&child);
    if (desktop == nullptr || desktop->m_parent != this)
        return;
    std::erase_if(m_children, [desktop](const auto& entry) { return entry.first == desktop; });
    desktop->m_parent = nullptr;
    for (DesktopWindow* parted : {this, desktop}) {
        if (parted->m_kind == Kind::panel && parted->m_window != nullptr)
            gtk_window_set_skip_taskbar_hint(parted->m_window, FALSE);
    }
    if (desktop->m_window != nullptr && gtk_window_get_transient_for(desktop->m_window) == m_window)
        gtk_window_set_transient_for(desktop->m_window, nullptr);
    if (m_window != nullptr && gtk_window_get_transient_for(m_window) == desktop->m_window)
        gtk_window_set_transient_for(m_window, nullptr);
}

// MARK: - GTK's signals

gboolean DesktopWindow::deleted(GtkWidget* /*widget*/, GdkEvent* /*event*/, gpointer self)
{
    auto* window = static_cast<DesktopWindow*>(self);
    try {
        if (const auto close = window->m_buttonActions.find(WindowButton::close);
            close != window->m_buttonActions.end()) {
            const Action action = close->second;
            action();
            return TRUE;
        }
        // Our panels stay for the life of the process; so does a window its
        // attributes keep.
        if (window->m_kind == Kind::panel || !window->m_attributes.releasedWhenClosed) {
            window->orderOut();
            return TRUE;
        }
    } catch (...) {
        GLibSignal::reportFailure("closing a window");
        return TRUE;
    }
    return FALSE;
}

gboolean DesktopWindow::stateChanged(GtkWidget* /*widget*/, GdkEventWindowState* event, gpointer self)
{
    try {
        static_cast<DesktopWindow*>(self)->onStateChanged(event->changed_mask, event->new_window_state);
    } catch (...) {
        GLibSignal::reportFailure("following a window's state");
    }
    return FALSE;
}

gboolean DesktopWindow::configured(GtkWidget* /*widget*/, GdkEventConfigure* event, gpointer self)
{
    try {
        static_cast<DesktopWindow*>(self)->onConfigured(*event);
    } catch (...) {
        GLibSignal::reportFailure("following a window's frame");
    }
    return FALSE;
}

gboolean DesktopWindow::mapped(GtkWidget* /*widget*/, GdkEvent* /*event*/, gpointer self)
{
    auto* window = static_cast<DesktopWindow*>(self);
    try {
        const bool wasOnScreen = window->onScreen();
        window->m_mapped = true;
        window->appearIfNew(wasOnScreen);
        if (window->m_embeddedPanel != nullptr)
            window->m_embeddedPanel->appearIfNew(wasOnScreen);
    } catch (...) {
        GLibSignal::reportFailure("showing a window's content");
    }
    return FALSE;
}

gboolean DesktopWindow::unmapped(GtkWidget* /*widget*/, GdkEvent* /*event*/, gpointer self)
{
    static_cast<DesktopWindow*>(self)->m_mapped = false;
    return FALSE;
}

void DesktopWindow::activeChanged(GObject* /*object*/, GParamSpec* /*property*/, gpointer self)
{
    auto* window = static_cast<DesktopWindow*>(self);
    try {
        const bool active = window->isKeyWindow();
        if (active)
            window->m_frontOrder = nextFrontOrder();
        const bool resigned = window->m_wasActive && !active;
        window->m_wasActive = active;
        if (resigned)
            window->post(SystemNotification::windowDidResignKey);
    } catch (...) {
        GLibSignal::reportFailure("following the keyboard focus");
    }
}

void DesktopWindow::realized(GtkWidget* /*widget*/, gpointer self)
{
    static_cast<DesktopWindow*>(self)->applyToGdkWindow();
}

void DesktopWindow::destroyed(GtkWidget* /*widget*/, gpointer self)
{
    static_cast<DesktopWindow*>(self)->forgetWindow();
}

} // namespace velmora
