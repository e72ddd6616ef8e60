#pragma once

#include "PanelButton.h"
#include "PanelText.h"

namespace velmora {

// All the panel shows besides its header after the state file could not be
// read: what happened and a button that reads it again.
struct LoadErrorPage {
    PanelText message;
    PanelButton retry;
};

} // namespace velmora
