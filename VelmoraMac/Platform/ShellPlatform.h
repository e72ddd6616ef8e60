#pragma once

#include <memory>

#include "Application.h"
#include "DiagnosticLog.h"
#include "EventMonitors.h"
#include "LoginItemService.h"
#include "MainThread.h"
#include "NotificationCenter.h"
#include "NotificationSettingsOpener.h"
#include "PowerAssertionRegistry.h"
#include "StatusBar.h"
#include "SystemEnvironment.h"
#include "SystemNotifications.h"
#include "UrlOpener.h"
#include "WindowSystem.h"

namespace velmora {

// Every platform service the shell uses, from one implementation (headless
// or desktop). A plain value: copies share the services, which live as long
// as any copy, so whoever builds the graph may drop the builder.
struct ShellPlatform {
    std::shared_ptr<MainThread> mainThread;
    std::shared_ptr<SystemEnvironment> systemEnvironment;
    std::shared_ptr<NotificationCenter> notificationCenter;
    std::shared_ptr<NotificationSettingsOpener> notificationSettingsOpener;
    std::shared_ptr<LoginItemService> loginItemService;
    std::shared_ptr<PowerAssertionRegistry> powerAssertions;
    std::shared_ptr<DiagnosticLog> diagnosticLog;
    std::shared_ptr<Application> application;
    std::shared_ptr<WindowSystem> windowSystem;
    std::shared_ptr<StatusBar> statusBar;
    std::shared_ptr<EventMonitors> eventMonitors;
    std::shared_ptr<SystemNotifications> systemNotifications;
    std::shared_ptr<UrlOpener> urlOpener;
};

} // namespace velmora
