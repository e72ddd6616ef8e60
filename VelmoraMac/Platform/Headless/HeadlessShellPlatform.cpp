#include "HeadlessShellPlatform.h"

#include <unistd.h>

#include <utility>

#include "HeadlessApplication.h"
#include "HeadlessDiagnosticLog.h"
#include "VelmoraMac/Platform/EventMonitorChain.h"
#include "HeadlessLoginItemService.h"
#include "HeadlessMainThread.h"
#include "HeadlessNotificationCenter.h"
#include "HeadlessNotificationSettingsOpener.h"
#include "HeadlessPowerAssertionRegistry.h"
#include "HeadlessStatusBar.h"
#include "VelmoraMac/Platform/SystemNotificationHub.h"
#include "HeadlessUrlOpener.h"
#include "HeadlessWindowSystem.h"
#include "ProcessDiagnosticLog.h"
#include "ProcessSystemEnvironment.h"

namespace velmora {

std::shared_ptr<HeadlessShellPlatform> HeadlessShellPlatform::create()
{
    auto mainThread = std::make_shared<HeadlessMainThread>();
    return std::shared_ptr<HeadlessShellPlatform>(new HeadlessShellPlatform(std::move(mainThread), std::make_shared<ProcessSystemEnvironment>(), std::make_shared<ProcessDiagnosticLog>()));
}

std::shared_ptr<HeadlessShellPlatform> HeadlessShellPlatform::create(std::shared_ptr<MainThread> mainThread, std::shared_ptr<SystemEnvironment> systemEnvironment)
{
    auto log = std::make_shared<HeadlessDiagnosticLog>();
    auto platform = std::shared_ptr<HeadlessShellPlatform>(new HeadlessShellPlatform(std::move(mainThread), std::move(systemEnvironment), log));
    platform->m_recordedLog = std::move(log);
    return platform;
}

HeadlessShellPlatform::HeadlessShellPlatform(std::shared_ptr<MainThread> mainThread, std::shared_ptr<SystemEnvironment> systemEnvironment, std::shared_ptr<DiagnosticLog> log)
    : m_systemNotifications(std::make_shared<SystemNotificationHub>())
    , m_notificationCenter(std::make_shared<HeadlessNotificationCenter>(systemEnvironment->now()))
    , m_notificationSettingsOpener(std::make_shared<HeadlessNotificationSettingsOpener>())
    , m_loginItemService(std::make_shared<HeadlessLoginItemService>())
    , m_powerAssertions(std::make_shared<HeadlessPowerAssertionRegistry>())
    , m_urlOpener(std::make_shared<HeadlessUrlOpener>())
{
    m_application = std::make_shared<HeadlessApplication>(m_systemNotifications, static_cast<std::int32_t>(::getpid()));
    m_windowSystem = std::make_shared<HeadlessWindowSystem>(mainThread, m_systemNotifications);
    m_statusBar = std::make_shared<HeadlessStatusBar>();
    m_eventMonitors = std::make_shared<EventMonitorChain>();

    m_platform.mainThread = std::move(mainThread);
    m_platform.systemEnvironment = std::move(systemEnvironment);
    m_platform.notificationCenter = m_notificationCenter;
    m_platform.notificationSettingsOpener = m_notificationSettingsOpener;
    m_platform.loginItemService = m_loginItemService;
    m_platform.powerAssertions = m_powerAssertions;
    m_platform.diagnosticLog = std::move(log);
    m_platform.application = m_application;
    m_platform.windowSystem = m_windowSystem;
    m_platform.statusBar = m_statusBar;
    m_platform.eventMonitors = m_eventMonitors;
    m_platform.systemNotifications = m_systemNotifications;
    m_platform.urlOpener = m_urlOpener;
}

HeadlessShellPlatform::~HeadlessShellPlatform() = default;

} // namespace velmora
