#pragma once

#include <string>
#include <vector>

namespace velmora {

// Starts a program of the desktop's (its name, looked up in PATH, then its
// arguments) without a shell and without waiting for it; its output goes
// nowhere. False when it could not be started, an empty command among
// those reasons.
bool launchDetached(const std::vector<std::string>& command);

} // namespace velmora
