#pragma once

#include "LoginBlock.h"
#include "MenuBarIllustration.h"
#include "PanelText.h"

namespace velmora {

// The last onboarding page: where to find the application, and whether it
// starts at login. The footer's button finishes onboarding.
struct LoginIntroPage {
    PanelText title;
    PanelText body;
    MenuBarIllustration illustration;
    // Drawn in a card.
    LoginBlock login;
};

} // namespace velmora
