#include "HeadlessLoginItemService.h"

#include <utility>

#include "VelmoraMac/Platform/LoginItemService.h"

namespace velmora {

HeadlessLoginItemService::HeadlessLoginItemService(LoginItemStatus status)
    : m_status(status)
{
}

LoginItemStatus HeadlessLoginItemService::status() const
{
    const std::scoped_lock lock(m_mutex);
    return m_status;
}

void HeadlessLoginItemService::registerLoginItem()
{
    const std::scoped_lock lock(m_mutex);
    m_requests.push_back(Request::registerLoginItem);
    if (m_registerError)
        throw LoginItemError(*m_registerError);
    m_status = m_statusAfterRegistering;
}

void HeadlessLoginItemService::unregisterLoginItem()
{
    const std::scoped_lock lock(m_mutex);
    m_requests.push_back(Request::unregisterLoginItem);
    if (m_unregisterError)
        throw LoginItemError(*m_unregisterError);
    m_status = LoginItemStatus::notRegistered;
}

void HeadlessLoginItemService::openLoginItemsSettings()
{
    const std::scoped_lock lock(m_mutex);
    m_requests.push_back(Request::openLoginItemsSettings);
}

void HeadlessLoginItemService::setStatus(LoginItemStatus status)
{
    const std::scoped_lock lock(m_mutex);
    m_status = status;
}

void HeadlessLoginItemService::setStatusAfterRegistering(LoginItemStatus status)
{
    const std::scoped_lock lock(m_mutex);
    m_statusAfterRegistering = status;
}

void HeadlessLoginItemService::setRegisterError(std::optional<std::string> error)
{
    const std::scoped_lock lock(m_mutex);
    m_registerError = std::move(error);
}

void HeadlessLoginItemService::setUnregisterError(std::optional<std::string> error)
{
    const std::scoped_lock lock(m_mutex);
    m_unregisterError = std::move(error);
}

std::vector<HeadlessLoginItemService::Request> HeadlessLoginItemService::requests() const
{
    const std::scoped_lock lock(m_mutex);
    return m_requests;
}

} // namespace velmora
