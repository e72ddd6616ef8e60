#pragma once

#include <cstdint>

namespace velmora {

// How the application presents itself, with the window system's numbers.
enum class ActivationPolicy : std::int32_t {
    // A Dock icon, and windows that can become key.
    regular = 0,
    // No Dock icon, but windows that can become key.
    accessory = 1,
    // Neither.
    prohibited = 2,
};

} // namespace velmora
