#include "HeadlessContentView.h"

#include <cstddef>
#include <utility>

namespace velmora {

HeadlessContentView::HeadlessContentView(Rect bounds, Orientation orientation)
    : m_bounds(bounds)
    , m_orientation(orientation)
{
}

Point HeadlessContentView::convertFromWindow(Point point) const
{
    // The content view fills the window's content area, whose origin is
    // its lower left corner.
    if (isFlipped())
        return {m_bounds.minX() + point.x, m_bounds.minY() + m_bounds.height() - point.y};
    return {m_bounds.minX() + point.x, m_bounds.minY() + point.y};
}

void HeadlessContentView::addOverlay(std::shared_ptr<OverlayView> overlay)
{
    if (!overlay)
        return;
    overlay->setSize(m_bounds.size);
    m_overlays.push_back(std::move(overlay));
}

void HeadlessContentView::setBounds(Rect bounds)
{
    m_bounds = bounds;
    for (const auto& overlay : m_overlays)
        overlay->setSize(bounds.size);
}

Point HeadlessContentView::overlayPoint(Point windowPoint) const
{
    return {windowPoint.x, m_bounds.height() - windowPoint.y};
}

bool HeadlessContentView::click(Point point)
{
    const Point local = overlayPoint(point);
    // The topmost first: the one added last.
    for (std::size_t index = m_overlays.size(); index-- > 0;) {
        const OverlayView& overlay = *m_overlays[index];
        if (!overlay.isHidden() && overlay.takesClick(local)) {
            // Held: the click may remove overlays.
            const std::shared_ptr<OverlayView> target = m_overlays[index];
            target->click(local);
            return true;
        }
    }
    return false;
}

} // namespace velmora
