#pragma once

namespace velmora {

// A width and a height in points.
struct Size {
    constexpr Size() = default;
    constexpr Size(double widthValue, double heightValue)
        : width(widthValue)
        , height(heightValue)
    {
    }

    double width = 0;
    double height = 0;

    friend bool operator==(const Size&, const Size&) = default;
};

} // namespace velmora
