#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "Color.h"
#include "PanelAction.h"
#include "PanelIcon.h"
#include "PanelText.h"

namespace velmora {

// A button of the panel.
struct PanelButton {
    enum class Kind : std::uint8_t {
        // The main filled button of a page: the full available width, at
        // least `minimumHeight` high, `background` in a continuous rounded
        // rectangle of `cornerRadius`.
        primary,
        // A plain text button; its label carries the colour.
        text,
        // An icon in a square hit area of `hitSize` points.
        icon,
    };

    Kind kind = Kind::text;
    // Primary and text buttons.
    std::optional<PanelText> label;
    // Icon buttons.
    std::optional<PanelIcon> icon;
    bool enabled = true;
    std::optional<Color> background;
    double cornerRadius = 0;
    double minimumHeight = 0;
    double hitSize = 0;
    // Empty when the button has none.
    std::string accessibilityLabel;
    std::string accessibilityIdentifier;
    PanelAction action;
};

} // namespace velmora
