#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <exception>
#include <fcntl.h>
#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>
#include <unistd.h>

#include <benchmark/benchmark.h>

#include "RealisticPracticeState.h"
#include "ScratchFolder.h"
#include "VelmoraCore/PracticeStore.h"
#include "VelmoraCore/UserCalendar.h"

namespace velmora {
namespace {

namespace fs = std::filesystem;
using bench::realisticPracticeState;
using bench::threeYearsOfDays;
using Clock = std::chrono::steady_clock;

[[noreturn]] void failPlainly(const char* operation)
{
    throw std::system_error(errno, std::system_category(), operation);
}

// The least that a crash-safe replacement of a file costs: plain POSIX
// calls in the same order as the store's, without its checks, locks, tidying
// or error handling. The yardstick for the store's own overhead.
void writePlainly(const fs::path& target, std::string_view bytes)
{
    std::string temporary = target.string() + ".XXXXXX";
    const int file = ::mkostemp(temporary.data(), O_CLOEXEC);
    if (file < 0)
        failPlainly("mkostemp");
    while (!bytes.empty()) {
        const ssize_t written = ::write(file, bytes.data(), bytes.size());
        if (written <= 0)
            failPlainly("write");
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    if (::fsync(file) != 0)
        failPlainly("fsync");
    if (::close(file) != 0)
        failPlainly("close");
    if (::rename(temporary.c_str(), target.c_str()) != 0)
        failPlainly("rename");
    const int folder = ::open(target.parent_path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folder < 0)
        failPlainly("open folder");
    if (::fsync(folder) != 0)
        failPlainly("fsync folder");
    if (::close(folder) != 0)
        failPlainly("close folder");
}

// One more noticing of one topic on one fixed day: the change the host makes
// most often. Noticing on the same day keeps the file's size steady.
PracticeStore::Change noticing()
{
    return [calendar = UserCalendar::utc()](
               const PracticeState& practice) { return practice.notice("phone", bench::lastPracticeDay(), calendar); };
}

// A scratch folder with a store in it that already holds a long-standing
// user's record, as after years of use.
class FilledStore {
public:
    explicit FilledStore(std::int64_t practiceDayCount)
        : m_store(m_folder / "app.velmora.mac" / "practice.json")
    {
        m_store.load();
        m_store.update([practiceDayCount](const PracticeState&) { return realisticPracticeState(practiceDayCount); });
        m_bytes = noticing()(*m_store.state()).toJSON();
    }

    [[nodiscard]] PracticeStore& store() { return m_store; }
    // The bytes that one update() of noticing() writes.
    [[nodiscard]] const std::string& bytes() const { return m_bytes; }
    [[nodiscard]] fs::path scratchPath(const fs::path& relative) const { return m_folder / relative; }

private:
    bench::ScratchFolder m_folder;
    PracticeStore m_store;
    std::string m_bytes;
};

// Google Benchmark has no way to report a thrown error; this turns one into
// a skipped benchmark with the error's text instead of an aborted program.
template <typename Body> void skippingOnError(benchmark::State& state, Body&& body)
{
    try {
        body();
    } catch (const std::exception& error) {
        state.SkipWithError(error.what());
    }
}

void setBytesProcessed(benchmark::State& state, const std::string& bytes)
{
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(bytes.size()));
}

void storeUpdate(benchmark::State& state)
{
    skippingOnError(state, [&state] {
        FilledStore filled(state.range(0));
        const PracticeStore::Change change = noticing();
        for ([[maybe_unused]] auto _ : state)
            filled.store().update(change);
        setBytesProcessed(state, filled.bytes());
    });
}
BENCHMARK(storeUpdate)->ArgName("days")->Arg(threeYearsOfDays)->UseRealTime();

void plainDurableWrite(benchmark::State& state)
{
    skippingOnError(state, [&state] {
        const FilledStore filled(state.range(0));
        const fs::path target = filled.scratchPath("plain") / "practice.json";
        fs::create_directories(target.parent_path());
        for ([[maybe_unused]] auto _ : state)
            writePlainly(target, filled.bytes());
        setBytesProcessed(state, filled.bytes());
    });
}
BENCHMARK(plainDurableWrite)->ArgName("days")->Arg(threeYearsOfDays)->UseRealTime();

// Wall-clock and processor time spent in one kind of write. The processor
// time is this thread's own work; the rest of the wall-clock time is waiting,
// mostly for the device to confirm the flushes.
class TimeSpent {
public:
    template <typename Body> void add(Body&& body)
    {
        const Clock::time_point wallStart = Clock::now();
        const std::chrono::nanoseconds processorStart = threadProcessorTime();
        body();
        m_processor += threadProcessorTime() - processorStart;
        m_wall += Clock::now() - wallStart;
    }

