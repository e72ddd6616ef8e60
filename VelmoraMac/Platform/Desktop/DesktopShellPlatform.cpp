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
#include "VelmoraMac/Platform/Process/ProcessDiagnosticLog.h"
#include "VelmoraMac/Platform/Process/ProcessSystemEnvironment.h"
#include "VelmoraMac/Platform/SystemNotificationHub.h"
#include "XdgAutostartLoginItemService.h"

namespace velmora {

bool DesktopShellPlatform::hasDisplay()
{
    return gdk_display_get_default() != nullptr;
}

std::shared_ptr<DesktopShellPlatform> DesktopShellPlatform::create(NotNullShared<GtkViewFactory> views)
{
    auto mainThread = NotNullShared<DesktopMainThread>::make();
    // GTK is not thread-safe: everything is built on its thread.
    return mainThread->runSync([&]() -> std::shared_ptr<DesktopShellPlatform> {
        if (!DesktopApplication::claimSingleInstance())
            return nullptr;
        auto hub = NotNullShared<SystemNotificationHub>::make();
        auto monitors = NotNullShared<DesktopEventMonitors>::make();
        auto log = NotNullShared<ProcessDiagnosticLog>::make();
        // Both add filters to the monitors, which they outlive together: the
        // platform is never torn down while the process runs.
        ShellPlatform platform{
            .mainThread = mainThread,
            .systemEnvironment = NotNullShared<ProcessSystemEnvironment>::make(),
            .notificationCenter = DesktopNotificationCenter::forThisSession(),
            .notificationSettingsOpener = DesktopNotificationSettingsOpener::forThisSession(log.shared()),
            .loginItemService = XdgAutostartLoginItemService::forThisProcess(),
            .powerAssertions = NotNullShared<DesktopPowerAssertionRegistry>::make(),
            .diagnosticLog = log,
            .application = NotNullShared<DesktopApplication>::make(hub.shared(), *monitors),
            .windowSystem = NotNullShared<DesktopWindowSystem>::make(hub.shared(), *monitors, views),
            .statusBar = DesktopStatusBar::onSessionBus(),
            .eventMonitors = monitors,
            .systemNotifications = hub,
            .urlOpener = NotNullShared<DesktopUrlOpener>::make(),
        };
        return std::shared_ptr<DesktopShellPlatform>(
            new DesktopShellPlatform(std::move(platform), DesktopSystemEvents::forThisSession(hub.shared()).shared()));
    });
}

DesktopShellPlatform::DesktopShellPlatform(ShellPlatform platform, std::shared_ptr<DesktopSystemEvents> systemEvents)
    : m_platform(std::move(platform))
    , m_systemEvents(std::move(systemEvents))
{
}

DesktopShellPlatform::~DesktopShellPlatform() = default;

} // namespace velmora
