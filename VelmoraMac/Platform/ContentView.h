#pragma once

#include <memory>

#include "OverlayView.h"
#include "VelmoraCore/Point.h"
#include "VelmoraCore/Rect.h"

namespace velmora {

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
