#pragma once

#include <cstdint>

namespace velmora {

// The system's notifications the host observes. Those named window...
// concern one window, which the observer is given; the others concern the
// application or the machine.
enum class SystemNotification : std::uint8_t {
    applicationDidBecomeActive,
    applicationDidResignActive,
    windowWillMiniaturize,
    windowDidDeminiaturize,
    windowDidResize,
    windowWillEnterFullScreen,
    windowWillExitFullScreen,
    windowDidEnterFullScreen,
    windowDidExitFullScreen,
    windowDidResignKey,
    applicationDidChangeScreenParameters,
    workspaceWillSleep,
    workspaceScreensDidSleep,
    workspaceDidWake,
    systemTimeZoneDidChange,
};

} // namespace velmora
