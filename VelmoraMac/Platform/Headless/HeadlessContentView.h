#pragma once

#include <memory>
#include <vector>

#include "VelmoraMac/Platform/ContentView.h"

namespace velmora {

// A content view in memory with the bounds and flippedness a test gives
// it. click() plays a click at a point of the window: the topmost overlay
// that takes it gets it, otherwise it reaches the window's own content.
// Main thread only.
class HeadlessContentView final : public ContentView {
public:
    enum class Orientation : std::uint8_t {
        // y grows upwards from the bottom edge.
        standard,
        // y grows downwards from the top edge.
        flipped,
    };

    HeadlessContentView(Rect bounds, Orientation orientation);

    [[nodiscard]] Rect bounds() const override { return m_bounds; }
    [[nodiscard]] bool isFlipped() const override { return m_orientation == Orientation::flipped; }
    [[nodiscard]] Point convertFromWindow(Point point) const override;
    void addOverlay(std::shared_ptr<OverlayView> overlay) override;

    // The overlays follow, as their pinned edges make them.
    void setBounds(Rect bounds);
    // A click at `point`, in the window's coordinates. True when an
    // overlay took it, false when it reached the window's own content.
    bool click(Point point);

    [[nodiscard]] const std::vector<std::shared_ptr<OverlayView>>& overlays() const { return m_overlays; }

private:
    // The overlays' own coordinates: flipped, from the top left of the
    // bounds.
    [[nodiscard]] Point overlayPoint(Point windowPoint) const;

    Rect m_bounds;
    Orientation m_orientation;
    std::vector<std::shared_ptr<OverlayView>> m_overlays;
};

} // namespace velmora
