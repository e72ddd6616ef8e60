#include "HeadlessShellPlatform.h"

#include <unistd.h>

#include <utility>

#include "HeadlessApplication.h"
#include "HeadlessDiagnosticLog.h"
#include "HeadlessLoginItemService.h"
#include "HeadlessNotificationCenter.h"
#include "HeadlessPowerAssertionRegistry.h"
#include "HeadlessStatusBar.h"
#include "HeadlessUrlOpener.h"
#include "HeadlessWindowSystem.h"
#include "VelmoraMac/Platform/EventMonitorChain.h"
#include "VelmoraMac/Platform/Process/DedicatedMainThread.h"
#include "VelmoraMac/Platform/Process/ProcessDiagnosticLog.h"
#include "VelmoraMac/Platform/Process/ProcessSystemEnvironment.h"
#include "VelmoraMac/Platform/SystemNotificationHub.h"

namespace velmora {

std::shared_ptr<HeadlessShellPlatform> HeadlessShellPlatform::create()
{
    auto mainThread = NotNullShared<DedicatedMainThread>::make();
    std::shared_ptr<HeadlessShellPlatform> platform(new HeadlessShellPlatform(
        mainThread, NotNullShared<ProcessSystemEnvironment>::make(), NotNullShared<ProcessDiagnosticLog>::make()));
    platform->m_ownMainThread = mainThread.shared();
    return platform;
}

std::shared_ptr<HeadlessShellPlatform> HeadlessShellPlatform::create(
    std::shared_ptr<MainThread> mainThread, std::shared_ptr<SystemEnvironment> systemEnvironment)
{
    auto log = NotNullShared<HeadlessDiagnosticLog>::make();
    std::shared_ptr<HeadlessShellPlatform> platform(
        new HeadlessShellPlatform(NotNullShared<MainThread>::checked(std::move(mainThread), "the main thread"),
            NotNullShared<SystemEnvironment>::checked(std::move(systemEnvironment), "the system environment"), log));
    platform->m_recordedLog = log.shared();
    return platform;
}

HeadlessShellPlatform::HeadlessShellPlatform(const NotNullShared<MainThread>& mainThread,
    const NotNullShared<SystemEnvironment>& systemEnvironment, NotNullShared<DiagnosticLog> log)
    : m_systemNotifications(NotNullShared<SystemNotificationHub>::make())
    , m_application(NotNullShared<HeadlessApplication>::make(
          m_systemNotifications.shared(), static_cast<std::int32_t>(::getpid())))
    , m_windowSystem(NotNullShared<HeadlessWindowSystem>::make(mainThread.shared(), m_systemNotifications.shared()))
    , m_statusBar(NotNullShared<HeadlessStatusBar>::make())
    , m_eventMonitors(NotNullShared<EventMonitorChain>::make())
    , m_notificationCenter(NotNullShared<HeadlessNotificationCenter>::make(systemEnvironment->now()))
    , m_notificationSettingsOpener(NotNullShared<HeadlessNotificationSettingsOpener>::make())
    , m_loginItemService(NotNullShared<HeadlessLoginItemService>::make())
    , m_powerAssertions(NotNullShared<HeadlessPowerAssertionRegistry>::make())
    , m_urlOpener(NotNullShared<HeadlessUrlOpener>::make())
    , m_platform{
          .mainThread = mainThread,
          .systemEnvironment = systemEnvironment,
          .notificationCenter = m_notificationCenter,
          .notificationSettingsOpener = m_notificationSettingsOpener,
          .loginItemService = m_loginItemService,
          .powerAssertions = m_powerAssertions,
          .diagnosticLog = std::move(log),
          .application = m_application,
          .windowSystem = m_windowSystem,
          .statusBar = m_statusBar,
          .eventMonitors = m_eventMonitors,
          .systemNotifications = m_systemNotifications,
          .urlOpener = m_urlOpener,
      }
{
}

void HeadlessShellPlatform::stopOwnMainThread() const
{
    if (m_ownMainThread && !m_ownMainThread->isMainThread())
        m_ownMainThread->stop();
}

HeadlessShellPlatform::~HeadlessShellPlatform() = default;

} // namespace velmora
