#pragma once

#include <cstdint>

#include "VelmoraMac/Platform/DiagnosticLog.h"
#include "VelmoraMac/Platform/PowerAssertionRegistry.h"

namespace velmora::DisplaySleepPolicy {

// The assertion the rendering program raises to keep the display awake
// while it draws, which would otherwise keep it awake forever.
constexpr const char* displayAssertionType = "PreventUserIdleDisplaySleep";
constexpr const char* displayAssertionName = "disable screen saver";

// Turns off every display assertion that the process `processID` holds
// under that name at full level, so that the display sleeps when the user
// is idle. The assertions stay with their holder; one raised again is
// turned off again by the next call. Writes one line to `log` for each
// assertion that cannot be changed and goes on with the rest. Does nothing
// when the registry cannot be read or answers anything other than arrays
// of records keyed by process number. Main thread only; never fails.
void allowSystemTimer(PowerAssertionRegistry& registry, DiagnosticLog& log, std::int32_t processID);

} // namespace velmora::DisplaySleepPolicy
