#pragma once

#include <array>
#include <cstdint>

#include "VelmoraCore/Point.h"

namespace velmora {

// The navigation keys held in the pond and the unit direction they point.
// Only the eight navigation codes (W A S D and the arrows) ever enter the
// held set. The set is a fixed array of flags rather than a node-based set:
// the key monitor runs for every key event and must not allocate.
class PondKeyboardState {
public:
    // True for the eight key codes that steer.
    [[nodiscard]] static bool isNavigation(std::uint16_t keyCode);

    // Adds a navigation key; other codes are ignored.
    void press(std::uint16_t keyCode);
    void release(std::uint16_t keyCode);
    void clear() { m_held = {}; }

    [[nodiscard]] bool isHeld(std::uint16_t keyCode) const;
    [[nodiscard]] bool empty() const;

    // (x, y), each in [-1, 1], of length 1 when any direction is held: one
    // axis gives ±1, two axes ±0.7071067811865476 each, opposite keys cancel.
    [[nodiscard]] Point direction() const;

    friend bool operator==(const PondKeyboardState&, const PondKeyboardState&) = default;

private:
    // Indexed by navigation slot (see the source), not by key code.
    std::array<bool, 8> m_held{};
};

} // namespace velmora
