#pragma once

#include <string_view>

namespace velmora {

// A colour of the panel in the sRGB colour space, each component from 0 to 1.
// A plain value.
struct Color {
    double red = 0;
    double green = 0;
    double blue = 0;
    double opacity = 1;

    bool operator==(const Color&) const = default;

    // The colour a hexadecimal colour text stands for, read the way the
    // content's colours have always been read, so that a palette shows the
    // same on every system: every "#" at either end is dropped, the rest is
    // one unsigned 32-bit number in base 16 (one leading "+" allowed), and
    // its low 24 bits are red, green and blue. Anything that is not such a
    // number is black; opacity is always 1, so eight digits lose their first
    // two rather than becoming translucent.
    static Color mobileHex(std::string_view text);

    // The same colour at `opacity`.
    [[nodiscard]] Color withOpacity(double value) const
    {
        Color copy = *this;
        copy.opacity = value;
        return copy;
    }
};

} // namespace velmora
