#pragma once

#include "PanelIcon.h"
#include "PanelText.h"

namespace velmora {

// The first page of a fresh install, top to bottom. It has no control of its
// own: the footer's button leads on.
struct WelcomePage {
    PanelIcon lotus;
    PanelText title;
    PanelText body;
    PanelText foot;
    // The privacy line: the icon beside the text.
    PanelIcon privacyIcon;
    PanelText privacy;
};

} // namespace velmora
