#pragma once

#include <string>
#include <vector>

#include "PanelRow.h"

namespace velmora {

// The choice of the panel's and the pond's language: following the system,
// then each practice language.
struct LanguagePage {
    struct Choice {
        // "system" or a practice language code.
        std::string code;
        PanelRow row;
    };

    std::vector<Choice> choices;
};

} // namespace velmora
