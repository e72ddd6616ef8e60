#include "DesktopShellPlatform.h"

#include "DesktopApplication.h"
#include "DesktopEventMonitors.h"
#include "DesktopMainThread.h"
#include "DesktopNotificationCenter.h"
#include "DesktopNotificationSettingsOpener.h"
#include "DesktopPowerAssertionRegistry.h"
#include "DesktopStatusBar.h"
#include "DesktopSystemEvents.h"
#include "DesktopUrlOpener.h"
#include "DesktopWindowSystem.h"
#include "VelmoraMac/Platform/Headless/ProcessDiagnosticLog.h"
#include "VelmoraMac/Platform/Headless/ProcessSystemEnvironment.h"
#include "VelmoraMac/Platform/SystemNotificationHub.h"
#include "XdgAutostartLoginItemService.h"

namespace velmora {

std::shared_ptr<DesktopShellPlatform> DesktopShellPlatform::create(std::shared_ptr<MainThread> mainThread)
{
    if (!DesktopApplication::claimSingleInstance())
        return nullptr;
    std::shared_ptr<DesktopShellPlatform> desktop(new DesktopShellPlatform());
    ShellPlatform& platform = desktop->m_platform;
    auto hub = std::make_shared<SystemNotificationHub>();
    auto monitors = std::make_shared<DesktopEventMonitors>();
    platform.mainThread = std::move(mainThread);
    platform.systemEnvironment = std::make_shared<ProcessSystemEnvironment>();
    platform.diagnosticLog = std::make_shared<ProcessDiagnosticLog>();
    platform.notificationCenter = DesktopNotificationCenter::forThisSession();
    platform.notificationSettingsOpener = DesktopNotificationSettingsOpener::forThisSession(platform.diagnosticLog);
    platform.loginItemService = XdgAutostartLoginItemService::forThisProcess();
    platform.powerAssertions = std::make_shared<DesktopPowerAssertionRegistry>();
    // Both add filters to the monitors, which they outlive together: the
    // platform is never torn down while the process runs.
    platform.application = std::make_shared<DesktopApplication>(hub, *monitors);
    platform.windowSystem = std::make_shared<DesktopWindowSystem>(hub, *monitors);
    platform.statusBar = DesktopStatusBar::onSessionBus();
    platform.eventMonitors = monitors;
    platform.systemNotifications = hub;
    platform.urlOpener = std::make_shared<DesktopUrlOpener>();
    desktop->m_systemEvents = DesktopSystemEvents::forThisSession(hub);
    return desktop;
}

DesktopShellPlatform::~DesktopShellPlatform() = default;

} // namespace velmora
