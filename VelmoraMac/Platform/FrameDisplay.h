#pragma once

#include <cstdint>

namespace velmora {

// Whether a window redraws at once for a new frame, or when it is next
// shown.
enum class FrameDisplay : std::uint8_t {
    deferred,
    immediate,
};

} // namespace velmora
