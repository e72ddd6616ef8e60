#pragma once

#include "Color.h"

namespace velmora {

// How the panel draws a card, the rounded container of one section's rows,
// and the thin line between the rows inside it. The content of a card is
// stacked vertically.
struct PanelCardStyle {
    Color background;
    // Of a continuous rounded rectangle.
    double cornerRadius = 24;
    Color border;
    double borderWidth = 1;
    Color separator;
    double separatorThickness = 1;

    bool operator==(const PanelCardStyle&) const = default;
};

} // namespace velmora
