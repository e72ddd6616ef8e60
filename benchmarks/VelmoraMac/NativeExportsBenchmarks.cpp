// What the renderer pays for the C interface: one call from its own thread,
// which hops to the library's main thread and back, next to the bare cost of
// handing work to another thread and back with a condition variable; the
// same call made on the main thread, where it runs at once; a whole frame's
// polling; and, in fresh processes, the time from VelmoraStart to the first
// event and the memory a started library holds.
//
// Per-call figures are medians and 99th percentiles of individually timed
// calls, as counters in microseconds: a renderer notices the slow frames,
// not the mean. Calls come back to back, as within a frame's poll, and
// also after an idle pause, as the first call of a frame comes, when the
// library's thread has gone to sleep; the hand-over floor is measured both
// ways too.

#include <algorithm>
#include <array>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include <benchmark/benchmark.h>

#include "../VelmoraCore/RealisticPracticeState.h"
#include "../VelmoraCore/ScratchFolder.h"
#include "VelmoraCore/DurableFile.h"
#include "VelmoraMac/Exports/NativeStartup.h"
#include "VelmoraMac/Platform/MainThread.h"
#include "velmora/velmora.h"

namespace velmora {
namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

// A data home with a long-standing user in it, so that start-up publishes an
// event at once.
void seedLongStandingUser(const fs::path& dataHome, std::int64_t practiceDays = bench::threeYearsOfDays)
{
    const fs::path stateFile = dataHome / "app.velmora.mac" / "practice.json";
    DurableFile::createFolders(stateFile.parent_path());
    DurableFile::write(stateFile, bench::realisticPracticeState(practiceDays).toJSON());
}

// The library started in this process once, with the shipped content, for
// every benchmark that needs a host.
const bench::ScratchFolder& startedLibrary()
{
    static const bench::ScratchFolder dataHome;
    static const bool started = [] {
        seedLongStandingUser(dataHome / "");
        NativeStartup::start({
            [] { return std::optional<fs::path>(VELMORA_CONTENT_RESOURCE); },
            [] { return dataHome / ""; },
        });
        // The event of the start, so that later copies measure an empty queue.
        VelmoraFree(VelmoraCopyEvent());
        return true;
    }();
    (void)started;
    return dataHome;
}

class Latencies {
public:
    explicit Latencies(std::size_t expected) { m_nanoseconds.reserve(expected); }

    void add(Clock::duration duration)
    {
        m_nanoseconds.push_back(
            static_cast<double>(std::chrono::duration_cast<std::chrono::nanoseconds>(duration).count()));
    }

    void report(benchmark::State& state)
    {
        if (m_nanoseconds.empty())
            return;
        std::sort(m_nanoseconds.begin(), m_nanoseconds.end());
        state.counters["median_us"] = percentile(0.5) / 1000.0;
        state.counters["p99_us"] = percentile(0.99) / 1000.0;
    }

private:
    [[nodiscard]] double percentile(double fraction) const
    {
        const auto index = static_cast<std::size_t>(fraction * static_cast<double>(m_nanoseconds.size() - 1));
        return m_nanoseconds[index];
    }

    std::vector<double> m_nanoseconds;
};

// Between two frames at 60 Hz both threads have long gone to sleep.
constexpr std::chrono::milliseconds idlePause{2};

// Each call after an idle pause, which is left out of the timing.
template <typename Call> void timeEachCallAfterIdle(benchmark::State& state, const Call& call)
{
    Latencies latencies(1 << 12);
    for ([[maybe_unused]] auto _ : state) {
        std::this_thread::sleep_for(idlePause);
        const Clock::time_point begin = Clock::now();
        call();
        const Clock::duration duration = Clock::now() - begin;
        latencies.add(duration);
        state.SetIterationTime(std::chrono::duration<double>(duration).count());
    }
    latencies.report(state);
}

template <typename Call> void timeEachCall(benchmark::State& state, const Call& call)
{
    Latencies latencies(1 << 16);
    for ([[maybe_unused]] auto _ : state) {
        const Clock::time_point begin = Clock::now();
        call();
        latencies.add(Clock::now() - begin);
    }
    latencies.report(state);
}

void exportFromAnotherThread(benchmark::State& state)
{
    startedLibrary();
    timeEachCall(state, [] { benchmark::DoNotOptimize(VelmoraIsPondVisible()); });
}
BENCHMARK(exportFromAnotherThread)->Unit(benchmark::kMicrosecond)->UseRealTime();

void exportFromAnotherThreadAfterIdle(benchmark::State& state)
{
    startedLibrary();
    timeEachCallAfterIdle(state, [] { benchmark::DoNotOptimize(VelmoraIsPondVisible()); });
}
BENCHMARK(exportFromAnotherThreadAfterIdle)->Unit(benchmark::kMicrosecond)->UseManualTime()->Iterations(1000);

// The floor of any hop: a request handed to a waiting thread and its answer
// handed back, through one mutex and one condition variable.
class PingPong {
public:
    PingPong()
        : m_server([this] { serve(); })
    {
    }
    PingPong(const PingPong&) = delete;
    PingPong& operator=(const PingPong&) = delete;
    PingPong(PingPong&&) = delete;
    PingPong& operator=(PingPong&&) = delete;

