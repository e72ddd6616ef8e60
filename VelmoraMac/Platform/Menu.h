#pragma once

#include <vector>

#include "MenuItem.h"

namespace velmora {

// A pop-up menu, built anew each time it is shown. A plain value.
struct Menu {
    std::vector<MenuItem> items;
};

} // namespace velmora
