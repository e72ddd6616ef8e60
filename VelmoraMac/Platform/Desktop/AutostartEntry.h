#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace velmora {

// The desktop entry that the session starts at login (the XDG autostart
// rules): written from a command, and read back the way session managers
// read it. GLib's key-file reader and writer do the key-file syntax; the
// Exec key's own quoting is done here, since GLib offers none for writing.
class AutostartEntry {
public:
    AutostartEntry() = delete;

    // An entry that runs `command` (the program's path, then its
    // arguments, each taken literally) at login. Throws
    // std::invalid_argument for an empty command.
    static std::string render(const std::vector<std::string>& command);

    // Whether a session would start an entry with this text: it is a
    // desktop entry, not Hidden, and not switched off with
    // X-GNOME-Autostart-enabled (GNOME's and others' way to turn it off
    // without deleting it). An unreadable text starts nothing.
    static bool launches(std::string_view text);

    // One argument as the Exec key writes it: quoted when it holds a
    // reserved character, with '%' doubled since it starts a field code.
    static std::string execArgument(std::string_view argument);
};

} // namespace velmora
