#include "LoginLaunchService.h"

#include <utility>

namespace velmora {

LoginLaunchService::LoginLaunchService(std::shared_ptr<LoginItemService> service)
    : m_service(std::move(service))
{
}

bool LoginLaunchService::enabled() const
{
    // Waiting for approval counts: the item is registered and starts at
    // login once the user approves, which the switch should already show.
    const LoginItemStatus status = m_service->status();
    return status == LoginItemStatus::enabled || status == LoginItemStatus::requiresApproval;
}

bool LoginLaunchService::requiresApproval() const
{
    return m_service->status() == LoginItemStatus::requiresApproval;
}

void LoginLaunchService::setEnabled(bool enabled)
{
    if (enabled)
        m_service->registerLoginItem();
    else
        m_service->unregisterLoginItem();
}

bool LoginLaunchService::isLoginEvent(const std::optional<LaunchEvent>& event)
{
    return event && event->eventID == LaunchEvent::openApplication
        && event->propertyData == LaunchEvent::launchedAsLoginItem;
}

} // namespace velmora
