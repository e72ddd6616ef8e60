#pragma once

#include <vector>

#include "Color.h"

namespace velmora {

// The row of capsules above the selection page that shows how far through
// the topic groups the user is.
struct StepIndicator {
    // One capsule per topic group, in order.
    std::vector<Color> steps;
    double spacing = 6;
    double capsuleHeight = 3;
    double horizontalPadding = 27;

    bool operator==(const StepIndicator&) const = default;
};

} // namespace velmora
