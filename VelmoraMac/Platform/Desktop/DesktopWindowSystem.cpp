#include "DesktopWindowSystem.h"

#include <algorithm>

#ifdef GDK_WINDOWING_WAYLAND
#include <gdk/gdkwayland.h>
#endif

#include "DesktopEventMonitors.h"
#include "DesktopWindowCoordinates.h"
#include "VelmoraMac/Platform/SystemNotificationHub.h"

namespace velmora {

DesktopWindowSystem::DesktopWindowSystem(std::shared_ptr<SystemNotificationHub> notifications,
    DesktopEventMonitors& monitors, NotNullShared<GtkViewFactory> views)
    : m_notifications(std::move(notifications))
    , m_monitors(monitors)
    , m_views(std::move(views))
{
    if (GdkScreen* screen = gdk_screen_get_default()) {
        m_signals.push_back(std::make_unique<GLibSignal>(
            screen, "monitors-changed", G_CALLBACK(&DesktopWindowSystem::screenChanged), this));
        m_signals.push_back(std::make_unique<GLibSignal>(
            screen, "size-changed", G_CALLBACK(&DesktopWindowSystem::screenChanged), this));
    }
    m_monitors.setWindowLookup([this](GdkWindow* toplevel) { return windowFor(toplevel); });
}

DesktopWindowSystem::~DesktopWindowSystem()
{
    m_monitors.setWindowLookup({});
    m_signals.clear();
    // Children are let go before their parents' windows are destroyed.
    m_adopted.reset();
    m_panels.clear();
}

void DesktopWindowSystem::screenChanged(GdkScreen* /*screen*/, gpointer self)
{
    try {
        static_cast<DesktopWindowSystem*>(self)->m_notifications->post(
            SystemNotification::applicationDidChangeScreenParameters);
    } catch (...) {
        GLibSignal::reportFailure("following the screens");
    }
}

bool DesktopWindowSystem::isPanel(GtkWindow* window) const
{
    return std::ranges::any_of(m_panels, [window](const auto& panel) { return panel->gtkWindow() == window; });
}

void DesktopWindowSystem::adoptRendererWindow() const
{
    if (m_adopted && m_adopted->gtkWindow() != nullptr)
        return;
    m_adopted.reset();
    GList* toplevels = gtk_window_list_toplevels();
    for (GList* entry = toplevels; entry != nullptr; entry = entry->next) {
        auto* window = static_cast<GtkWindow*>(entry->data);
        // Menus, tooltips and other pop-ups are toplevels too.
        if (gtk_window_get_window_type(window) != GTK_WINDOW_TOPLEVEL || isPanel(window)
            || gtk_bin_get_child(GTK_BIN(window)) == nullptr)
            continue;
        m_adopted = std::make_shared<DesktopWindow>(
            DesktopWindow::Kind::adopted, window, m_notifications, m_monitors, m_views);
        break;
    }
    g_list_free(toplevels);
}

std::vector<std::shared_ptr<DesktopWindow>> DesktopWindowSystem::liveWindows() const
{
    adoptRendererWindow();
    std::vector<std::shared_ptr<DesktopWindow>> windows;
    if (m_adopted)
        windows.push_back(m_adopted);
    windows.insert(windows.end(), m_panels.begin(), m_panels.end());
    std::ranges::stable_sort(
        windows, [](const auto& first, const auto& second) { return first->frontOrder() > second->frontOrder(); });
    return windows;
}

std::vector<std::shared_ptr<Window>> DesktopWindowSystem::windows() const
{
    const std::vector<std::shared_ptr<DesktopWindow>> windows = liveWindows();
    return {windows.begin(), windows.end()};
}

std::vector<Screen> DesktopWindowSystem::screens() const
{
    return DesktopWindowCoordinates::screens(gdk_display_get_default());
}

std::optional<Screen> DesktopWindowSystem::mainScreen() const
{
    const std::vector<Screen> screens = this->screens();
    if (screens.empty())
        return std::nullopt;
    for (const auto& window : liveWindows()) {
        if (!window->isKeyWindow())
            continue;
        const Rect frame = window->frame();
        const auto holding = std::ranges::find_if(screens, [&frame](const Screen& screen) {
            return screen.frame.contains({frame.midX(), frame.midY()});
        });
        if (holding != screens.end())
            return *holding;
    }
    return screens.front();
}

std::shared_ptr<Window> DesktopWindowSystem::createPanel(const Rect& frame, const WindowAttributes& attributes)
{
    GtkWidget* widget = gtk_window_new(GTK_WINDOW_TOPLEVEL);
    GdkScreen* screen = gtk_widget_get_screen(widget);
    if (GdkVisual* visual = gdk_screen_get_rgba_visual(screen); visual != nullptr && gdk_screen_is_composited(screen))
        gtk_widget_set_visual(widget, visual);
    // Placed before the window object reads its frame, so that making it
    // reports no resize.
    const GdkRectangle global = DesktopWindowCoordinates::toGlobal(frame, gdk_screen_get_display(screen));
    gtk_window_set_default_size(GTK_WINDOW(widget), std::max(1, global.width), std::max(1, global.height));
    gtk_window_move(GTK_WINDOW(widget), global.x, global.y);
    auto panel = std::make_shared<DesktopWindow>(
        DesktopWindow::Kind::panel, GTK_WINDOW(widget), m_notifications, m_monitors, m_views);
#ifdef GDK_WINDOWING_WAYLAND
    // The compositor would place a panel of its own anywhere, at any size:
    // it lies in the renderer's window instead.
    if (GDK_IS_WAYLAND_DISPLAY(gdk_screen_get_display(screen))) {
        panel->setEmbeddingHost([this]() -> DesktopWindow* {
            adoptRendererWindow();
            return m_adopted.get();
        });
    }
#endif
    panel->setAttributes(attributes);
    panel->setFrame(frame, FrameDisplay::deferred);
    m_panels.push_back(panel);
    return panel;
}

Window* DesktopWindowSystem::windowFor(GdkWindow* toplevel) const
{
    if (toplevel == nullptr)
        return nullptr;
    for (const auto& candidate : liveWindows()) {
        GtkWindow* window = candidate->gtkWindow();
        // What happens in a panel lying in the window happens in the panel.
        if (window != nullptr && gtk_widget_get_window(GTK_WIDGET(window)) == toplevel)
            return candidate->embeddedPanel() != nullptr ? candidate->embeddedPanel() : candidate.get();
    }
    return nullptr;
}

} // namespace velmora
