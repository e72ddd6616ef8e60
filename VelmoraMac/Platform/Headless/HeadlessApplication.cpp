#include "HeadlessApplication.h"

#include <utility>

#include "VelmoraMac/Platform/SystemNotificationHub.h"

namespace velmora {

HeadlessApplication::HeadlessApplication(std::shared_ptr<SystemNotificationHub> notifications, std::int32_t processID)
    : m_notifications(std::move(notifications))
    , m_processID(processID)
{
}

void HeadlessApplication::activate()
{
    ++m_activations;
    if (std::exchange(m_active, true))
        return;
    m_notifications->post(SystemNotification::applicationDidBecomeActive);
}

void HeadlessApplication::setLaunchHandler(LaunchHandler handler)
{
    m_launchHandler = std::move(handler);
}

void HeadlessApplication::runModalAlert(
    const std::string& message, const std::string& informativeText, const std::string& buttonTitle)
{
    m_alerts.push_back(Alert{message, informativeText, buttonTitle});
}

void HeadlessApplication::deliverLaunchEvent(const LaunchEvent& event)
{
    if (!m_launchHandler)
        return;
    std::optional<LaunchEvent> outer = std::exchange(m_currentLaunchEvent, event);
    // A copy: the handler may replace itself.
    const LaunchHandler handler = m_launchHandler;
    handler(event);
    m_currentLaunchEvent = std::move(outer);
}

void HeadlessApplication::resignActive()
{
    if (!m_active)
        return;
    m_active = false;
    m_notifications->post(SystemNotification::applicationDidResignActive);
}

} // namespace velmora
