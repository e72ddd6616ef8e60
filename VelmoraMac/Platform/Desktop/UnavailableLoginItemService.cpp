#include "UnavailableLoginItemService.h"

#include <utility>

#include "VelmoraMac/Platform/LoginItemService.h"

namespace velmora {

UnavailableLoginItemService::UnavailableLoginItemService(std::string reason)
    : m_reason(std::move(reason))
{
}

LoginItemStatus UnavailableLoginItemService::status() const
{
    return LoginItemStatus::notRegistered;
}

void UnavailableLoginItemService::registerLoginItem()
{
    throw LoginItemError(m_reason);
}

void UnavailableLoginItemService::unregisterLoginItem()
{
}

void UnavailableLoginItemService::openLoginItemsSettings()
{
}

} // namespace velmora
