#pragma once

#include <memory>
#include <vector>

#include <gtk/gtk.h>

#include "VelmoraMac/Platform/ContentView.h"
#include "VelmoraMac/Platform/GtkViewFactory.h"
#include "VelmoraMac/Platform/NotNullShared.h"
#include "VelmoraMac/Platform/PlatformToken.h"

namespace velmora {

class DesktopEventMonitors;

// The content area of a GTK window: what its child widget covers, in the
// widget's own coordinates, which GTK flips (origin at the top left, y
// growing downwards).
//
// An overlay is drawn by the widget the shell's view factory makes for it,
// and not laid at all when the factory makes none. The first overlay moves
// the window's child into a GtkOverlay, beneath the overlays' widgets (a
// widget that draws with OpenGL is realized anew by the move, as any
// reparenting does). The overlays let every event through to the child; a
// filter on the process's events takes a primary click whose press lands
// where an overlay takes clicks (the topmost first, as it is drawn), and
// gives the overlay the click on release. A press that went to the child
// takes its release along, wherever the pointer is let go.
//
// The window is watched weakly: once GTK destroys it the view is empty
// and takes no clicks.
// Main thread only (GTK's).
class DesktopContentView final : public ContentView {
public:
    DesktopContentView(GtkWindow* window, DesktopEventMonitors& monitors, NotNullShared<GtkViewFactory> views);
    DesktopContentView(const DesktopContentView&) = delete;
    DesktopContentView& operator=(const DesktopContentView&) = delete;
    DesktopContentView(DesktopContentView&&) = delete;
    DesktopContentView& operator=(DesktopContentView&&) = delete;
    ~DesktopContentView() override;

    [[nodiscard]] Rect bounds() const override;
    [[nodiscard]] bool isFlipped() const override { return true; }
    [[nodiscard]] Point convertFromWindow(Point point) const override;
    void addOverlay(std::shared_ptr<OverlayView> overlay) override;

    // The GtkOverlay over the window's child, made on first use; none once
    // the window is gone. A widget added to it lies above every overlay.
    [[nodiscard]] GtkWidget* overlayContainer();
    // True when `event` was a click of an overlay's, which the child must
    // not see.
    bool filter(const GdkEvent& event);

private:
    struct LaidOverlay {
        std::shared_ptr<OverlayView> overlay;
        std::unique_ptr<GtkViewFactory::View> view;
    };

    // The topmost overlay that takes a click at the event's position.
    [[nodiscard]] const LaidOverlay* overlayAt(const GdkEventButton& button, Point& local) const;
    [[nodiscard]] bool isInWindow(GdkWindow* window) const;
    void holdOverlayContainer();

    GtkWindow* m_window;
    DesktopEventMonitors& m_monitors;
    NotNullShared<GtkViewFactory> m_views;
    // The GtkOverlay between the window and its child, once there is one.
    GtkWidget* m_container = nullptr;
    // Bottom to top.
    std::vector<LaidOverlay> m_overlays;
    // The overlay a press went to, until its release.
    std::shared_ptr<OverlayView> m_pressed;
    std::unique_ptr<PlatformToken> m_filter;
};

} // namespace velmora
