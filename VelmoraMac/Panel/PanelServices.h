#pragma once

#include <memory>

#include "VelmoraMac/Platform/LoginItemService.h"
#include "VelmoraMac/Platform/SystemEnvironment.h"
#include "VelmoraMac/Platform/UrlOpener.h"

namespace velmora {

// What the panel needs of the platform beyond the coordinator: the browser
// for the privacy page, the system's login-items settings, and the user's
// clock and calendar for the reminder's time picker. All required.
struct PanelServices {
    std::shared_ptr<UrlOpener> urlOpener;
    std::shared_ptr<LoginItemService> loginItems;
    std::shared_ptr<SystemEnvironment> system;
};

} // namespace velmora
