#pragma once

#include <memory>

#include "VelmoraMac/Platform/GtkViewFactory.h"
#include "VelmoraMac/Platform/ShellPlatform.h"

namespace velmora {

class DesktopSystemEvents;

// The platform of a process that runs GTK 3 with a display: every service
// through the desktop's own facility (a StatusNotifierItem for the status
// item, GTK windows, GDK's event handler, org.freedesktop.Notifications,
// logind, timedated, XDG autostart), wired to one hub of system
// notifications. Every service is there whatever the session lacks: without
// a session or system bus, or a folder for the autostart entry, each one
// quietly does without (denies notifications, shows no tray item, refuses
// to register the login item, saying why). Built and used on GTK's thread,
// the platform's main thread.
class DesktopShellPlatform {
public:
    // Whether this process has initialised GTK with a display: then this
    // platform serves it. Only reads GDK's default display; a renderer that
    // initialises GTK does so before it starts the library. Any thread.
    [[nodiscard]] static bool hasDisplay();

    // Builds the platform on GTK's thread, whichever thread calls, with
    // `views` drawing the shell's content and overlays in its windows.
    // Claims the session's single instance first: when another process of
    // ours runs, it is asked to come forward and this returns null, for the
    // caller to end the process.
    static std::shared_ptr<DesktopShellPlatform> create(NotNullShared<GtkViewFactory> views);

    DesktopShellPlatform(const DesktopShellPlatform&) = delete;
    DesktopShellPlatform& operator=(const DesktopShellPlatform&) = delete;
    DesktopShellPlatform(DesktopShellPlatform&&) = delete;
    DesktopShellPlatform& operator=(DesktopShellPlatform&&) = delete;
    ~DesktopShellPlatform();

    [[nodiscard]] const ShellPlatform& platform() const { return m_platform; }

private:
    DesktopShellPlatform(ShellPlatform platform, std::shared_ptr<DesktopSystemEvents> systemEvents);

    ShellPlatform m_platform;
    // Not a service of the shell's: it only posts to the hub, for as long as
    // it lives.
    std::shared_ptr<DesktopSystemEvents> m_systemEvents;
};

} // namespace velmora
