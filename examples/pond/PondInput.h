#pragma once

#include <cstdint>

namespace pond {

// What one frame reads from the library before it draws, exactly as the
// readers give it: the pointer normalized with y growing upwards, button
// edges consumed by the read, scroll in points since the last frame.
struct PondInput {
    float pointerX = 0;
    float pointerY = 0;
    std::int32_t down = 0;
    std::int32_t held = 0;
    std::int32_t up = 0;
    float scrollX = 0;
    float scrollY = 0;
    float navigationX = 0;
    float navigationY = 0;
    float contentWidth = 0;
    std::int32_t visible = 0;
    std::int32_t interactive = 0;
};

} // namespace pond
