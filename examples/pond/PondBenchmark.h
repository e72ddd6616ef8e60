#pragma once

#include <cstddef>
#include <string>

#include "PondLayout.h"

namespace pond {

struct PondBenchmarkOptions {
    std::size_t frames = 100'000;
    // The pond's size in points, and device pixels per point.
    PondLayout::Size view{780, 640};
    int scale = 1;
};

// `pond --benchmark`: renders the pond offscreen as fast as it goes, through
// the same frame as the window (poll and paint), on a throw-away practice
// of seventeen lotuses, and prints what the frames cost: median and 99th
// percentile over 1,000 frames, the share of them spent calling the
// library, and the resident memory after 1,000 frames and after `frames`
// (100,000 unless asked otherwise; never fewer than 1,000). Then fifty
// noticings among 60 Hz frames: the frames over their 16.7 ms, and what
// taking each new snapshot in cost the drawing thread.
// It prints figures only and judges none. Needs no display. Returns the
// process's exit status.
int runBenchmark(const std::string& libraryPath, const PondBenchmarkOptions& options = {});

} // namespace pond
