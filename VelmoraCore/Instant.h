#pragma once

#include <chrono>

namespace velmora {

// A point in time. Milliseconds rather than the system clock's nanoseconds:
// a nanosecond count overflows before the year 1678, while day keys reach
// back to the year 1.
using Instant = std::chrono::sys_time<std::chrono::milliseconds>;

} // namespace velmora
