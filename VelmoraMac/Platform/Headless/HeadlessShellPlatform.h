#pragma once

#include <memory>

#include "VelmoraMac/Platform/ShellPlatform.h"

namespace velmora {

class DedicatedMainThread;
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
    // For a process: a main thread of its own (DedicatedMainThread), the
    // process's real time, time zone and languages, and a log on standard
    // error.
    static std::shared_ptr<HeadlessShellPlatform> create();
    // For a test: the main thread and the environment it drives, and a log
    // it can read (recordedLog()). Throws std::invalid_argument for a
    // missing one.
    static std::shared_ptr<HeadlessShellPlatform> create(
        std::shared_ptr<MainThread> mainThread, std::shared_ptr<SystemEnvironment> systemEnvironment);

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
    [[nodiscard]] HeadlessNotificationSettingsOpener& notificationSettingsOpener() const
    {
        return *m_notificationSettingsOpener;
    }
    [[nodiscard]] HeadlessLoginItemService& loginItemService() const { return *m_loginItemService; }
    [[nodiscard]] HeadlessPowerAssertionRegistry& powerAssertions() const { return *m_powerAssertions; }
    [[nodiscard]] HeadlessUrlOpener& urlOpener() const { return *m_urlOpener; }
    // The log of a platform made for a test; null for a process's, which
    // writes to standard error.
    [[nodiscard]] HeadlessDiagnosticLog* recordedLog() const { return m_recordedLog.get(); }

    // For the exit of a process: the main thread create() started finishes
    // its work and stops. Nothing for a test's main thread, nor when called
    // on the main thread itself, which cannot join itself (exiting there
    // leaves nothing else running).
    void stopOwnMainThread() const;

private:
    HeadlessShellPlatform(const NotNullShared<MainThread>& mainThread,
        const NotNullShared<SystemEnvironment>& systemEnvironment, NotNullShared<DiagnosticLog> log);

    NotNullShared<SystemNotificationHub> m_systemNotifications;
    NotNullShared<HeadlessApplication> m_application;
    NotNullShared<HeadlessWindowSystem> m_windowSystem;
    NotNullShared<HeadlessStatusBar> m_statusBar;
    NotNullShared<EventMonitorChain> m_eventMonitors;
    NotNullShared<HeadlessNotificationCenter> m_notificationCenter;
    NotNullShared<HeadlessNotificationSettingsOpener> m_notificationSettingsOpener;
    NotNullShared<HeadlessLoginItemService> m_loginItemService;
    NotNullShared<HeadlessPowerAssertionRegistry> m_powerAssertions;
    NotNullShared<HeadlessUrlOpener> m_urlOpener;
    // After the services above, which it shares.
    ShellPlatform m_platform;
    std::shared_ptr<HeadlessDiagnosticLog> m_recordedLog;
    std::shared_ptr<DedicatedMainThread> m_ownMainThread;
};

} // namespace velmora
