#include "PondKeyboardState.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "VelmoraMac/Platform/EventMonitors.h"

namespace velmora {

namespace {

// The navigation set, built at compile time: a slot per key code.
constexpr std::array<std::uint16_t, 8> navigationKeys{
    KeyCode::a,
    KeyCode::s,
    KeyCode::d,
    KeyCode::w,
    KeyCode::leftArrow,
    KeyCode::rightArrow,
    KeyCode::downArrow,
    KeyCode::upArrow,
};

constexpr std::optional<std::size_t> slotOf(std::uint16_t keyCode)
{
    for (std::size_t slot = 0; slot < navigationKeys.size(); ++slot) {
        if (navigationKeys[slot] == keyCode)
            return slot;
    }
    return std::nullopt;
}

} // namespace

bool PondKeyboardState::isNavigation(std::uint16_t keyCode)
{
    return slotOf(keyCode).has_value();
}

void PondKeyboardState::press(std::uint16_t keyCode)
{
    if (const auto slot = slotOf(keyCode))
        m_held.at(*slot) = true;
}

void PondKeyboardState::release(std::uint16_t keyCode)
{
    if (const auto slot = slotOf(keyCode))
        m_held.at(*slot) = false;
}

bool PondKeyboardState::isHeld(std::uint16_t keyCode) const
{
    const auto slot = slotOf(keyCode);
    return slot && m_held.at(*slot);
}

bool PondKeyboardState::empty() const
{
    return std::none_of(m_held.begin(), m_held.end(), [](bool held) { return held; });
}

Point PondKeyboardState::direction() const
{
    const auto either
        = [this](std::uint16_t first, std::uint16_t second) { return isHeld(first) || isHeld(second) ? 1.0 : 0.0; };
    const double right = either(KeyCode::d, KeyCode::rightArrow);
    const double left = either(KeyCode::a, KeyCode::leftArrow);
    const double up = either(KeyCode::w, KeyCode::upArrow);
    const double down = either(KeyCode::s, KeyCode::downArrow);
    const double x = right - left;
    const double y = up - down;
    // Each axis is -1, 0 or 1, so the only length to divide by is √2, on a
    // diagonal. Dividing by hypot(1, 1) rounds twice and lands one unit in
    // the last place below 1/√2; sqrt(0.5) is the correctly rounded value.
    const double scale = x != 0 && y != 0 ? std::sqrt(0.5) : 1.0;
    return {x * scale, y * scale};
}

} // namespace velmora
