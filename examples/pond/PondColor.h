#pragma once

#include <string_view>

namespace pond {

// An sRGB colour with components in 0...1, as the pond paints it.
struct PondColor {
    double red = 0;
    double green = 0;
    double blue = 0;

    // Reads a colour text of the catalog, "#EBB45E": the "#" signs at either
    // end are dropped and the rest read as a hexadecimal number whose low 24
    // bits are red, green and blue, as the settings panel reads the same
    // text, so that a lotus and its topic card agree. A text that is no such
    // number gives `fallback`: a lotus painted black would vanish in the
    // dark water.
    static PondColor parse(std::string_view text, PondColor fallback);
    static constexpr PondColor fromBytes(unsigned red, unsigned green, unsigned blue)
    {
        return {red / 255.0, green / 255.0, blue / 255.0};
    }

    // The colour moved towards `other` by `amount` (0 keeps it, 1 gives
    // `other`).
    [[nodiscard]] PondColor mixed(PondColor other, double amount) const;

    bool operator==(const PondColor&) const = default;
};

} // namespace pond
