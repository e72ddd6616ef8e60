#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <gdk/gdk.h>
#include <gio/gio.h>

#include "LoginLaunchMarker.h"
#include "VelmoraMac/Platform/Application.h"

namespace velmora {

class DesktopEventMonitors;
class SystemNotificationHub;

// The running application on a GTK desktop.
//
// Activity: the application is active while one of the process's toplevel
// windows is (gtk_window_is_active). Focus changes are watched through an
// event filter; the application posts applicationDidBecomeActive and
// applicationDidResignActive once GTK has handled them, and gives focus
// that seems lost a moment (resignGrace) to land on another window of
// ours, so that moving between the pond and the panel posts nothing.
//
// Launches: the open request ("oapp", marked as a login launch when the
// process was started with LoginLaunchMarker's variable) is delivered from
// the main loop once a launch handler is set. When this process holds the
// session's single instance (claimSingleInstance), every later start of
// the program reaches the handler as a reopen request ("rapp"), after the
// open one. Requests wait for a handler rather than being lost.
//
// The activation policy is only remembered: a Linux desktop has no Dock
// to leave, and skipping the taskbar would take away the one way back to
// the pond on desktops without a tray.
//
// Main thread only: GTK's thread, the one iterating the default context.
class DesktopApplication final : public Application {
public:
    // How long focus may be nowhere before the application counts as
    // resigned: the window manager takes it from one window before giving
    // it to the next.
    static constexpr std::int64_t resignGraceMicroseconds = 150'000;

    // `loginMarker` is the value of the process's login-marker variable,
    // none when it is not set. Adds a focus filter to `monitors`, which
    // must outlive nothing of this (the filter goes with whichever goes
    // first).
    DesktopApplication(std::shared_ptr<SystemNotificationHub> notifications, DesktopEventMonitors& monitors,
        const std::optional<std::string>& loginMarker = LoginLaunchMarker::processMarker());
    DesktopApplication(const DesktopApplication&) = delete;
    DesktopApplication& operator=(const DesktopApplication&) = delete;
    DesktopApplication(DesktopApplication&&) = delete;
    DesktopApplication& operator=(DesktopApplication&&) = delete;
    ~DesktopApplication() override;

    // Claims the session's single instance on the session bus before
    // anything is built; true when this process is the first, false when
    // another one runs and has been asked to come forward, and this one
    // should end. Without a session bus the process counts as the first:
    // there is then no other instance it could reach, and refusing to run
    // would leave the user with nothing. Claiming again once claimed
    // answers true. Call it on the main thread: the reopen requests are
    // answered there.
    static bool claimSingleInstance();
    // The same on a given message-bus connection; null is no bus.
    static bool claimSingleInstance(GDBusConnection* connection);
    // Gives the name back, so that the next start is the first again (the
    // bus does so anyway when the process ends).
    static void releaseSingleInstance();

    [[nodiscard]] std::int32_t processID() const override;
    void setActivationPolicy(ActivationPolicy policy) override { m_activationPolicy = policy; }
    [[nodiscard]] ActivationPolicy activationPolicy() const override { return m_activationPolicy; }
    [[nodiscard]] bool isActive() const override;
    // Presents the window of ours that had the focus last, or else the
    // newest one shown, with the time of the event being handled; a window
    // manager that prevents focus stealing may only mark it as urgent.
    void activate() override;
    void setLaunchHandler(LaunchHandler handler) override;
    [[nodiscard]] std::optional<LaunchEvent> currentLaunchEvent() const override { return m_currentLaunchEvent; }
    // A warning dialog with one button titled exactly `buttonTitle` (no
    // mnemonic), run modally in a loop of its own. Without a display the
    // texts go to standard error instead, so that they are not lost.
    void runModalAlert(
        const std::string& message, const std::string& informativeText, const std::string& buttonTitle) override;
    // Hides every window at once and ends the process with
    // exit(EXIT_SUCCESS) from the main loop, once the caller's event has
    // been handled: the library does not own main(), and the rendering
    // program's atexit handlers and buffered output must still run. Returns
    // to the caller; the loop must be running for the process to end.
    void terminate() override;

private:
    struct State;

    void enqueueLaunch(LaunchEvent event);
    void deliverLaunches();
    void focusChanged(const GdkEventFocus& focus);
    void checkActivity();
    static void reopenRequested();

    std::shared_ptr<SystemNotificationHub> m_notifications;
    ActivationPolicy m_activationPolicy = ActivationPolicy::accessory;
    LaunchHandler m_launchHandler;
    std::optional<LaunchEvent> m_currentLaunchEvent;
    std::unique_ptr<State> m_state;
};

} // namespace velmora
