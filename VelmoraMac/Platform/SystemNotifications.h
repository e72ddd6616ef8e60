#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include "PlatformToken.h"

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

class Window;

// The notification centres of the application and of the workspace, seen
// as one: observers of the SystemNotification kinds. Main thread only;
// observers run on the main thread, after the change they report unless
// the name says "will".
class SystemNotifications {
public:
    // `window` is the window concerned, null for notifications about no
    // window. Not owned: compare it by identity.
    using Observer = std::function<void(Window* window)>;

    SystemNotifications() = default;
    SystemNotifications(const SystemNotifications&) = delete;
    SystemNotifications& operator=(const SystemNotifications&) = delete;
    SystemNotifications(SystemNotifications&&) = delete;
    SystemNotifications& operator=(SystemNotifications&&) = delete;
    virtual ~SystemNotifications() = default;

    // Calls `observer` for every `notification` about any window, in the
    // order observers were added. Null when the platform refuses.
    virtual std::unique_ptr<PlatformToken> addObserver(SystemNotification notification, Observer observer) = 0;
};

} // namespace velmora
