#pragma once

#include <optional>
#include <variant>

#include "Color.h"
#include "ExplanationPage.h"
#include "LanguagePage.h"
#include "LoadErrorPage.h"
#include "LoginIntroPage.h"
#include "PanelCardStyle.h"
#include "PanelHeader.h"
#include "PanelText.h"
#include "SelectionFooter.h"
#include "SelectionPage.h"
#include "SettingsPage.h"
#include "StepIndicator.h"
#include "WelcomePage.h"

namespace velmora {

// Everything the settings panel shows at one moment, top to bottom, for a
// toolkit to draw: the header, the step indicator, the page content in a
// scrolling area, the error line and the footer. It fills the space the host
// gives it, always in a dark colour scheme.
//
// A plain value built anew for each redraw; its actions call back into the
// view that built it.
struct PanelBody {
    using Page = std::variant<LoadErrorPage, WelcomePage, SelectionPage, LoginIntroPage, LanguagePage, ExplanationPage, SettingsPage>;

    Color background;
    // Of every text and icon that names no colour of its own.
    Color foreground;
    double baseFontSize = 15;
    PanelCardStyle card;

    PanelHeader header;
    std::optional<StepIndicator> steps;
    Page page;
    std::optional<PanelText> errorLine;
    std::optional<SelectionFooter> footer;
};

} // namespace velmora
