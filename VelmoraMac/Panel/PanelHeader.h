#pragma once

#include <optional>

#include "PanelButton.h"
#include "PanelText.h"

namespace velmora {

// The panel's top bar, left to right: back, title, cancel, close.
struct PanelHeader {
    std::optional<PanelButton> back;
    PanelText title;
    std::optional<PanelButton> cancel;
    PanelButton close;
};

} // namespace velmora
