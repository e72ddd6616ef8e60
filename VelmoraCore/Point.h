#pragma once

namespace velmora {

// A position or an offset in points. Screen coordinates put the origin at
// the lower left of the primary screen with y growing upwards; a view's own
// coordinates follow the view (see Rect and the pointer rules).
struct Point {
    constexpr Point() = default;
    constexpr Point(double xValue, double yValue)
        : x(xValue)
        , y(yValue)
    {
    }

    double x = 0;
    double y = 0;

    friend bool operator==(const Point&, const Point&) = default;
};

} // namespace velmora
