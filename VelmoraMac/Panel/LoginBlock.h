#pragma once

#include <optional>

#include "PanelButton.h"
#include "PanelSwitchRow.h"
#include "PanelText.h"

namespace velmora {

// The launch-at-login switch with what the system says about it.
struct LoginBlock {
    PanelSwitchRow toggle;
    // Both present while the system waits for the user's approval; the
    // button opens the system's login-items settings.
    std::optional<PanelText> approval;
    std::optional<PanelButton> openSettings;
    // The last failed switch.
    std::optional<PanelText> error;
};

} // namespace velmora
