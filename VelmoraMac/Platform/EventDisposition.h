#pragma once

#include <cstdint>

namespace velmora {

// What a local event monitor does with the event it was shown.
enum class EventDisposition : std::uint8_t {
    // Normal dispatch goes on: the window gets the event.
    passOn,
    // The monitor has handled it; nobody else sees it.
    consume,
};

} // namespace velmora
