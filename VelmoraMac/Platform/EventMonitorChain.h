#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "VelmoraMac/Platform/EventMonitors.h"

namespace velmora {

// Local event monitors in a chain: dispatch() is the window system
// delivering one event, from a test or from the desktop's event handler.
// It allocates nothing, so that a test can count the allocations of the
// monitors themselves.
// Main thread only.
class EventMonitorChain final : public EventMonitors {
public:
    EventMonitorChain();
    EventMonitorChain(const EventMonitorChain&) = delete;
    EventMonitorChain& operator=(const EventMonitorChain&) = delete;
    EventMonitorChain(EventMonitorChain&&) = delete;
    EventMonitorChain& operator=(EventMonitorChain&&) = delete;
    ~EventMonitorChain() override;

    // Null, as a refusing platform answers, for a mask set with refuse().
    std::unique_ptr<PlatformToken> addLocalMonitor(std::uint64_t eventMask, Handler handler) override;

    // Shows `event` to the monitors whose mask has its type, in the order
    // they were added, until one consumes it; passOn when none does, and
    // the window would get it.
    EventDisposition dispatch(const InputEvent& event);

    // Monitors asked for with exactly `eventMask` are refused from now on.
    void refuse(std::uint64_t eventMask);
    [[nodiscard]] std::size_t monitorCount() const;

private:
    struct Entry {
        std::uint64_t id = 0;
        std::uint64_t mask = 0;
        Handler handler;
    };
    struct State {
        std::vector<Entry> entries;
        // Added while a dispatch runs: appending to `entries` then would
        // move the handler being called.
        std::vector<Entry> added;
        int dispatchDepth = 0;
    };

    // Shared with the tokens, which may outlive the monitors.
    std::shared_ptr<State> m_state;
    std::vector<std::uint64_t> m_refusedMasks;
    std::uint64_t m_nextID = 1;
};

} // namespace velmora
