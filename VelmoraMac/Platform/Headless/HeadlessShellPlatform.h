#pragma once

#include <memory>

#include "VelmoraMac/Platform/ShellPlatform.h"

namespace velmora {

class HeadlessApplication;
class HeadlessDiagnosticLog;
class EventMonitorChain;
class HeadlessLoginItemService;
class HeadlessNotificationCenter;
class HeadlessNotificationSettingsOpener;
class HeadlessPowerAssertionRegistry;
class HeadlessStatusBar;
class SystemNotificationHub;
class HeadlessUrlOpener;
class HeadlessWindowSystem;

// A complete platform without a desktop: every service in memory, wired to
// each other as a real desktop's are (windows report their changes through
// the system notifications, full-screen transitions end on the main loop).
// Keeps the concrete objects, so that a test can play the user and the
// system through them while the shell sees only platform().
class HeadlessShellPlatform {
public:
    // For a process: a main thread of its own (HeadlessMainThread), the
    // process's real time, time zone and languages, and a log on standard
    // error.
    static std::shared_ptr<HeadlessShellPlatform> create();
    // For a test: the main thread and the environment it drives, and a log
    // it can read (recordedLog()).
    static std::shared_ptr<HeadlessShellPlatform> create(std::shared_ptr<MainThread> mainThread, std::shared_ptr<SystemEnvironment> systemEnvironment);

    HeadlessShellPlatform(const HeadlessShellPlatform&) = delete;
    HeadlessShellPlatform& operator=(const HeadlessShellPlatform&) = delete;
    HeadlessShellPlatform(HeadlessShellPlatform&&) = delete;
    HeadlessShellPlatform& operator=(HeadlessShellPlatform&&) = delete;
    ~HeadlessShellPlatform();

    [[nodiscard]] const ShellPlatform& platform() const { return m_platform; }

    [[nodiscard]] HeadlessApplication& application() const { return *m_application; }
    [[nodiscard]] HeadlessWindowSystem& windowSystem() const { return *m_windowSystem; }
    [[nodiscard]] HeadlessStatusBar& statusBar() const { return *m_statusBar; }
    [[nodiscard]] EventMonitorChain& eventMonitors() const { return *m_eventMonitors; }
    [[nodiscard]] SystemNotificationHub& systemNotifications() const { return *m_systemNotifications; }
    [[nodiscard]] HeadlessNotificationCenter& notificationCenter() const { return *m_notificationCenter; }
    [[nodiscard]] HeadlessNotificationSettingsOpener& notificationSettingsOpener() const { return *m_notificationSettingsOpener; }
    [[nodiscard]] HeadlessLoginItemService& loginItemService() const { return *m_loginItemService; }
    [[nodiscard]] HeadlessPowerAssertionRegistry& powerAssertions() const { return *m_powerAssertions; }
    [[nodiscard]] HeadlessUrlOpener& urlOpener() const { return *m_urlOpener; }
    // The log of a platform made for a test; null for a process's, which
    // writes to standard error.
    [[nodiscard]] HeadlessDiagnosticLog* recordedLog() const { return m_recordedLog.get(); }

private:
    HeadlessShellPlatform(std::shared_ptr<MainThread> mainThread, std::shared_ptr<SystemEnvironment> systemEnvironment, std::shared_ptr<DiagnosticLog> log);

    ShellPlatform m_platform;
    std::shared_ptr<HeadlessApplication> m_application;
    std::shared_ptr<HeadlessWindowSystem> m_windowSystem;
    std::shared_ptr<HeadlessStatusBar> m_statusBar;
    std::shared_ptr<EventMonitorChain> m_eventMonitors;
    std::shared_ptr<SystemNotificationHub> m_systemNotifications;
    std::shared_ptr<HeadlessNotificationCenter> m_notificationCenter;
    std::shared_ptr<HeadlessNotificationSettingsOpener> m_notificationSettingsOpener;
    std::shared_ptr<HeadlessLoginItemService> m_loginItemService;
    std::shared_ptr<HeadlessPowerAssertionRegistry> m_powerAssertions;
    std::shared_ptr<HeadlessUrlOpener> m_urlOpener;
    std::shared_ptr<HeadlessDiagnosticLog> m_recordedLog;
};

} // namespace velmora
