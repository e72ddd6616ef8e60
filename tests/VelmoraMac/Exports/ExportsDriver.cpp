// Plays a rendering program against the shared library in a process of its
// own: the host is process-wide and never cleared, so every scenario needs a
// fresh process. It loads the library with dlopen, runs one scenario and
// prints what it saw as lines of "key value...", for the tests to check.
//
// Usage: VelmoraExportsDriver <library> <scenario> [arguments...]

#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>
#include <thread>
#include <vector>

#include "examples/VelmoraFunctions.h"

namespace {

// Every reader's answer at one moment. The out-parameters start as values no
// reader gives, so that one left unwritten shows.
struct Reading {
    float pointerX = -7;
    float pointerY = -7;
    std::int32_t down = -7;
    std::int32_t held = -7;
    std::int32_t up = -7;
    float scrollX = -7;
    float scrollY = -7;
    float navigationX = -7;
    float navigationY = -7;
    float width = -7;
    std::int32_t visible = -7;
    std::int32_t interactive = -7;

    static Reading of(const VelmoraFunctions& library)
    {
        Reading reading;
        library.readPointer(&reading.pointerX, &reading.pointerY);
        library.readPointerButtons(&reading.down, &reading.held, &reading.up);
        library.readScroll(&reading.scrollX, &reading.scrollY);
        library.readNavigation(&reading.navigationX, &reading.navigationY);
        reading.width = library.contentWidth();
        reading.visible = library.isPondVisible();
        reading.interactive = library.isPondInteractive();
        return reading;
    }

    void print(const std::string& prefix) const
    {
        std::cout << prefix << "reading " << pointerX << ' ' << pointerY << ' ' << down << ' ' << held << ' ' << up
                  << ' ' << scrollX << ' ' << scrollY << ' ' << navigationX << ' ' << navigationY << ' ' << width << ' '
                  << visible << ' ' << interactive << '\n';
    }
};

// Every function once without the out-parameters, which must not crash.
void callWithNullPointers(const VelmoraFunctions& library)
{
    library.readPointer(nullptr, nullptr);
    library.readPointerButtons(nullptr, nullptr, nullptr);
    library.readScroll(nullptr, nullptr);
    library.readNavigation(nullptr, nullptr);
    library.freeEvent(nullptr);
}

template <typename Body> void onAnotherThread(Body body)
{
    std::thread thread(body);
    thread.join();
}

// Threads until the process ends: a second library would bring more.
std::string threadCount()
{
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with("Threads:"))
            return line.substr(line.find_first_not_of(" \t", 8));
    }
    return "unknown";
}

