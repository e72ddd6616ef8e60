#include "DesktopContentView.h"

#include <cstddef>
#include <utility>

#include "DesktopEventMonitors.h"

namespace velmora {

namespace {

void watch(gpointer object, GtkWidget** pointer)
{
    if (object != nullptr)
        g_object_add_weak_pointer(G_OBJECT(object), reinterpret_cast<gpointer*>(pointer));
}

void unwatch(GtkWidget** pointer)
{
    if (*pointer != nullptr)
        g_object_remove_weak_pointer(G_OBJECT(*pointer), reinterpret_cast<gpointer*>(pointer));
}

} // namespace

DesktopContentView::DesktopContentView(
    GtkWindow* window, DesktopEventMonitors& monitors, NotNullShared<GtkViewFactory> views)
    : m_window(window)
    , m_monitors(monitors)
    , m_views(std::move(views))
{
    g_object_add_weak_pointer(G_OBJECT(window), reinterpret_cast<gpointer*>(&m_window));
}

DesktopContentView::~DesktopContentView()
{
    m_filter.reset();
    if (m_container != nullptr) {
        for (const LaidOverlay& laid : m_overlays)
            gtk_container_remove(GTK_CONTAINER(m_container), laid.view->widget());
    }
    unwatch(&m_container);
    if (m_window != nullptr)
        g_object_remove_weak_pointer(G_OBJECT(m_window), reinterpret_cast<gpointer*>(&m_window));
}

Rect DesktopContentView::bounds() const
{
    if (m_window == nullptr)
        return {};
    GtkWidget* child = gtk_bin_get_child(GTK_BIN(m_window));
    if (child != nullptr && gtk_widget_get_realized(child))
        return {0, 0, static_cast<double>(gtk_widget_get_allocated_width(child)),
            static_cast<double>(gtk_widget_get_allocated_height(child))};
    // Not laid out yet: the child will fill the window's content area.
    int width = 0;
    int height = 0;
    gtk_window_get_size(m_window, &width, &height);
    return {0, 0, static_cast<double>(width), static_cast<double>(height)};
}

Point DesktopContentView::convertFromWindow(Point point) const
{
    return {point.x, bounds().height() - point.y};
}

void DesktopContentView::holdOverlayContainer()
{
    if (m_container != nullptr || m_window == nullptr)
        return;
    GtkWidget* overlay = gtk_overlay_new();
    if (GtkWidget* child = gtk_bin_get_child(GTK_BIN(m_window))) {
        // Kept alive across the move: the window holds the only reference.
        g_object_ref(child);
        gtk_container_remove(GTK_CONTAINER(m_window), child);
        gtk_container_add(GTK_CONTAINER(overlay), child);
        g_object_unref(child);
    }
    gtk_container_add(GTK_CONTAINER(m_window), overlay);
    gtk_widget_show(overlay);
    m_container = overlay;
    watch(overlay, &m_container);
}

GtkWidget* DesktopContentView::overlayContainer()
{
    holdOverlayContainer();
    return m_container;
}

void DesktopContentView::addOverlay(std::shared_ptr<OverlayView> overlay)
{
    if (!overlay || m_window == nullptr)
        return;
    std::unique_ptr<GtkViewFactory::View> view = m_views->overlayView(overlay);
    if (!view)
        return;
    holdOverlayContainer();
    overlay->setSize(bounds().size);
    gtk_overlay_add_overlay(GTK_OVERLAY(m_container), view->widget());
    gtk_overlay_set_overlay_pass_through(GTK_OVERLAY(m_container), view->widget(), TRUE);
    m_overlays.push_back(LaidOverlay{std::move(overlay), std::move(view)});
    if (!m_filter)
        m_filter = m_monitors.addEventFilter([this](GdkEvent* event) { return event != nullptr && filter(*event); });
}

bool DesktopContentView::isInWindow(GdkWindow* window) const
{
    if (m_window == nullptr || window == nullptr)
        return false;
    GdkWindow* ours = gtk_widget_get_window(GTK_WIDGET(m_window));
    return ours != nullptr && gdk_window_get_toplevel(window) == ours;
}

const DesktopContentView::LaidOverlay* DesktopContentView::overlayAt(const GdkEventButton& button, Point& local) const
{
    GdkWindow* toplevel = gtk_widget_get_window(GTK_WIDGET(m_window));
    int originX = 0;
    int originY = 0;
    gdk_window_get_origin(toplevel, &originX, &originY);
    // The topmost first: the one added last.
    for (std::size_t index = m_overlays.size(); index-- > 0;) {
        const LaidOverlay& laid = m_overlays[index];
        int offsetX = 0;
        int offsetY = 0;
        if (laid.overlay->isHidden()
            || !gtk_widget_translate_coordinates(laid.view->widget(), GTK_WIDGET(m_window), 0, 0, &offsetX, &offsetY))
            continue;
        const Point point(button.x_root - originX - offsetX, button.y_root - originY - offsetY);
        if (laid.overlay->takesClick(point)) {
            local = point;
            return &laid;
        }
    }
    return nullptr;
}

bool DesktopContentView::filter(const GdkEvent& event)
{
    switch (event.type) {
    case GDK_BUTTON_PRESS:
    case GDK_2BUTTON_PRESS:
    case GDK_3BUTTON_PRESS:
    case GDK_BUTTON_RELEASE:
        break;
    default:
        return false;
    }
    const GdkEventButton& button = event.button;
    if (button.button != GDK_BUTTON_PRIMARY || !isInWindow(button.window))
        return false;
    Point local;
    const LaidOverlay* overlay = overlayAt(button, local);
    if (event.type != GDK_BUTTON_RELEASE) {
        if (overlay == nullptr)
            return false;
        // A double click reports its second press again, after the first.
        if (event.type == GDK_BUTTON_PRESS)
            m_pressed = overlay->overlay;
        return true;
    }
    if (!m_pressed)
        return false;
    // Held: the click may remove the overlay, or this view.
    const std::shared_ptr<OverlayView> pressed = std::exchange(m_pressed, nullptr);
    // Let go elsewhere: the press is cancelled, as a button's is.
    if (overlay != nullptr && overlay->overlay == pressed)
        pressed->click(local);
    return true;
}

} // namespace velmora
