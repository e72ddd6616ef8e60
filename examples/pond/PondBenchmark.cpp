#include "PondBenchmark.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include <cairo.h>
#include <malloc.h>
#include <time.h>

#include "FrameStatistics.h"
#include "Owned.h"
#include "PondDemoState.h"
#include "PondFrame.h"
#include "PondSnapshot.h"
#include "VelmoraLibrary.h"

namespace pond {
namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

constexpr std::size_t shortRun = 1'000;
constexpr std::size_t warmUp = 120;
// The camera moves to another lotus this often, so that every part of the
// pond is drawn; after the short run a lotus is noticed this often, so that
// new snapshots arrive and are read. Only full-grown lotuses are noticed:
// a lotus that grows needs a bigger flower bitmap, which is the practice
// changing, not memory leaking, and would hide a leak in the figures.
constexpr std::size_t tourEvery = 300;
constexpr std::size_t noticeEvery = 2'000;
constexpr double framesPerSecond = 60;
constexpr double frameBudget = 1000 / framesPerSecond; // milliseconds
// The noticing run: as quick as a person taps, five a second.
constexpr std::size_t noticingRun = 50;
constexpr std::size_t noticingEvery = 12;

// Resident memory tells what the process costs; heap in use tells whether
// anything is kept: pages malloc has touched once stay resident, so the two
// together separate a leak from an allocator settling.
struct MemoryReading {
    long residentKilobytes = -1; // -1 when /proc does not tell
    std::size_t heapKilobytes = 0;
};

// The drawing thread's own CPU time: on a machine shared with other work
// the wall clock also counts the time the thread waited for a core.
FrameStatistics::Duration threadTime()
{
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return std::chrono::seconds(now.tv_sec) + std::chrono::nanoseconds(now.tv_nsec);
}

MemoryReading readMemory()
{
    MemoryReading reading;
    std::ifstream status("/proc/self/status");
    std::string line;
    while (std::getline(status, line)) {
        if (line.rfind("VmRSS:", 0) == 0) {
            reading.residentKilobytes = std::strtol(line.c_str() + 6, nullptr, 10);
            break;
        }
    }
    const struct mallinfo2 heap = mallinfo2();
    reading.heapKilobytes = (heap.uordblks + heap.hblkhd) / 1024;
    return reading;
}

void printMemory(std::size_t frames, const MemoryReading& reading)
{
    std::printf("  resident memory after %zu frames: %ld kB (heap in use %zu kB)\n", frames, reading.residentKilobytes,
        reading.heapKilobytes);
}

// A data folder of its own, removed at the end: the user's practice is
// never touched.
class ScratchFolder {
public:
    ScratchFolder()
    {
        std::string pattern = (fs::temp_directory_path() / "pond-benchmark-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr)
            throw std::system_error(errno, std::generic_category(), "cannot make a data folder for the benchmark");
        m_path = pattern;
    }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;
    ScratchFolder(ScratchFolder&&) = delete;
    ScratchFolder& operator=(ScratchFolder&&) = delete;
    ~ScratchFolder()
    {
        std::error_code ignored;
        // What cannot be removed stays in the temporary folder, no harm.
        fs::remove_all(m_path, ignored);
    }
    [[nodiscard]] const fs::path& path() const { return m_path; }

private:
    fs::path m_path;
};

int run(const std::string& libraryPath, const PondBenchmarkOptions& options)
{
    const std::size_t longRun = std::max(options.frames, shortRun);
    const PondLayout::Size benchmarkView = options.view;
    const ScratchFolder data;
    PondDemoState::write(data.path());
    // Read by the library's start, which is still to come; nothing else
    // runs yet.
    setenv("XDG_DATA_HOME", data.path().c_str(), 1); // NOLINT(concurrency-mt-unsafe)

    const VelmoraLibrary library(libraryPath);
    library.start();
    PondFrame frame(library, options.scale);
    const Owned<cairo_surface_t, cairo_surface_destroy> surface(cairo_image_surface_create(CAIRO_FORMAT_ARGB32,
        static_cast<int>(benchmarkView.width) * options.scale, static_cast<int>(benchmarkView.height) * options.scale));
    cairo_surface_set_device_scale(surface.get(), options.scale, options.scale);
    const Owned<cairo_t, cairo_destroy> cr(cairo_create(surface.get()));

    std::size_t number = 0;
    auto seconds = [&number] { return 1.0 + static_cast<double>(number) / framesPerSecond; };

    // The first snapshot comes from the library's own thread.
    const auto deadline = Clock::now() + std::chrono::seconds(10);
    while (!frame.snapshot()) {
        if (Clock::now() > deadline) {
            std::fprintf(stderr, "pond: the library sent no snapshot within 10 s\n");
            return EXIT_FAILURE;
        }
        frame.advance(seconds(), benchmarkView);
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    const std::size_t lotuses = frame.snapshot()->topics.size();
    std::vector<std::size_t> fullGrown;
    for (std::size_t i = 0; i < lotuses; ++i) {
        if (frame.snapshot()->topics[i].growthMoments == PondSnapshot::maximumGrowth)
            fullGrown.push_back(i);
    }
    // Every path the long run takes runs once before memory is first
    // measured: the first save and the first saved label load code, fonts
    // and caches once, which is not the pond growing.
    for (std::size_t i = 0; i < warmUp; ++i, ++number) {
        if (i < fullGrown.size()) {
            frame.select(fullGrown[i]);
            frame.activate();
        }
        frame.advance(seconds(), benchmarkView);
        frame.paint(cr.get());
    }

    FrameStatistics shortFrames(shortRun);
    FrameStatistics shortPolls(shortRun);
    FrameStatistics shortCpu(shortRun);
    FrameStatistics allFrames(longRun);
    FrameStatistics noticings(longRun / noticeEvery + 1);
    MemoryReading residentShort;
    MemoryReading residentMiddle;
    const std::size_t middleRun = longRun / 10;
    std::size_t snapshotsBefore = frame.snapshotsRead();
    for (std::size_t i = 0; i < longRun; ++i, ++number) {
        if (i % tourEvery == 0 && lotuses > 0)
            frame.select((i / tourEvery * 5) % lotuses);
        if (i >= shortRun && i % noticeEvery == 0 && !fullGrown.empty()) {
            frame.select(fullGrown[(i / noticeEvery) % fullGrown.size()]);
            // Noticing waits for the library to save; it happens on a
            // click, not every frame, so it is measured on its own.
            const auto start = Clock::now();
            frame.activate();
            noticings.add(Clock::now() - start);
        }
        const auto start = Clock::now();
        const auto cpuStart = threadTime();
        frame.advance(seconds(), benchmarkView);
        frame.paint(cr.get());
        cairo_surface_flush(surface.get());
        const auto took = Clock::now() - start;
        allFrames.add(took);
        if (i < shortRun) {
            shortCpu.add(threadTime() - cpuStart);
            shortFrames.add(took);
            shortPolls.add(frame.lastPoll());
        }
        if (i + 1 == shortRun)
            residentShort = readMemory();
        if (i + 1 == middleRun)
            residentMiddle = readMemory();
    }
    const MemoryReading residentLong = readMemory();

    // Fifty noticings among frames: each frame's work with the noticing
    // made in it (the library's save included, as in the window, where
    // the key arrives on the drawing thread), and what each new snapshot
    // cost once it arrived.
    FrameStatistics noticingFrames(noticingRun * noticingEvery);
    FrameStatistics snapshotWork(noticingRun * noticingEvery);
    std::size_t over = 0;
    std::size_t overWithoutSave = 0;
    for (std::size_t i = 0; i < noticingRun * noticingEvery && !fullGrown.empty(); ++i, ++number) {
        const auto start = Clock::now();
        FrameStatistics::Duration saving{0};
        if (i % noticingEvery == 0) {
            frame.select(fullGrown[(i / noticingEvery) % fullGrown.size()]);
            frame.activate();
            saving = Clock::now() - start;
        }
        frame.advance(seconds(), benchmarkView);
        frame.paint(cr.get());
        cairo_surface_flush(surface.get());
        const FrameStatistics::Duration took = Clock::now() - start;
        noticingFrames.add(took);
        if (frame.lastSnapshotWork().count() > 0)
            snapshotWork.add(frame.lastSnapshotWork());
        over += took.count() > frameBudget ? 1U : 0U;
        overWithoutSave += (took - saving).count() > frameBudget ? 1U : 0U;
    }

    std::printf("pond benchmark: %.0f x %.0f points offscreen at scale %d, %zu lotuses (%zu full-grown, the ones "
                "noticed), one frame = poll + paint\n",
        benchmarkView.width, benchmarkView.height, options.scale, lotuses, fullGrown.size());
    std::printf(
        "first %zu frames: median %.3f ms, 99th percentile %.3f ms, max %.3f ms (a 60 Hz frame lasts 16.667 ms)\n",
        shortRun, shortFrames.percentile(0.5), shortFrames.percentile(0.99), shortFrames.maximum());
    std::printf("  CPU time of the drawing thread: median %.3f ms, 99th percentile %.3f ms, max %.3f ms\n",
        shortCpu.percentile(0.5), shortCpu.percentile(0.99), shortCpu.maximum());
    std::printf("  polling the library (ten readers and the event): %.1f %% of frame time, median %.3f ms a frame\n",
        100 * shortPolls.total() / shortFrames.total(), shortPolls.percentile(0.5));
    printMemory(shortRun, residentShort);
    std::printf("all %zu frames: median %.3f ms, 99th percentile %.3f ms, max %.3f ms; %zu new snapshots read\n",
        longRun, allFrames.percentile(0.5), allFrames.percentile(0.99), allFrames.maximum(),
        frame.snapshotsRead() - snapshotsBefore);
    std::printf("  a noticing (the library saving included): median %.3f ms, max %.3f ms over %zu\n",
        noticings.percentile(0.5), noticings.maximum(), noticings.count());
    if (middleRun > shortRun)
        printMemory(middleRun, residentMiddle);
    printMemory(longRun, residentLong);
    std::printf("%zu noticings among %zu frames: %zu frames over %.3f ms (%zu without the library's save); frame "
                "median %.3f ms, 99th percentile %.3f ms, max %.3f ms\n",
        noticingFrames.count() / noticingEvery, noticingFrames.count(), over, frameBudget, overWithoutSave,
        noticingFrames.percentile(0.5), noticingFrames.percentile(0.99), noticingFrames.maximum());
    std::printf("  taking a new snapshot in (read, compared, redrawn where changed): median %.3f ms, max %.3f ms over "
                "%zu snapshots\n",
        snapshotWork.percentile(0.5), snapshotWork.maximum(), snapshotWork.count());
    std::fflush(stdout);
    return EXIT_SUCCESS;
}

} // namespace

int runBenchmark(const std::string& libraryPath, const PondBenchmarkOptions& options)
{
    try {
        return run(libraryPath, options);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "pond: %s\n", error.what());
        return EXIT_FAILURE;
    }
}

} // namespace pond
