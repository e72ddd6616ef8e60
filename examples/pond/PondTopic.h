#pragma once

#include <string>

#include "PondColor.h"

namespace pond {

// One selected topic as the pond shows it: a lotus.
struct PondTopic {
    std::string id;
    std::string title;
    long long moments = 0;
    // 0 to 14: how far the lotus has grown.
    int growthMoments = 0;
    PondColor color;
    // Base64 PNG of a template icon; may be empty or broken, in which case
    // the painter falls back to a glyph.
    std::string icon;

    bool operator==(const PondTopic&) const = default;
};

} // namespace pond
