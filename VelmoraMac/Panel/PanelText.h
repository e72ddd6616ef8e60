#pragma once

#include <cstdint>
#include <string>
#include <utility>

#include "Color.h"

namespace velmora {

// One text of the panel as a toolkit draws it. Sizes are in points; a text
// whose size or colour the panel's style leaves open is at the base size in
// the foreground colour.
struct PanelText {
    enum class Design : std::uint8_t {
        system,
        serif,
    };
    enum class Style : std::uint8_t {
        regular,
        italic,
    };
    enum class Alignment : std::uint8_t {
        leading,
        center,
    };

    std::string text;
    double size = 15;
    Color color;
    Design design = Design::system;
    Style style = Style::regular;
    // Extra space between letters, in points.
    double tracking = 0;
    // Extra space between lines, in points.
    double lineSpacing = 0;
    Alignment alignment = Alignment::leading;
    // Empty when the text has none.
    std::string accessibilityIdentifier;

    bool operator==(const PanelText&) const = default;

    // A text in the system design, regular, leading, without an identifier.
    static PanelText plain(std::string text, double size, Color color)
    {
        PanelText result;
        result.text = std::move(text);
        result.size = size;
        result.color = color;
        return result;
    }
};

} // namespace velmora