int run(const VelmoraFunctions& library, const std::string& scenario, const std::vector<std::string>& arguments)
{
    if (scenario == "start-twice") {
        library.start();
        std::cout << "first " << library.takeEvent() << '\n' << "threadsAfterFirst " << threadCount() << '\n';
        library.start();
        std::cout << "second " << library.takeEvent() << '\n' << "threadsAfterSecond " << threadCount() << '\n';
    } else if (scenario == "notice" || scenario == "notice-elsewhere") {
        // notice [<topic>...]: each topic in turn, then every event there is.
        // notice-elsewhere <folder> [<topic>...]: the same, from <folder>,
        // where the program goes between loading the library and starting it.
        std::vector<std::string> topics = arguments;
        if (scenario == "notice-elsewhere") {
            std::filesystem::current_path(topics.at(0));
            topics.erase(topics.begin());
        }
        library.start();
        std::cout << "initial " << library.takeEvent() << '\n';
        for (const std::string& topic : topics)
            library.notice(topic == "(null)" ? nullptr : topic.c_str());
        callWithNullPointers(library);
        std::cout << "event " << library.takeEvent() << '\n' << "next " << library.takeEvent() << '\n';
    } else if (scenario == "threads") {
        // threads <topic>: every function before the start, then the same
        // questions from two threads, and events crossing between them.
        library.notice(arguments.at(0).c_str());
        callWithNullPointers(library);
        std::cout << "before " << library.takeEvent() << '\n';
        Reading::of(library).print("before.");
        library.start();
        Reading::of(library).print("main.");
        onAnotherThread([&] { Reading::of(library).print("background."); });
        onAnotherThread([&] { library.notice(arguments.at(0).c_str()); });
        std::cout << "copiedOnMain " << library.takeEvent() << '\n';
        library.notice(arguments.at(0).c_str());
        onAnotherThread([&] { std::cout << "copiedInBackground " << library.takeEvent() << '\n'; });
    } else if (scenario == "stress") {
        // stress <threads> <milliseconds> <topic>...: every function from
        // every thread at once; prints how many noticings were made.
        const int threads = std::stoi(arguments.at(0));
        const auto duration = std::chrono::milliseconds(std::stoi(arguments.at(1)));
        const std::vector<std::string> topics(arguments.begin() + 2, arguments.end());
        std::atomic<long> noticings{0};
        std::atomic<bool> go{false};
        std::vector<std::thread> workers;
        workers.reserve(static_cast<std::size_t>(threads));
        for (int index = 0; index < threads; ++index) {
            workers.emplace_back([&, index] {
                while (!go)
                    std::this_thread::yield();
                const auto end = std::chrono::steady_clock::now() + duration;
                for (std::size_t round = 0; std::chrono::steady_clock::now() < end; ++round) {
                    if (round % 64 == 0)
                        library.start();
                    library.notice(topics[(round + static_cast<std::size_t>(index)) % topics.size()].c_str());
                    ++noticings;
                    (void)Reading::of(library);
                    (void)library.takeEvent();
                }
            });
        }
        go = true;
        library.start();
        for (std::thread& worker : workers)
            worker.join();
        std::cout << "noticings " << noticings << '\n';
    } else if (scenario == "race") {
        // race <count> <topic>: notices `topic` `count` times, taking the
        // event after each; a noticing counts as acknowledged when its
        // event came, which happens only once it is in the file.
        library.start();
        (void)library.takeEvent();
        const int count = std::stoi(arguments.at(0));
        int acknowledged = 0;
        for (int round = 0; round < count; ++round) {
            library.notice(arguments.at(1).c_str());
            acknowledged += library.takeEvent() != "null" ? 1 : 0;
        }
        std::cout << "acknowledged " << acknowledged << '\n';
    } else if (scenario == "exit-while-polling") {
        // exit-while-polling <topic>: a thread polls and notices without
        // pause while the program returns from main past a tick of the
        // library's one-second timer, as a renderer that does not stop its
        // render thread does.
        library.start();
        const auto tickDue = std::chrono::steady_clock::now() + std::chrono::seconds(1);
        // Each call waits for the library's main thread, so two rounds
        // begun after the tick fell due have seen it run. Static: the
        // thread outlives main's frame.
        static std::atomic<int> roundsPastTheTick{0};
        // A copy: main's own goes away while the thread runs on.
        std::thread([library, tickDue, topic = arguments.at(0)] {
            for (;;) {
                const bool pastTheTick = std::chrono::steady_clock::now() >= tickDue;
                library.notice(topic.c_str());
                (void)Reading::of(library);
                (void)library.takeEvent();
                if (pastTheTick)
                    ++roundsPastTheTick;
            }
        }).detach();
        const auto giveUp = std::chrono::steady_clock::now() + std::chrono::seconds(60);
        while (roundsPastTheTick < 2 && std::chrono::steady_clock::now() < giveUp)
            std::this_thread::yield();
        std::cout << "exiting " << (roundsPastTheTick >= 2 ? "yes" : "before the tick") << '\n';
    } else {
        std::cerr << "unknown scenario " << scenario << '\n';
        return 2;
    }
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc < 3) {
        std::cerr << "usage: VelmoraExportsDriver <library> <scenario> [arguments...]\n";
        return 2;
    }
    try {
        const VelmoraFunctions library = VelmoraFunctions::load(argv[1]);
        const int status = run(library, argv[2], std::vector<std::string>(argv + 3, argv + argc));
        std::cout.flush();
        return status;
    } catch (const std::exception& error) {
        std::cerr << "driver: " << error.what() << '\n';
        return 3;
    }
}
