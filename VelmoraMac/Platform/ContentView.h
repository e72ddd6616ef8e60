#pragma once

#include <memory>

#include "VelmoraCore/Point.h"
#include "VelmoraCore/Rect.h"
#include "VelmoraCore/Size.h"

namespace velmora {

// A view that the shell lays over a window's content, covering it edge to
// edge, above what the window's owner draws there. Its coordinates are
// flipped: the origin is the top left corner and y grows downwards.
// Main thread only.
class OverlayView {
public:
    OverlayView() = default;
    OverlayView(const OverlayView&) = delete;
    OverlayView& operator=(const OverlayView&) = delete;
    OverlayView(OverlayView&&) = delete;
    OverlayView& operator=(OverlayView&&) = delete;
    virtual ~OverlayView() = default;

    // Given by the content view it lies on, whenever that changes size.
    virtual void setSize(Size size) = 0;
    // A hidden overlay is not drawn and takes no clicks.
    [[nodiscard]] virtual bool isHidden() const = 0;
    // Whether a click at `point` is the overlay's; false lets the click,
    // like drags and wheel events there, through to the content beneath.
    [[nodiscard]] virtual bool takesClick(Point point) const = 0;
    // The user clicked at `point`, which takesClick accepted.
    virtual void click(Point point) = 0;
};

// The view that fills a window's content area.
// Main thread only.
class ContentView {
public:
    ContentView() = default;
    ContentView(const ContentView&) = delete;
    ContentView& operator=(const ContentView&) = delete;
    ContentView(ContentView&&) = delete;
    ContentView& operator=(ContentView&&) = delete;
    virtual ~ContentView() = default;

    // In the view's own coordinates.
    [[nodiscard]] virtual Rect bounds() const = 0;
    // Whether y grows downwards from the top edge in the view's coordinates.
    [[nodiscard]] virtual bool isFlipped() const = 0;
    // A point in the window's coordinates (origin at the lower left of the
    // content, y growing upwards) in the view's coordinates.
    [[nodiscard]] virtual Point convertFromWindow(Point point) const = 0;
    // Lays `overlay` over the whole view, its four edges pinned to the
    // view's, from now on.
    virtual void addOverlay(std::shared_ptr<OverlayView> overlay) = 0;
};

} // namespace velmora
