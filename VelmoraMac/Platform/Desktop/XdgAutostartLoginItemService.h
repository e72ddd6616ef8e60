#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "VelmoraMac/Platform/LoginItemService.h"

namespace velmora {

// Launch at login on a Linux desktop: an XDG autostart entry in the user's
// configuration folder that starts this program with the login marker
// (LoginLaunchMarker). The login item is enabled while a session would
// start that entry; the user may also switch it off or delete it in the
// desktop's own settings, which the status follows, since it is read anew
// on every call. There is no approval step on Linux.
// Main thread only.
class XdgAutostartLoginItemService final : public LoginItemService {
public:
    // Starts a program (its path, then its arguments) without waiting for
    // it; false when it could not be started.
    using CommandLauncher = std::function<bool(const std::vector<std::string>& command)>;

    static constexpr const char* entryName = "app.velmora.mac.desktop";

    // `entry` is the autostart file, `command` what it starts, and
    // `settingsCommand` the desktop's panel for the programs started at
    // login (empty where the desktop has none).
    XdgAutostartLoginItemService(std::filesystem::path entry, std::vector<std::string> command, std::vector<std::string> settingsCommand, CommandLauncher launcher);

    // For this process: the entry in $XDG_CONFIG_HOME/autostart (default
    // ~/.config), starting this process's program with its arguments, the
    // settings of $XDG_CURRENT_DESKTOP, programs started through GLib.
    // None when no configuration folder can be found.
    static std::shared_ptr<XdgAutostartLoginItemService> forThisProcess();

    // The XDG configuration home: `xdgConfigHome` when absolute, else
    // ".config" in `home` when that is absolute; relative values are
    // ignored, as the XDG rules ask.
    static std::optional<std::filesystem::path> configHomeFrom(std::string_view xdgConfigHome, std::string_view home);
    // The panel listing the programs started at login on the desktops
    // named in `currentDesktop` (a colon-separated XDG_CURRENT_DESKTOP);
    // empty where there is none.
    static std::vector<std::string> settingsCommandFor(std::string_view currentDesktop);

    [[nodiscard]] LoginItemStatus status() const override;
    // Throws LoginItemError when the entry cannot be written, or when
    // there is no program to start.
    void registerLoginItem() override;
    // Throws LoginItemError when the entry cannot be removed.
    void unregisterLoginItem() override;
    void openLoginItemsSettings() override;

    [[nodiscard]] const std::filesystem::path& entry() const { return m_entry; }

private:
    std::filesystem::path m_entry;
    std::vector<std::string> m_command;
    std::vector<std::string> m_settingsCommand;
    CommandLauncher m_launcher;
};

} // namespace velmora
