#pragma once

#include "Color.h"
#include "PanelIcon.h"
#include "PanelText.h"

namespace velmora {

// A drawing of a menu bar that shows the user where the status-bar icon
// lives: the network icon, the lotus on a rounded pale background, the name
// and a clock, left to right.
struct MenuBarIllustration {
    PanelIcon network;
    PanelIcon lotus;
    Color lotusBackground;
    double lotusCornerRadius = 6;
    PanelText name;
    PanelText time;
};

} // namespace velmora
