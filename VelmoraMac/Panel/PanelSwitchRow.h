#pragma once

#include <string>

#include "PanelAction.h"
#include "PanelSwitch.h"
#include "PanelText.h"

namespace velmora {

// A row with a switch: the title with the body below it, then the state
// word and the switch. A tap anywhere on the row turns the switch over.
struct PanelSwitchRow {
    PanelText title;
    PanelText body;
    PanelText stateWord;
    PanelSwitch control;
    // Empty when the row has none.
    std::string accessibilityIdentifier;
    // Asks for the opposite of the value shown.
    PanelAction toggle;
};

} // namespace velmora
