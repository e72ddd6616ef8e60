#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "VelmoraMac/Platform/EventMonitors.h"

namespace velmora {

// Local event monitors in memory: dispatch() plays the window system
// delivering one event. It allocates nothing, so that a test can count the
// allocations of the monitors themselves.
// Main thread only.
class HeadlessEventMonitors final : public EventMonitors {
public:
    HeadlessEventMonitors();
    HeadlessEventMonitors(const HeadlessEventMonitors&) = delete;
    HeadlessEventMonitors& operator=(const HeadlessEventMonitors&) = delete;
    HeadlessEventMonitors(HeadlessEventMonitors&&) = delete;
    HeadlessEventMonitors& operator=(HeadlessEventMonitors&&) = delete;
    ~HeadlessEventMonitors() override;

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
