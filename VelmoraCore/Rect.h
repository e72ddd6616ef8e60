#pragma once

#include "Point.h"
#include "Size.h"

namespace velmora {

// An axis-aligned rectangle: an origin at its minimum corner and a size. The
// accessors assume a size that is not negative, as every frame and bound in
// the system is.
struct Rect {
    Point origin;
    Size size;

    constexpr Rect() = default;
    constexpr Rect(double x, double y, double width, double height)
        : origin{x, y}
        , size{width, height}
    {
    }

    [[nodiscard]] constexpr double minX() const { return origin.x; }
    [[nodiscard]] constexpr double minY() const { return origin.y; }
    [[nodiscard]] constexpr double maxX() const { return origin.x + size.width; }
    [[nodiscard]] constexpr double maxY() const { return origin.y + size.height; }
    [[nodiscard]] constexpr double midX() const { return origin.x + size.width * 0.5; }
    [[nodiscard]] constexpr double midY() const { return origin.y + size.height * 0.5; }
    [[nodiscard]] constexpr double width() const { return size.width; }
    [[nodiscard]] constexpr double height() const { return size.height; }

    // Half-open on the maximum edges, so that two rectangles sharing an edge
    // never both contain a point on it; an empty rectangle contains nothing.
    [[nodiscard]] constexpr bool contains(Point point) const
    {
        return point.x >= minX() && point.x < maxX() && point.y >= minY() && point.y < maxY();
    }

    friend bool operator==(const Rect&, const Rect&) = default;
};

} // namespace velmora
