#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <glib.h>

#include "VelmoraMac/Platform/Application.h"

namespace velmora {

// How a launch at login is told from any other: the autostart entry starts
// the program through env(1) with one variable set, VELMORA_LOGIN_LAUNCH=1,
// which the library, not owning the program's main(), reads from its
// environment. The program's own arguments are left as they were, so that
// a rendering program that refuses arguments it does not know still starts
// at login. The programs the library starts itself (a settings panel, a
// browser) get the environment without the variable, so that none of them
// passes it on as if it too had been started at login.
class LoginLaunchMarker {
public:
    static constexpr std::string_view variable = "VELMORA_LOGIN_LAUNCH";
    static constexpr std::string_view value = "1";

    LoginLaunchMarker() = delete;

    // The first launch of a process whose marker variable has `marker` as
    // its value (none when it is not set): an open-application request,
    // marked as a login launch when the value is the marker's.
    static LaunchEvent launchEvent(const std::optional<std::string>& marker);

    // What the autostart entry runs: env(1) setting the marker, then
    // `executable` with the arguments this process was started with
    // (argv[0] first, and left out).
    static std::vector<std::string> loginCommand(
        const std::string& executable, const std::vector<std::string>& arguments);

    // This process's arguments, argv[0] first, from /proc/self/cmdline;
    // empty when that cannot be read.
    static std::vector<std::string> processArguments();
    // The absolute path of this process's program; empty when unknown.
    static std::string processExecutable();
    // The marker variable's value in this process's environment; none
    // when it is not set.
    static std::optional<std::string> processMarker();
    // `environment` (as g_get_environ() gives it, and taken over) without
    // the marker variable: the environment of a program this process starts.
    static gchar** withoutMarker(gchar** environment);
};

} // namespace velmora