    ~PingPong()
    {
        {
            const std::scoped_lock lock(m_mutex);
            m_stop = true;
        }
        m_changed.notify_all();
        m_server.join();
    }

    void ping()
    {
        std::unique_lock lock(m_mutex);
        ++m_sent;
        m_changed.notify_all();
        m_changed.wait(lock, [this] { return m_answered == m_sent; });
    }

private:
    void serve()
    {
        std::unique_lock lock(m_mutex);
        for (;;) {
            m_changed.wait(lock, [this] { return m_stop || m_answered != m_sent; });
            if (m_stop)
                return;
            m_answered = m_sent;
            m_changed.notify_all();
        }
    }

    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::uint64_t m_sent = 0;
    std::uint64_t m_answered = 0;
    bool m_stop = false;
    std::thread m_server;
};

void conditionVariablePingPong(benchmark::State& state)
{
    PingPong pingPong;
    timeEachCall(state, [&pingPong] { pingPong.ping(); });
}
BENCHMARK(conditionVariablePingPong)->Unit(benchmark::kMicrosecond)->UseRealTime();

void conditionVariablePingPongAfterIdle(benchmark::State& state)
{
    PingPong pingPong;
    timeEachCallAfterIdle(state, [&pingPong] { pingPong.ping(); });
}
BENCHMARK(conditionVariablePingPongAfterIdle)->Unit(benchmark::kMicrosecond)->UseManualTime()->Iterations(1000);

// The loop runs inside one task on the library's main thread, as a renderer
// drawing on that thread would call.
void exportOnMainThread(benchmark::State& state)
{
    startedLibrary();
    NativeStartup::mainThread()->submitSync(
        [&state] { timeEachCall(state, [] { benchmark::DoNotOptimize(VelmoraIsPondVisible()); }); });
}
BENCHMARK(exportOnMainThread)->Unit(benchmark::kMicrosecond)->UseRealTime();

void pollOneFrame()
{
    float x = 0;
    float y = 0;
    std::int32_t down = 0;
    std::int32_t held = 0;
    std::int32_t up = 0;
    VelmoraReadPointer(&x, &y);
    VelmoraReadPointerButtons(&down, &held, &up);
    VelmoraReadScroll(&x, &y);
    VelmoraReadNavigation(&x, &y);
    benchmark::DoNotOptimize(VelmoraContentWidth());
    benchmark::DoNotOptimize(VelmoraIsPondVisible());
    benchmark::DoNotOptimize(VelmoraIsPondInteractive());
    char* event = VelmoraCopyEvent();
    benchmark::DoNotOptimize(event);
    VelmoraFree(event);
    benchmark::DoNotOptimize(x + y + static_cast<float>(down + held + up));
}

void framePoll(benchmark::State& state)
{
    startedLibrary();
    timeEachCall(state, pollOneFrame);
}
BENCHMARK(framePoll)->Unit(benchmark::kMicrosecond)->UseRealTime();

// As a renderer at 60 Hz polls: every frame begins with the library asleep.
void framePollAfterIdle(benchmark::State& state)
{
    startedLibrary();
    timeEachCallAfterIdle(state, pollOneFrame);
}
BENCHMARK(framePollAfterIdle)->Unit(benchmark::kMicrosecond)->UseManualTime()->Iterations(1000);

// "key value" lines of one probe run in a fresh process.
std::map<std::string, double> runProbe(const fs::path& dataHome, const std::string& arguments = "")
{
    const std::string command = "XDG_DATA_HOME='" + dataHome.string() + "' '"
        + std::string(VELMORA_NATIVE_EXPORTS_PROBE) + "' '" + std::string(VELMORA_NATIVE_LIBRARY) + "' " + arguments;
    FILE* probe = ::popen(command.c_str(), "r");
    if (probe == nullptr)
        return {};
    std::string output;
    std::array<char, 256> buffer{};
    while (std::fgets(buffer.data(), buffer.size(), probe) != nullptr)
        output += buffer.data();
    if (::pclose(probe) != 0)
        return {};
    std::map<std::string, double> values;
    std::istringstream lines(output);
    std::string key;
    double value = 0;
    while (lines >> key >> value)
        values[key] = value;
    return values;
}

void startToFirstEventInAFreshProcess(benchmark::State& state)
{
    const bench::ScratchFolder dataHome;
    seedLongStandingUser(dataHome / "", state.range(0));
    std::map<std::string, double> last;
    for ([[maybe_unused]] auto _ : state) {
        last = runProbe(dataHome / "");
        if (!last.contains("startToFirstEventNanoseconds")) {
            state.SkipWithError("the probe failed");
            return;
        }
        state.SetIterationTime(last["startToFirstEventNanoseconds"] / 1e9);
    }
    state.counters["resident_before_load_KiB"] = last["residentBeforeLoadingKiB"];
    state.counters["resident_after_load_KiB"] = last["residentAfterLoadingKiB"];
    state.counters["resident_after_start_KiB"] = last["residentAfterStartKiB"];
}
BENCHMARK(startToFirstEventInAFreshProcess)
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime()
    ->Iterations(5)
    ->Arg(bench::threeYearsOfDays);

// A week-old practice against three years, started in turns so that both
// meet the same machine: start-up must not grow with the history. Medians,
// since a fresh process now and then waits for the disk or the scheduler.
void startToFirstEventWeekAgainstThreeYears(benchmark::State& state)
{
    const bench::ScratchFolder week;
    const bench::ScratchFolder threeYears;
    seedLongStandingUser(week / "", 8);
    seedLongStandingUser(threeYears / "", bench::threeYearsOfDays);
    std::vector<double> weekTimes;
    std::vector<double> threeYearTimes;
    const auto median = [](std::vector<double> values) {
        std::sort(values.begin(), values.end());
        return values.empty() ? 0.0 : values[values.size() / 2];
    };
    for ([[maybe_unused]] auto _ : state) {
        std::map<std::string, double> weekRun = runProbe(week / "");
        std::map<std::string, double> threeYearRun = runProbe(threeYears / "");
        if (!weekRun.contains("startToFirstEventNanoseconds")
            || !threeYearRun.contains("startToFirstEventNanoseconds")) {
            state.SkipWithError("the probe failed");
            return;
        }
        weekTimes.push_back(weekRun["startToFirstEventNanoseconds"] / 1e6);
        threeYearTimes.push_back(threeYearRun["startToFirstEventNanoseconds"] / 1e6);
        state.SetIterationTime(threeYearTimes.back() / 1e3);
    }
    state.counters["week_ms"] = median(weekTimes);
    state.counters["three_years_ms"] = median(threeYearTimes);
    state.counters["ratio"] = median(threeYearTimes) / median(weekTimes);
}
BENCHMARK(startToFirstEventWeekAgainstThreeYears)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(21);

// A noticing through VelmoraNotice from the renderer's thread, against the
// bare durable write of the same bytes to the same folder between the
// noticings, for practices of growing history. "ratio" is what a noticing
// costs beyond the write it needs; its growth across the rows shows
// whether anything on its road grows with the history.
void noticingAgainstItsDurableWrite(benchmark::State& state)
{
    const bench::ScratchFolder dataHome;
    seedLongStandingUser(dataHome / "", state.range(0));
    std::map<std::string, double> last;
    for ([[maybe_unused]] auto _ : state) {
        last = runProbe(dataHome / "", "notice 300 smoking");
        if (!last.contains("noticeMedianNanoseconds") || last["acknowledged"] < 300) {
            state.SkipWithError("the probe failed");
            return;
        }
        state.SetIterationTime(last["noticeMedianNanoseconds"] / 1e9);
    }
    state.counters["notice_us"] = last["noticeMedianNanoseconds"] / 1e3;
    state.counters["notice_max_us"] = last["noticeMaximumNanoseconds"] / 1e3;
    state.counters["bare_write_us"] = last["bareWriteMedianNanoseconds"] / 1e3;
    state.counters["ratio"] = last["noticeMedianNanoseconds"] / last["bareWriteMedianNanoseconds"];
    // Processor time of every thread, the library's included: what the
    // noticing costs beyond waiting for the device.
    state.counters["notice_cpu_us"] = last["noticeCpuMedianNanoseconds"] / 1e3;
    state.counters["bare_write_cpu_us"] = last["bareWriteCpuMedianNanoseconds"] / 1e3;
    state.counters["file_KiB"] = last["stateFileBytes"] / 1024;
}
BENCHMARK(noticingAgainstItsDurableWrite)
    ->Unit(benchmark::kMicrosecond)
    ->UseManualTime()
    ->Iterations(1)
    ->Arg(0)
    ->Arg(30)
    ->Arg(bench::threeYearsOfDays)
    ->Arg(3650)
    ->Arg(20000);

// A forged file of a million practice days (13 MB): refused by the store's
// size limit, the start shows the load error at once, and a noticing on it
// is refused as quickly.
void startOnAMillionDays(benchmark::State& state)
{
    const bench::ScratchFolder dataHome;
    seedLongStandingUser(dataHome / "", 1'000'000);
    std::map<std::string, double> last;
    for ([[maybe_unused]] auto _ : state) {
        last = runProbe(dataHome / "", "notice 5 smoking");
        if (!last.contains("startNanoseconds")) {
            state.SkipWithError("the probe failed");
            return;
        }
        state.SetIterationTime(last["startNanoseconds"] / 1e9);
    }
    state.counters["start_ms"] = last["startNanoseconds"] / 1e6;
    state.counters["notice_max_ms"] = last["noticeMaximumNanoseconds"] / 1e6;
    state.counters["acknowledged"] = last["acknowledged"];
    state.counters["file_MB"] = last["stateFileBytes"] / 1e6;
}
BENCHMARK(startOnAMillionDays)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(3);

} // namespace
} // namespace velmora
