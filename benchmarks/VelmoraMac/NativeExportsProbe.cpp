// Starts the shared library in a fresh process, as a renderer does, and
// prints what start-up costs: the time from VelmoraStart to the first event
// in hand, and the resident memory before loading, after loading and after
// starting. The benchmarks run it once per measurement, since a process can
// start the library only once.
//
// Usage: VelmoraNativeExportsProbe <library>; the data home must hold an
// onboarded user, or no event ever comes.
//
// VelmoraNativeExportsProbe <library> notice <count> <topic> instead times
// VelmoraStart alone, then `count` noticings of `topic` through
// VelmoraNotice, each followed by the bare durable write of the bytes the
// noticing wrote (temporary, write, fsync, rename, folder fsync) to a file
// beside the state file, so that both are measured on the same device at
// the same moments. It prints medians and maxima, and how many noticings
// an event acknowledged.

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <vector>

#include <unistd.h>

#include "VelmoraFunctions.h"

namespace {

long residentKiB()
{
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with("VmRSS:"))
            return std::stol(line.substr(6));
    }
    return -1;
}

using Clock = std::chrono::steady_clock;

long long nanoseconds(Clock::duration duration)
{
    return std::chrono::duration_cast<std::chrono::nanoseconds>(duration).count();
}

std::filesystem::path stateFile()
{
    // NOLINTNEXTLINE(concurrency-mt-unsafe): read before the library starts its threads
    const char* dataHome = std::getenv("XDG_DATA_HOME");
    return std::filesystem::path(dataHome == nullptr ? "" : dataHome) / "app.velmora.mac" / "practice.json";
}

std::string fileBytes(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

// What any durable save of these bytes costs at least, and nothing more.
bool bareDurableWrite(const std::filesystem::path& target, const std::string& bytes)
{
    const std::string temporary = target.string() + ".tmp";
    const int file = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (file < 0)
        return false;
    bool written
        = ::write(file, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()) && ::fsync(file) == 0;
    written = ::close(file) == 0 && written;
    if (!written || ::rename(temporary.c_str(), target.c_str()) != 0)
        return false;
    const int folder = ::open(target.parent_path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folder < 0)
        return false;
    ::fsync(folder);
    ::close(folder);
    return true;
}

// Every thread's, the library's own included.
long long processCpuNanoseconds()
{
    timespec now{};
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<long long>(now.tv_sec) * 1'000'000'000LL + now.tv_nsec;
}

long long median(std::vector<long long> values)
{
    if (values.empty())
        return -1;
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

long long maximum(const std::vector<long long>& values)
{
    return values.empty() ? -1 : *std::max_element(values.begin(), values.end());
}

int timeNoticings(const VelmoraFunctions& library, int count, const char* topic)
{
    const std::filesystem::path state = stateFile();
    const std::filesystem::path bare = state.parent_path() / "bare-write.json";

    const Clock::time_point begin = Clock::now();
    library.start();
    const Clock::duration started = Clock::now() - begin;
    library.freeEvent(library.copyEvent());

    std::vector<long long> noticings;
    std::vector<long long> bareWrites;
    std::vector<long long> noticingCpu;
    std::vector<long long> bareWriteCpu;
    int acknowledged = 0;
    for (int round = 0; round < count; ++round) {
        const long long cpuBefore = processCpuNanoseconds();
        const Clock::time_point before = Clock::now();
        library.notice(topic);
        const Clock::duration noticing = Clock::now() - before;
        noticings.push_back(nanoseconds(noticing));
        char* event = library.copyEvent();
        noticingCpu.push_back(processCpuNanoseconds() - cpuBefore);
        if (event == nullptr)
            continue;
        ++acknowledged;
        library.freeEvent(event);
        const std::string bytes = fileBytes(state);
        const long long writeCpuBefore = processCpuNanoseconds();
        const Clock::time_point writeBegin = Clock::now();
        if (!bareDurableWrite(bare, bytes)) {
            std::cerr << "probe: the bare write failed\n";
            return EXIT_FAILURE;
        }
        bareWrites.push_back(nanoseconds(Clock::now() - writeBegin));
        bareWriteCpu.push_back(processCpuNanoseconds() - writeCpuBefore);
    }
    std::cout << "startNanoseconds " << nanoseconds(started) << '\n'
              << "noticeMedianNanoseconds " << median(noticings) << '\n'
              << "noticeMaximumNanoseconds " << maximum(noticings) << '\n'
              << "bareWriteMedianNanoseconds " << median(bareWrites) << '\n'
              << "noticeCpuMedianNanoseconds " << median(noticingCpu) << '\n'
              << "bareWriteCpuMedianNanoseconds " << median(bareWriteCpu) << '\n'
              << "acknowledged " << acknowledged << '\n'
              << "stateFileBytes " << fileBytes(state).size() << '\n';
    return EXIT_SUCCESS;
}

} // namespace

int main(int argc, char** argv)
{
    const bool noticing = argc == 5 && std::string(argv[2]) == "notice";
    if (argc != 2 && !noticing) {
        std::cerr << "usage: VelmoraNativeExportsProbe <library> [notice <count> <topic>]\n";
        return EXIT_FAILURE;
    }
    const long beforeLoading = residentKiB();
    VelmoraFunctions library;
    try {
        library = VelmoraFunctions::load(argv[1]);
    } catch (const VelmoraLoadError& error) {
        std::cerr << "probe: " << error.what() << '\n';
        return EXIT_FAILURE;
    }
    if (noticing)
        return timeNoticings(library, std::atoi(argv[3]), argv[4]);
    const long afterLoading = residentKiB();

    const auto begin = std::chrono::steady_clock::now();
    library.start();
    char* event = nullptr;
    const auto giveUp = begin + std::chrono::seconds(10);
    while ((event = library.copyEvent()) == nullptr && std::chrono::steady_clock::now() < giveUp) { }
    const auto end = std::chrono::steady_clock::now();
    if (event == nullptr) {
        std::cerr << "probe: no event within ten seconds\n";
        return EXIT_FAILURE;
    }
    library.freeEvent(event);
    const long afterStart = residentKiB();

    std::cout << "startToFirstEventNanoseconds "
              << std::chrono::duration_cast<std::chrono::nanoseconds>(end - begin).count() << '\n'
              << "residentBeforeLoadingKiB " << beforeLoading << '\n'
              << "residentAfterLoadingKiB " << afterLoading << '\n'
              << "residentAfterStartKiB " << afterStart << '\n';
    return EXIT_SUCCESS;
}
