#pragma once

#include "PanelButton.h"
#include "PanelText.h"

namespace velmora {

// The one-time hint, the guide opened from the settings, and the wilt
// explanation: a title, a body and a button to go on.
struct ExplanationPage {
    PanelText title;
    PanelText body;
    PanelButton understood;
};

} // namespace velmora
