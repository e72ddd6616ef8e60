#pragma once

namespace velmora {

// A width and a height in points.
struct Size {
    double width = 0;
    double height = 0;

    friend bool operator==(const Size&, const Size&) = default;
};

} // namespace velmora
