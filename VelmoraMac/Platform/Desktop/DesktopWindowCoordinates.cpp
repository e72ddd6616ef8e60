#include "DesktopWindowCoordinates.h"

#include <cmath>

namespace velmora {

namespace {

GdkMonitor* primaryMonitor(GdkDisplay* display)
{
    if (display == nullptr)
        return nullptr;
    if (GdkMonitor* primary = gdk_display_get_primary_monitor(display))
        return primary;
    return gdk_display_get_n_monitors(display) > 0 ? gdk_display_get_monitor(display, 0) : nullptr;
}

int rounded(double value)
{
    return static_cast<int>(std::lround(value));
}

} // namespace

GdkRectangle DesktopWindowCoordinates::primaryMonitorGeometry(GdkDisplay* display)
{
    GdkRectangle geometry{0, 0, 0, 0};
    if (GdkMonitor* monitor = primaryMonitor(display))
        gdk_monitor_get_geometry(monitor, &geometry);
    return geometry;
}

Rect DesktopWindowCoordinates::toScreen(const GdkRectangle& global, GdkDisplay* display)
{
    const GdkRectangle primary = primaryMonitorGeometry(display);
    const int bottom = primary.y + primary.height;
    return {static_cast<double>(global.x - primary.x), static_cast<double>(bottom - (global.y + global.height)),
        static_cast<double>(global.width), static_cast<double>(global.height)};
}

GdkRectangle DesktopWindowCoordinates::toGlobal(const Rect& screen, GdkDisplay* display)
{
    const GdkRectangle primary = primaryMonitorGeometry(display);
    const int bottom = primary.y + primary.height;
    const int width = rounded(screen.width());
    const int height = rounded(screen.height());
    return {primary.x + rounded(screen.minX()), bottom - rounded(screen.minY()) - height, width, height};
}

std::vector<Screen> DesktopWindowCoordinates::screens(GdkDisplay* display)
{
    std::vector<Screen> screens;
    GdkMonitor* primary = primaryMonitor(display);
    if (primary == nullptr)
        return screens;
    const auto add = [&](GdkMonitor* monitor) {
        GdkRectangle geometry;
        GdkRectangle workArea;
        gdk_monitor_get_geometry(monitor, &geometry);
        gdk_monitor_get_workarea(monitor, &workArea);
        screens.push_back(Screen{toScreen(geometry, display), toScreen(workArea, display)});
    };
    add(primary);
    const int count = gdk_display_get_n_monitors(display);
    for (int index = 0; index < count; ++index) {
        GdkMonitor* monitor = gdk_display_get_monitor(display, index);
        if (monitor != primary)
            add(monitor);
    }
    return screens;
}

} // namespace velmora
