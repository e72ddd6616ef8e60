#pragma once

#include <cstddef>
#include <string>

namespace pond {

// `pond --benchmark`: renders the pond offscreen as fast as it goes, through
// the same frame as the window (poll and paint), on a throw-away practice
// of seventeen lotuses, and prints what the frames cost: median and 99th
// percentile over 1,000 frames, the share of them spent calling the
// library, and the resident memory after 1,000 frames and after `frames`
// (100,000 unless asked otherwise; never fewer than 1,000).
// It prints figures only and judges none. Needs no display. Returns the
// process's exit status.
int runBenchmark(const std::string& libraryPath, std::size_t frames = 100'000);

} // namespace pond
