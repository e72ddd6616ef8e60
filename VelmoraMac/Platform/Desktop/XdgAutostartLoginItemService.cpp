#include "XdgAutostartLoginItemService.h"

#include <system_error>
#include <utility>

#include "AutostartEntry.h"
#include "DetachedCommand.h"
#include "LoginLaunchMarker.h"
#include "VelmoraCore/DurableFile.h"
#include "VelmoraMac/Platform/LoginItemError.h"
#include "VelmoraMac/Platform/XdgBaseDirectory.h"

namespace velmora {

namespace fs = std::filesystem;

XdgAutostartLoginItemService::XdgAutostartLoginItemService(fs::path entry, std::vector<std::string> command, std::vector<std::string> settingsCommand, CommandLauncher launcher)
    : m_entry(std::move(entry))
    , m_command(std::move(command))
    , m_settingsCommand(std::move(settingsCommand))
    , m_launcher(std::move(launcher))
{
}

std::shared_ptr<XdgAutostartLoginItemService> XdgAutostartLoginItemService::forThisProcess()
{
    const std::optional<fs::path> configHome = configHomeFrom(XdgBaseDirectory::environmentVariable("XDG_CONFIG_HOME"), XdgBaseDirectory::environmentVariable("HOME"));
    if (!configHome)
        return nullptr;
    const std::string executable = LoginLaunchMarker::processExecutable();
    std::vector<std::string> command;
    if (!executable.empty())
        command = LoginLaunchMarker::loginCommand(executable, LoginLaunchMarker::processArguments());
    return std::make_shared<XdgAutostartLoginItemService>(*configHome / "autostart" / entryName, std::move(command), settingsCommandFor(XdgBaseDirectory::environmentVariable("XDG_CURRENT_DESKTOP")), &launchDetached);
}

std::optional<fs::path> XdgAutostartLoginItemService::configHomeFrom(std::string_view xdgConfigHome, std::string_view home)
{
    return XdgBaseDirectory::resolve(xdgConfigHome, home, ".config");
}

std::vector<std::string> XdgAutostartLoginItemService::settingsCommandFor(std::string_view currentDesktop)
{
    if (currentDesktopIncludes(currentDesktop, "KDE"))
        return {"systemsettings", "kcm_autostart"};
    if (currentDesktopIncludes(currentDesktop, "XFCE"))
        return {"xfce4-session-settings"};
    return {};
}

LoginItemStatus XdgAutostartLoginItemService::status() const
{
    std::string text;
    try {
        text = DurableFile::read(m_entry);
    } catch (const fs::filesystem_error&) {
        // Missing or unreadable: a session could not start it either.
        return LoginItemStatus::notRegistered;
    }
    return AutostartEntry::launches(text) ? LoginItemStatus::enabled : LoginItemStatus::notRegistered;
}

void XdgAutostartLoginItemService::registerLoginItem()
{
    if (m_command.empty())
        throw LoginItemError("the program to start at login is unknown");
    try {
        DurableFile::createFolders(m_entry.parent_path());
        DurableFile::write(m_entry, AutostartEntry::render(m_command));
    } catch (const fs::filesystem_error& error) {
        throw LoginItemError(error.what());
    }
}

void XdgAutostartLoginItemService::unregisterLoginItem()
{
    std::error_code error;
    fs::remove(m_entry, error);
    if (error)
        throw LoginItemError(fs::filesystem_error("remove the autostart entry", m_entry, error).what());
}

void XdgAutostartLoginItemService::openLoginItemsSettings()
{
    if (m_settingsCommand.empty() || !m_launcher)
        return;
    // A desktop without its settings program installed has nothing to
    // show; the panel's approval text still tells the user what to do.
    (void)m_launcher(m_settingsCommand);
}

} // namespace velmora
