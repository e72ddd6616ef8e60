#pragma once

#include <vector>

#include <gdk/gdk.h>

#include "VelmoraCore/Rect.h"
#include "VelmoraMac/Platform/WindowSystem.h"

namespace velmora {

// The one place where GDK's global coordinates (origin at the top left of
// the whole desktop, y growing downwards) meet the shell's screen
// coordinates (origin at the lower left of the primary screen's full frame,
// y growing upwards). Every frame and screen the desktop windows report or
// take passes through here, so the two can never drift apart.
//
// The primary screen is GDK's primary monitor, or the first monitor when
// none is marked primary (a bare X server); with no monitor at all the
// desktop's origin stands in for it. Wayland hides global positions from
// clients, so there the frames are as good as the compositor tells.
// Main thread only (GTK's).
class DesktopWindowCoordinates {
public:
    // In GDK's global coordinates.
    [[nodiscard]] static GdkRectangle primaryMonitorGeometry(GdkDisplay* display);
    [[nodiscard]] static Rect toScreen(const GdkRectangle& global, GdkDisplay* display);
    // Rounded to whole pixels, which is all a window system places.
    [[nodiscard]] static GdkRectangle toGlobal(const Rect& screen, GdkDisplay* display);
    // The primary monitor first, then the others in GDK's order.
    [[nodiscard]] static std::vector<Screen> screens(GdkDisplay* display);
};

} // namespace velmora
