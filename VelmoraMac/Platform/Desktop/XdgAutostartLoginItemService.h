#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <gio/gio.h>

#include "VelmoraMac/Platform/GLibPointer.h"
#include "VelmoraMac/Platform/LoginItemService.h"
#include "VelmoraMac/Platform/NotNullShared.h"

namespace velmora {

class GLibSignal;

// Launch at login on a Linux desktop: an XDG autostart entry in the user's
// configuration folder that starts this program with the login marker
// (LoginLaunchMarker). The login item is enabled while a session would
// start that entry; the user may also switch it off or delete it in the
// desktop's own settings, which the status follows: the autostart folder is
// watched and the entry read again whenever it changes, so that asking for
// the status, as the shell does on every noticing, reads no file. A folder
// that does not exist yet is watched too, and seen when it comes. There is
// no approval step on Linux.
// Main thread only: made on the thread iterating GLib's default context,
// where the changes are seen.
class XdgAutostartLoginItemService final : public LoginItemService {
public:
    // Starts a program (its path, then its arguments) without waiting for
    // it; false when it could not be started.
    using CommandLauncher = std::function<bool(const std::vector<std::string>& command)>;

    static constexpr const char* entryName = "app.velmora.mac.desktop";

    // `entry` is the autostart file, `command` what it starts, and
    // `settingsCommand` the desktop's panel for the programs started at
    // login (empty where the desktop has none).
    XdgAutostartLoginItemService(std::filesystem::path entry, std::vector<std::string> command,
        std::vector<std::string> settingsCommand, CommandLauncher launcher);

    XdgAutostartLoginItemService(const XdgAutostartLoginItemService&) = delete;
    XdgAutostartLoginItemService& operator=(const XdgAutostartLoginItemService&) = delete;
    XdgAutostartLoginItemService(XdgAutostartLoginItemService&&) = delete;
    XdgAutostartLoginItemService& operator=(XdgAutostartLoginItemService&&) = delete;
    ~XdgAutostartLoginItemService() override;

    // For this process: the entry in the XDG configuration home
    // (XdgBaseDirectory), as forConfigHome() makes it.
    static NotNullShared<LoginItemService> forThisProcess();
    // The entry in `configHome`/autostart, starting this process's program
    // with its arguments, the settings of $XDG_CURRENT_DESKTOP, programs
    // started through GLib. Without a configuration home, a service that
    // has nothing registered and refuses to register, saying why.
    static NotNullShared<LoginItemService> forConfigHome(const std::optional<std::filesystem::path>& configHome);

    // The XDG configuration home: `xdgConfigHome` when absolute, else
    // ".config" in `home` when that is absolute; relative values are
    // ignored, as the XDG rules ask.
    static std::optional<std::filesystem::path> configHomeFrom(std::string_view xdgConfigHome, std::string_view home);
    // The panel listing the programs started at login on the desktops
    // named in `currentDesktop` (a colon-separated XDG_CURRENT_DESKTOP);
    // empty where there is none.
    static std::vector<std::string> settingsCommandFor(std::string_view currentDesktop);

    // As the entry was when the main loop last told of a change to it, or
    // as our own registering left it.
    [[nodiscard]] LoginItemStatus status() const override;
    // Throws LoginItemError when the entry cannot be written, or when
    // there is no program to start.
    void registerLoginItem() override;
    // Throws LoginItemError when the entry cannot be removed.
    void unregisterLoginItem() override;
    void openLoginItemsSettings() override;

    [[nodiscard]] const std::filesystem::path& entry() const { return m_entry; }

private:
    using File = GLibPointer<GFile, g_object_ref, g_object_unref>;
    using FileMonitor = GLibPointer<GFileMonitor, g_object_ref, g_object_unref>;

    [[nodiscard]] LoginItemStatus readStatus() const;
    void watchFolder();
    // Whether `file`, named in a change of the folder (so the folder or a
    // file in it), is the entry or the folder itself.
    [[nodiscard]] bool concernsEntry(GFile* file) const;

    static void folderChanged(
        GFileMonitor* monitor, GFile* file, GFile* otherFile, GFileMonitorEvent event, gpointer self);

    std::filesystem::path m_entry;
    std::vector<std::string> m_command;
    std::vector<std::string> m_settingsCommand;
    CommandLauncher m_launcher;
    // The autostart folder.
    File m_folder;
    LoginItemStatus m_status = LoginItemStatus::notRegistered;
    FileMonitor m_monitor;
    // After the monitor, so that it is disconnected before the monitor goes.
    std::unique_ptr<GLibSignal> m_folderChanged;
};

} // namespace velmora
