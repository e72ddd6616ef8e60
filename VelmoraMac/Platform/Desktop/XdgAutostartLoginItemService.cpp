#include "XdgAutostartLoginItemService.h"

#include <system_error>
#include <utility>

#include "AutostartEntry.h"
#include "DetachedCommand.h"
#include "GuardedCallback.h"
#include "LoginLaunchMarker.h"
#include "UnavailableLoginItemService.h"
#include "VelmoraCore/DurableFile.h"
#include "VelmoraMac/Platform/GLibSignal.h"
#include "VelmoraMac/Platform/LoginItemService.h"
#include "VelmoraMac/Platform/XdgBaseDirectory.h"

namespace velmora {

namespace fs = std::filesystem;

XdgAutostartLoginItemService::XdgAutostartLoginItemService(fs::path entry, std::vector<std::string> command,
    std::vector<std::string> settingsCommand, CommandLauncher launcher)
    : m_entry(std::move(entry))
    , m_command(std::move(command))
    , m_settingsCommand(std::move(settingsCommand))
    , m_launcher(std::move(launcher))
    , m_folder(File::adopt(g_file_new_for_path(m_entry.parent_path().c_str())))
{
    // Watched before it is read, so that no change falls between the two.
    watchFolder();
    m_status = readStatus();
}

XdgAutostartLoginItemService::~XdgAutostartLoginItemService()
{
    if (m_monitor)
        g_file_monitor_cancel(m_monitor.get());
}

NotNullShared<LoginItemService> XdgAutostartLoginItemService::forThisProcess()
{
    return forConfigHome(XdgBaseDirectory::forThisProcess("XDG_CONFIG_HOME", ".config"));
}

NotNullShared<LoginItemService> XdgAutostartLoginItemService::forConfigHome(const std::optional<fs::path>& configHome)
{
    if (!configHome)
        return NotNullShared<UnavailableLoginItemService>::make(
            "there is no configuration folder for the autostart entry: neither XDG_CONFIG_HOME, HOME nor the password "
            "database names one");
    const std::string executable = LoginLaunchMarker::processExecutable();
    std::vector<std::string> command;
    if (!executable.empty())
        command = LoginLaunchMarker::loginCommand(executable, LoginLaunchMarker::processArguments());
    return NotNullShared<XdgAutostartLoginItemService>::make(*configHome / "autostart" / entryName, std::move(command),
        settingsCommandFor(XdgBaseDirectory::environmentVariable("XDG_CURRENT_DESKTOP")), &launchDetached);
}

std::optional<fs::path> XdgAutostartLoginItemService::configHomeFrom(
    std::string_view xdgConfigHome, std::string_view home)
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
    return m_status;
}

LoginItemStatus XdgAutostartLoginItemService::readStatus() const
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

void XdgAutostartLoginItemService::watchFolder()
{
    GError* error = nullptr;
    // The monitor tells of changes on the context that is thread-default
    // when it is made: the main loop's, whatever the caller pushed.
    g_main_context_push_thread_default(g_main_context_default());
    m_monitor = FileMonitor::adopt(g_file_monitor_directory(m_folder.get(), G_FILE_MONITOR_NONE, nullptr, &error));
    g_main_context_pop_thread_default(g_main_context_default());
    if (!m_monitor) {
        // No file monitoring here: the status then follows our own changes
        // only, and a change made elsewhere shows at the next start.
        g_error_free(error);
        return;
    }
    m_folderChanged = std::make_unique<GLibSignal>(
        m_monitor.get(), "changed", G_CALLBACK(&XdgAutostartLoginItemService::folderChanged), this);
}

bool XdgAutostartLoginItemService::concernsEntry(GFile* file) const
{
    if (file == nullptr)
        return false;
    if (g_file_equal(file, m_folder.get()) != FALSE)
        return true;
    gchar* name = g_file_get_basename(file);
    const bool concerns = name != nullptr && m_entry.filename() == name;
    g_free(name);
    return concerns;
}

void XdgAutostartLoginItemService::folderChanged(
    GFileMonitor* /*monitor*/, GFile* file, GFile* otherFile, GFileMonitorEvent event, gpointer self)
{
    // A write in progress: its end comes as a hint of its own, and the
    // entry is read then, whole.
    if (event == G_FILE_MONITOR_EVENT_CHANGED)
        return;
    runGuarded([&] {
        auto* service = static_cast<XdgAutostartLoginItemService*>(self);
        // The folder itself appearing or going: a folder made after the
        // monitor is told of as a whole, with the entry already inside.
        if (service->concernsEntry(file) || service->concernsEntry(otherFile))
            service->m_status = service->readStatus();
    });
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
    // Known without reading it back; the monitor's word on our own write
    // comes later and agrees.
    m_status = LoginItemStatus::enabled;
}

void XdgAutostartLoginItemService::unregisterLoginItem()
{
    std::error_code error;
    fs::remove(m_entry, error);
    if (error)
        throw LoginItemError(fs::filesystem_error("remove the autostart entry", m_entry, error).what());
    m_status = LoginItemStatus::notRegistered;
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
