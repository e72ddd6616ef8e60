#pragma once

#include <cstdint>

namespace velmora {

// Whether a window takes mouse events or lets them through to what lies
// beneath it.
enum class MouseEvents : std::uint8_t {
    accepted,
    ignored,
};

} // namespace velmora
