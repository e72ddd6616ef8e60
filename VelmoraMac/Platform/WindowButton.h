#pragma once

#include <cstdint>

namespace velmora {

// The standard buttons of a window's title bar, with the window system's
// numbers.
enum class WindowButton : std::uint8_t {
    close = 0,
    miniaturize = 1,
    zoom = 2,
};

} // namespace velmora
