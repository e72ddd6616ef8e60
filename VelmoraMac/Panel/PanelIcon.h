#pragma once

#include <string>

#include "Color.h"
#include "PanelImage.h"

namespace velmora {

// An icon drawn as a template image: only the image's shape counts, filled
// with `tint`, and stretched to a square of `size` points. An empty image
// still takes its square.
struct PanelIcon {
    // The name among the content's interface icons, or the topic ID for a
    // topic's icon.
    std::string name;
    PanelImage image;
    double size = 24;
    Color tint;

    bool operator==(const PanelIcon&) const = default;
};

} // namespace velmora