    [[nodiscard]] double wallMilliseconds() const { return Milliseconds(m_wall).count(); }
    [[nodiscard]] double processorMilliseconds() const { return Milliseconds(m_processor).count(); }

private:
    using Milliseconds = std::chrono::duration<double, std::milli>;

    static std::chrono::nanoseconds threadProcessorTime()
    {
        timespec now{};
        ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
        return std::chrono::seconds(now.tv_sec) + std::chrono::nanoseconds(now.tv_nsec);
    }

    Clock::duration m_wall{};
    std::chrono::nanoseconds m_processor{};
};

// Both writes of the same bytes in one loop, taking turns at going first, so
// that a busy disk or machine slows both alike. The counters are the mean
// wall-clock and processor milliseconds of each and the ratio of the
// wall-clock means: the store's overhead over the file system. Nearly all of
// the difference is processor time, so the ratio shrinks as the device gets
// slower.
void storeUpdateOverPlainWrite(benchmark::State& state)
{
    skippingOnError(state, [&state] {
        FilledStore filled(state.range(0));
        const fs::path target = filled.scratchPath("plain") / "practice.json";
        fs::create_directories(target.parent_path());
        const PracticeStore::Change change = noticing();
        TimeSpent store;
        TimeSpent plain;
        const auto updateStore = [&] { filled.store().update(change); };
        const auto writePlain = [&] { writePlainly(target, filled.bytes()); };
        bool storeFirst = true;
        for ([[maybe_unused]] auto _ : state) {
            if (storeFirst) {
                store.add(updateStore);
                plain.add(writePlain);
            } else {
                plain.add(writePlain);
                store.add(updateStore);
            }
            storeFirst = !storeFirst;
        }
        const auto iterations = static_cast<double>(state.iterations());
        state.counters["store_ms"] = store.wallMilliseconds() / iterations;
        state.counters["store_cpu_ms"] = store.processorMilliseconds() / iterations;
        state.counters["plain_ms"] = plain.wallMilliseconds() / iterations;
        state.counters["plain_cpu_ms"] = plain.processorMilliseconds() / iterations;
        state.counters["ratio"] = store.wallMilliseconds() / plain.wallMilliseconds();
    });
}
BENCHMARK(storeUpdateOverPlainWrite)->ArgName("days")->Arg(threeYearsOfDays)->UseRealTime();

// Start-up: read, decode and validate the file of a long-standing user.
void storeLoad(benchmark::State& state)
{
    skippingOnError(state, [&state] {
        FilledStore filled(state.range(0));
        filled.store().update(noticing());
        const fs::path url = filled.scratchPath("app.velmora.mac") / "practice.json";
        for ([[maybe_unused]] auto _ : state) {
            PracticeStore store(url);
            benchmark::DoNotOptimize(store.load());
        }
        setBytesProcessed(state, filled.bytes());
    });
}
BENCHMARK(storeLoad)->ArgName("days")->Arg(threeYearsOfDays)->UseRealTime();

} // namespace
} // namespace velmora
