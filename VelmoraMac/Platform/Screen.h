#pragma once

#include "VelmoraCore/Rect.h"

namespace velmora {

// A display as placement sees it, in screen coordinates (origin at the
// lower left of the primary screen, y growing upwards). A plain value.
struct Screen {
    Rect frame;
    // The frame without the menu bar and the Dock (or panels).
    Rect visibleFrame;

    friend bool operator==(const Screen&, const Screen&) = default;
};

} // namespace velmora
