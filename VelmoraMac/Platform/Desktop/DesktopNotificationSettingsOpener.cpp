#include "DesktopNotificationSettingsOpener.h"

#include <utility>

#include "DetachedCommand.h"
#include "VelmoraMac/Platform/XdgBaseDirectory.h"

namespace velmora {

DesktopNotificationSettingsOpener::DesktopNotificationSettingsOpener(
    std::vector<std::string> settingsCommand, CommandLauncher launcher, std::shared_ptr<DiagnosticLog> log)
    : m_settingsCommand(std::move(settingsCommand))
    , m_launcher(std::move(launcher))
    , m_log(std::move(log))
{
}

NotNullShared<DesktopNotificationSettingsOpener> DesktopNotificationSettingsOpener::forThisSession(
    std::shared_ptr<DiagnosticLog> log)
{
    return NotNullShared<DesktopNotificationSettingsOpener>::make(
        settingsCommandFor(XdgBaseDirectory::environmentVariable("XDG_CURRENT_DESKTOP")), &launchDetached,
        std::move(log));
}

std::vector<std::string> DesktopNotificationSettingsOpener::settingsCommandFor(std::string_view currentDesktop)
{
    if (currentDesktopIncludes(currentDesktop, "GNOME"))
        return {"gnome-control-center", "notifications"};
    if (currentDesktopIncludes(currentDesktop, "KDE"))
        return {"systemsettings", "kcm_notifications"};
    if (currentDesktopIncludes(currentDesktop, "XFCE"))
        return {"xfce4-notifyd-config"};
    return {};
}

void DesktopNotificationSettingsOpener::openNotificationSettings()
{
    std::string failure;
    if (m_settingsCommand.empty())
        failure = "Velmora: no notification settings known for this desktop";
    else if (!m_launcher || !m_launcher(m_settingsCommand))
        failure = "Velmora: could not start " + m_settingsCommand.front() + " to show the notification settings";
    if (!failure.empty() && m_log)
        m_log->write(failure);
}

} // namespace velmora
