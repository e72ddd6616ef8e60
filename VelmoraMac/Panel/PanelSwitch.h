#pragma once

#include <optional>

#include "Color.h"

namespace velmora {

// The capsule switch of a switch row: a track with a round knob inside it,
// `knobInset` points from the track's edges and at its end for the value.
struct PanelSwitch {
    bool isOn = false;
    Color track;
    // The track's border; none while on.
    std::optional<Color> border;
    double borderWidth = 0;
    Color knob;
    double knobDiameter = 0;
    double knobInset = 0;
    // The same in both states: the knob and its inset on both sides.
    double trackHeight = 32;

    bool operator==(const PanelSwitch&) const = default;
};

} // namespace velmora
