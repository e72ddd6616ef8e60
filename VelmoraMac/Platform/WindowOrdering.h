#pragma once

#include <cstdint>

namespace velmora {

// Where a child window is kept relative to its parent, with the window
// system's numbers.
enum class WindowOrdering : std::int8_t {
    below = -1,
    above = 1,
};

} // namespace velmora
