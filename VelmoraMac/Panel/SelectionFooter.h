#pragma once

#include <optional>

#include "PanelButton.h"
#include "PanelText.h"

namespace velmora {

// The bottom of the onboarding pages: how many topics are chosen (on the
// selection page only) and the button that leads on.
struct SelectionFooter {
    std::optional<PanelText> counter;
    PanelButton primary;
};

} // namespace velmora
