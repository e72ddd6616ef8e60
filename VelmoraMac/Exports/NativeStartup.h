#pragma once

#include <filesystem>
#include <functional>
#include <optional>

namespace velmora {

class HeadlessShellPlatform;
class MainThread;

// Builds the library's object graph once per process: the platform with its
// main thread on the first call, then, on that main thread, the catalog,
// the store, the reminder scheduler, the login-launch service, the
// coordinator and the host, which becomes MenuBarHost::current() for the
// rest of the process. What it builds is never torn down: the exports may be
// called until the very end of the process, from any thread. At exit the
// main thread only finishes its work and stops, before static objects are
// destroyed; calls after that answer as without a host.
class NativeStartup {
public:
    // Where start-up reads its files.
    struct Sources {
        // The content resource; none when there is none.
        std::function<std::optional<std::filesystem::path>()> contentResource;
        // The folder the state file's folder lives in, created if missing.
        // Throws when it cannot be had.
        std::function<std::filesystem::path()> applicationSupportDirectory;
    };

    NativeStartup() = delete;

    // The process's own files (StartupLocations).
    static Sources processSources();

    // VelmoraStart's body; any thread. Does nothing once a host exists. When
    // the content resource is missing or cannot be decoded, or the folder
    // for the state file cannot be had, shows the start-up alert in the
    // user's language and ends the process with a non-zero status, before
    // anything reads or writes the state file. The same, with the alert
    // that Velmora is already running, when another process owns the
    // folder (FolderLock); this process then owns it until it ends. A
    // failure after that throws; no host is set then, so a later call tries
    // again.
    static void start(const Sources& sources);

    // The main thread of the platform start() built; null before the first
    // start() got that far. Any thread.
    [[nodiscard]] static MainThread* mainThread();

    // The platform start() built when it is the headless one, so that tests
    // and benchmarks can play the user and the system; null before, or with
    // a desktop. Its objects are used on the main thread only.
    [[nodiscard]] static HeadlessShellPlatform* headlessPlatform();
};

} // namespace velmora
