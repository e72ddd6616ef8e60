#pragma once

#include <string>

namespace velmora {

// The pond's snapshot in the two forms it travels in: the compact JSON text,
// and the same text escaped as the contents of a JSON string (without the
// quotes), as the envelope carries it. Both are written together from parts
// encoded once, so the envelope never escapes the whole text, most of which
// (the icons) is the same on every change.
struct PondSnapshot {
    std::string text;
    std::string escaped;

    bool operator==(const PondSnapshot&) const = default;
};

} // namespace velmora
