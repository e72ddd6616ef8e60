#pragma once

#include <stdexcept>

namespace velmora {

// Work handed to a main thread that has shut down. Thrown to the submitter
// rather than dropping the work, so that a wrong order of teardown shows.
class MainThreadStopped final : public std::runtime_error {
public:
    MainThreadStopped()
        : std::runtime_error("the main thread has stopped")
    {
    }
};

} // namespace velmora
