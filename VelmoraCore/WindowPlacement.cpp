#include "WindowPlacement.h"

#include <algorithm>

namespace velmora::WindowPlacement {

namespace {

constexpr double margin = screenInset * 0.5;
// Keeps an empty or sub-point view from dividing the pointer by zero.
constexpr double smallestDivisor = 1;

// The room a screen offers along one side once the inset is kept free.
double room(double visibleLength)
{
    return std::max(visibleLength - screenInset, minimumSize);
}

} // namespace

Rect frame(const Rect& visible)
{
    const double width = std::min(room(visible.width()), defaultWidth);
    const double height = std::min(room(visible.height()), defaultHeight);
    return {visible.midX() - width * 0.5, visible.midY() - height * 0.5, width, height};
}

Rect constrained(const Rect& frame, const Rect& visible)
{
    const double width = std::min(frame.width(), room(visible.width()));
    const double height = std::min(frame.height(), room(visible.height()));
    // Not std::clamp: on a screen narrower than the inset the bounds cross,
    // and the left and bottom margins must then win.
    const double x = std::max(visible.minX() + margin, std::min(frame.minX(), visible.maxX() - width - margin));
    const double y = std::max(visible.minY() + margin, std::min(frame.minY(), visible.maxY() - height - margin));
    return {x, y, width, height};
}

Point normalizedPointer(Point local, const Rect& bounds, Flipped flipped)
{
    const double x = (local.x - bounds.minX()) / std::max(bounds.width(), smallestDivisor);
    const double y = (local.y - bounds.minY()) / std::max(bounds.height(), smallestDivisor);
    return {x, flipped == Flipped::yes ? 1 - y : y};
}

} // namespace velmora::WindowPlacement
