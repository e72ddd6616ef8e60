#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "InputEvent.h"
#include "VelmoraCore/Size.h"

namespace velmora {

// The clickable part of a status item in the menu bar.
// Main thread only.
class StatusButton {
public:
    // Receives the type of the click that triggered it (left or right
    // mouse up), since the two mean different things.
    using Action = std::function<void(InputEventType trigger)>;

    StatusButton() = default;
    StatusButton(const StatusButton&) = delete;
    StatusButton& operator=(const StatusButton&) = delete;
    StatusButton(StatusButton&&) = delete;
    StatusButton& operator=(StatusButton&&) = delete;
    virtual ~StatusButton() = default;

    // A template image: only its shape counts, the menu bar tints it for
    // light and dark bars. `png` holds the bytes of a PNG file; bytes that
    // are no image (empty ones included) show an empty image of `size`.
    virtual void setTemplateImage(std::string png, Size size) = 0;
    virtual void setToolTip(std::string toolTip) = 0;
    virtual void setAccessibilityLabel(std::string label) = 0;
    virtual void setAction(Action action) = 0;
    // The clicks that send the action, as an event mask (eventMaskBit).
    virtual void sendActionOn(std::uint64_t eventMask) = 0;
    // Clicks the button as the user would: with a menu attached to the
    // item, pops the menu up and returns when it has been dismissed.
    virtual void performClick() = 0;
};

} // namespace velmora
