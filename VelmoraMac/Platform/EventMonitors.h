#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include "EventDisposition.h"
#include "InputEvent.h"
#include "PlatformToken.h"

namespace velmora {

// Local event monitors: handlers that see the application's own input
// events before they are dispatched to a window, and may keep them from it.
// Main thread only; handlers run on the main thread inside the event
// dispatch.
class EventMonitors {
public:
    using Handler = std::function<EventDisposition(const InputEvent& event)>;

    EventMonitors() = default;
    EventMonitors(const EventMonitors&) = delete;
    EventMonitors& operator=(const EventMonitors&) = delete;
    EventMonitors(EventMonitors&&) = delete;
    EventMonitors& operator=(EventMonitors&&) = delete;
    virtual ~EventMonitors() = default;

    // Calls `handler` for every event whose type is in `eventMask`
    // (eventMaskBit), in the order monitors were added, until one consumes
    // it. Null when the platform refuses the monitor.
    virtual std::unique_ptr<PlatformToken> addLocalMonitor(std::uint64_t eventMask, Handler handler) = 0;
};

} // namespace velmora
