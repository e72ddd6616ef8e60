#pragma once

#include "VelmoraCore/Point.h"
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

} // namespace velmora
