#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace velmora {

// Starts a program of the desktop's (its name, looked up in PATH, then its
// arguments) without a shell and without waiting for it; its output goes
// nowhere. False when it could not be started, an empty command among
// those reasons.
bool launchDetached(const std::vector<std::string>& command);

// Whether `currentDesktop` (a colon-separated XDG_CURRENT_DESKTOP such as
// "ubuntu:GNOME") names `wanted`: the desktop's own settings programs are
// chosen by it.
bool currentDesktopIncludes(std::string_view currentDesktop, std::string_view wanted);

} // namespace velmora
