#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "VelmoraMac/Platform/Application.h"

namespace velmora {

// How a launch at login is told from any other: the autostart entry starts
// the program with one extra argument, which the library, not owning the
// program's main(), reads back from the process's command line. The
// rendering program must let that argument pass.
class LoginLaunchMarker {
public:
    static constexpr std::string_view argument = "--velmora-login";

    LoginLaunchMarker() = delete;

    // The first launch of a process with these arguments (argv[0] first):
    // an open-application request, marked as a login launch when the
    // marker is among the arguments after the program's name.
    static LaunchEvent launchEvent(const std::vector<std::string>& arguments);

    // What the autostart entry runs: `executable`, the arguments this
    // process was started with (without a marker it may already carry),
    // and the marker.
    static std::vector<std::string> loginCommand(const std::string& executable, const std::vector<std::string>& arguments);

    // This process's arguments, argv[0] first, from /proc/self/cmdline;
    // empty when that cannot be read.
    static std::vector<std::string> processArguments();
    // The absolute path of this process's program; empty when unknown.
    static std::string processExecutable();
};

} // namespace velmora
