#pragma once

#include "Application.h"
#include "DiagnosticLog.h"
#include "EventMonitors.h"
#include "LoginItemService.h"
#include "MainThread.h"
#include "NotNullShared.h"
#include "NotificationCenter.h"
#include "PowerAssertionRegistry.h"
#include "StatusBar.h"
#include "SystemEnvironment.h"
#include "SystemNotifications.h"
#include "UrlOpener.h"
#include "WindowSystem.h"

namespace velmora {

// Every platform service the shell uses, from one implementation (headless
// or desktop). None can be missing: each member is a NotNullShared and none
// has a default, so a platform that leaves one out does not compile. A
// plain value: copies share the services, which live as long as any copy,
// so whoever builds the graph may drop the builder.
struct ShellPlatform {
    NotNullShared<MainThread> mainThread;
    NotNullShared<SystemEnvironment> systemEnvironment;
    NotNullShared<NotificationCenter> notificationCenter;
    NotNullShared<NotificationSettingsOpener> notificationSettingsOpener;
    NotNullShared<LoginItemService> loginItemService;
    NotNullShared<PowerAssertionRegistry> powerAssertions;
    NotNullShared<DiagnosticLog> diagnosticLog;
    NotNullShared<Application> application;
    NotNullShared<WindowSystem> windowSystem;
    NotNullShared<StatusBar> statusBar;
    NotNullShared<EventMonitors> eventMonitors;
    NotNullShared<SystemNotifications> systemNotifications;
    NotNullShared<UrlOpener> urlOpener;
};

} // namespace velmora
