#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "VelmoraMac/Platform/DiagnosticLog.h"
#include "VelmoraMac/Platform/NotNullShared.h"
#include "VelmoraMac/Platform/NotificationCenter.h"

namespace velmora {

// Opens the desktop's own notification settings, where the user allows
// Velmora's reminders again: GNOME's, KDE's or Xfce's panel, as
// XDG_CURRENT_DESKTOP names the desktop. Elsewhere, or when the panel's
// program cannot be started, nothing opens and one diagnostic line says
// why; the settings page's own text still tells the user what to do.
// Main thread only.
class DesktopNotificationSettingsOpener final : public NotificationSettingsOpener {
public:
    // Starts a program (its name, then its arguments) without waiting for
    // it; false when it could not be started.
    using CommandLauncher = std::function<bool(const std::vector<std::string>& command)>;

    // `settingsCommand` is the panel to start, empty where there is none;
    // `log` may be null.
    DesktopNotificationSettingsOpener(
        std::vector<std::string> settingsCommand, CommandLauncher launcher, std::shared_ptr<DiagnosticLog> log);
    // The panel of $XDG_CURRENT_DESKTOP, started through GLib.
    static NotNullShared<DesktopNotificationSettingsOpener> forThisSession(std::shared_ptr<DiagnosticLog> log);

    // The notification settings of the desktops named in `currentDesktop`
    // (a colon-separated XDG_CURRENT_DESKTOP); empty where none is known.
    static std::vector<std::string> settingsCommandFor(std::string_view currentDesktop);

    void openNotificationSettings() override;

private:
    std::vector<std::string> m_settingsCommand;
    CommandLauncher m_launcher;
    std::shared_ptr<DiagnosticLog> m_log;
};

} // namespace velmora
