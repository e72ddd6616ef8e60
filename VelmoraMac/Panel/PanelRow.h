#pragma once

#include <optional>

#include "PanelAction.h"
#include "PanelIcon.h"
#include "PanelText.h"

namespace velmora {

// A tappable row: the leading icon, the title with the subtitle below it, a
// spacer, then the trailing icon. The whole row, padding included, is the
// hit area.
struct PanelRow {
    std::optional<PanelIcon> icon;
    PanelText title;
    std::optional<PanelText> subtitle;
    std::optional<PanelIcon> trailing;
    double padding = 20;
    PanelAction action;
};

} // namespace velmora
