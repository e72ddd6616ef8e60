#pragma once

#include <optional>
#include <string>

#include "Color.h"
#include "PanelAction.h"
#include "PanelIcon.h"
#include "PanelText.h"

namespace velmora {

// One topic on the selection page: its icon on the left, name and
// description in the middle, the check mark on the right, in a continuous
// rounded rectangle. Tapping it adds the topic to the working selection or
// takes it out.
struct TopicCard {
    std::string topicID;
    bool selected = false;
    // None when the topic's image data is not an image.
    std::optional<PanelIcon> icon;
    PanelText name;
    PanelText description;
    PanelIcon check;
    Color background;
    double cornerRadius = 20;
    double padding = 16;
    PanelAction toggle;
};

} // namespace velmora
