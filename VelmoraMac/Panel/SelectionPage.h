#pragma once

#include <vector>

#include "PanelText.h"
#include "TopicCard.h"

namespace velmora {

// One step of the topic choice: the shown group's name, a body, and the
// group's topics in catalog order.
struct SelectionPage {
    PanelText title;
    PanelText body;
    std::vector<TopicCard> topics;
};

} // namespace velmora
