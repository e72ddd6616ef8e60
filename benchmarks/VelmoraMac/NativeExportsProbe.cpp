// Starts the shared library in a fresh process, as a renderer does, and
// prints what start-up costs: the time from VelmoraStart to the first event
// in hand, and the resident memory before loading, after loading and after
// starting. The benchmarks run it once per measurement, since a process can
// start the library only once.
//
// Usage: VelmoraNativeExportsProbe <library>; the data home must hold an
// onboarded user, or no event ever comes.

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <string>

#include <dlfcn.h>

#include "velmora/velmora.h"

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

template <typename Function>
Function lookUp(void* library, const char* name)
{
    void* symbol = ::dlsym(library, name);
    if (symbol == nullptr) {
        std::cerr << "probe: " << name << " is missing\n";
        std::exit(EXIT_FAILURE); // NOLINT(concurrency-mt-unsafe): no other thread yet
    }
    Function function = nullptr;
    std::memcpy(&function, &symbol, sizeof(function));
    return function;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::cerr << "usage: VelmoraNativeExportsProbe <library>\n";
        return EXIT_FAILURE;
    }
    const long beforeLoading = residentKiB();
    void* library = ::dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
        std::cerr << "probe: " << ::dlerror() << '\n'; // NOLINT(concurrency-mt-unsafe): no other thread yet
        return EXIT_FAILURE;
    }
    const auto start = lookUp<decltype(&VelmoraStart)>(library, "VelmoraStart");
    const auto copyEvent = lookUp<decltype(&VelmoraCopyEvent)>(library, "VelmoraCopyEvent");
    const auto freeEvent = lookUp<decltype(&VelmoraFree)>(library, "VelmoraFree");
    const long afterLoading = residentKiB();

    const auto begin = std::chrono::steady_clock::now();
    start();
    char* event = nullptr;
    const auto giveUp = begin + std::chrono::seconds(10);
    while ((event = copyEvent()) == nullptr && std::chrono::steady_clock::now() < giveUp) {
    }
    const auto end = std::chrono::steady_clock::now();
    if (event == nullptr) {
        std::cerr << "probe: no event within ten seconds\n";
        return EXIT_FAILURE;
    }
    freeEvent(event);
    const long afterStart = residentKiB();

    std::cout << "startToFirstEventNanoseconds " << std::chrono::duration_cast<std::chrono::nanoseconds>(end - begin).count() << '\n'
              << "residentBeforeLoadingKiB " << beforeLoading << '\n'
              << "residentAfterLoadingKiB " << afterLoading << '\n'
              << "residentAfterStartKiB " << afterStart << '\n';
    return EXIT_SUCCESS;
}
