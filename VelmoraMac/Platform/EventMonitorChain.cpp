#include "VelmoraMac/Platform/EventMonitorChain.h"

#include "VelmoraMac/Platform/PlatformToken.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace velmora {

EventMonitorChain::EventMonitorChain()
    : m_state(std::make_shared<State>())
{
}

EventMonitorChain::~EventMonitorChain() = default;

std::unique_ptr<PlatformToken> EventMonitorChain::addLocalMonitor(std::uint64_t eventMask, Handler handler)
{
    if (std::ranges::find(m_refusedMasks, eventMask) != m_refusedMasks.end() || !handler)
        return nullptr;
    const std::uint64_t id = m_nextID++;
    Entry entry{id, eventMask, std::move(handler)};
    if (m_state->dispatchDepth > 0) {
        m_state->added.push_back(std::move(entry));
    } else {
        std::erase_if(m_state->entries, [](const Entry& old) { return old.mask == 0; });
        m_state->entries.push_back(std::move(entry));
    }
    return std::make_unique<RemovalToken>([weak = std::weak_ptr<State>(m_state), id] {
        const auto state = weak.lock();
        if (!state)
            return;
        std::erase_if(state->added, [id](const Entry& added) { return added.id == id; });
        // Only emptied, not erased: a handler may remove a monitor while a
        // dispatch walks the list, and even its own while it runs.
        for (Entry& installed : state->entries) {
            if (installed.id == id)
                installed.mask = 0;
        }
    });
}

EventDisposition EventMonitorChain::dispatch(const InputEvent& event)
{
    const std::uint64_t bit = eventMaskBit(event.type);
    // Kept alive and in place for the walk; monitors added meanwhile join
    // the list afterwards and see the next event.
    const std::shared_ptr<State> state = m_state;
    ++state->dispatchDepth;
    EventDisposition disposition = EventDisposition::passOn;
    for (const Entry& entry : state->entries) {
        if ((entry.mask & bit) != 0 && entry.handler(event) == EventDisposition::consume) {
            disposition = EventDisposition::consume;
            break;
        }
    }
    if (--state->dispatchDepth == 0 && !state->added.empty()) {
        std::ranges::move(state->added, std::back_inserter(state->entries));
        state->added.clear();
    }
    return disposition;
}

void EventMonitorChain::refuse(std::uint64_t eventMask)
{
    m_refusedMasks.push_back(eventMask);
}

std::size_t EventMonitorChain::monitorCount() const
{
    const auto installed = [](const Entry& entry) { return entry.mask != 0; };
    return static_cast<std::size_t>(std::ranges::count_if(m_state->entries, installed)) + m_state->added.size();
}

} // namespace velmora
