#pragma once

#include <exception>

namespace velmora {

// Runs `work` inside a callback from GLib, which no exception may cross.
// One that escapes has nobody left to report to: the process ends with the
// exception printed, as it does for a failed task of the main thread.
template <typename Work> void runGuarded(const Work& work) noexcept
{
    try {
        work();
    } catch (...) {
        // std::terminate with the exception current, so that the runtime's
        // handler prints what it was.
        std::terminate();
    }
}

} // namespace velmora
