#include "NativeStartup.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

#include <unistd.h>

#include "StartupLocations.h"
#include "VelmoraCore/DurableFile.h"
#include "VelmoraCore/FolderLock.h"
#include "VelmoraCore/PracticeError.h"
#include "VelmoraCore/PracticeState.h"
#include "VelmoraCore/PracticeStore.h"
#include "VelmoraMac/ContentCatalog.h"
#include "VelmoraMac/Host/Gtk/GtkShellViews.h"
#include "VelmoraMac/Host/MenuBarHost.h"
#include "VelmoraMac/MacStrings.h"
#include "VelmoraMac/Platform/Desktop/DesktopShellPlatform.h"
#include "VelmoraMac/Platform/Headless/HeadlessShellPlatform.h"
#include "VelmoraMac/Platform/MainThread.h"
#include "VelmoraMac/Platform/ShellPlatform.h"
#include "VelmoraMac/PracticeCoordinator.h"
#include "VelmoraMac/ReminderScheduler.h"
#include "VelmoraMac/Services/LoginLaunchService.h"

namespace velmora {

namespace fs = std::filesystem;

namespace {

// The platform start-up built, with what the exit and a failed start need
// to know of it.
struct ChosenPlatform {
    ShellPlatform shell;
    // The concrete objects when headless, to play the system through.
    std::shared_ptr<HeadlessShellPlatform> headless;
    // The desktop's, kept for the life of the process.
    std::shared_ptr<DesktopShellPlatform> desktop;
    // Without a desktop an alert shows nobody, so its texts also go to
    // standard error, where the renderer's output or the journal keeps them.
    bool alertsUnseen = false;
    // Ends the work of a main thread of the library's own, for the exit.
    std::function<void()> stopMainThread;
    // This process's claim on the data folder, held until it ends.
    std::unique_ptr<FolderLock> ownership;
    // A reference of our own to the host: whatever happens to
    // MenuBarHost::current() at exit, the host is never destroyed, so no
    // destructor of its runs on the exiting thread or against a stopped main
    // thread. Main thread only.
    std::shared_ptr<MenuBarHost> host;
};

// Set once by the first start and never released: the exports may be
// called from any thread until the process ends. Plain pointers, so that no
// destructor runs at exit; the main thread is only stopped then (see
// stopMainThreadAtExit()).
std::atomic<ChosenPlatform*> startedPlatform{nullptr};
std::atomic<MainThread*> startedMainThread{nullptr};

// Only serialises building the platform; the host is built on the main
// thread, which serialises that by itself. Not held while waiting for the
// main thread, so a start from the main thread cannot deadlock with one
// from another thread.
std::mutex platformMutex;

// The desktop platform, drawing the shell with its GTK views. When another
// process of ours already runs, it has been asked to come forward and this
// process ends here, as a second launch of an application does.
std::unique_ptr<ChosenPlatform> newDesktopPlatform()
{
    const std::shared_ptr<DesktopShellPlatform> desktop
        = DesktopShellPlatform::create(NotNullShared<GtkShellViews>::make());
    if (!desktop) {
        (void)std::fflush(nullptr);
        // The renderer's exit handlers run, as when the user quits; nothing
        // of ours runs yet that they could race with.
        std::exit(EXIT_SUCCESS); // NOLINT(concurrency-mt-unsafe)
    }
    // GTK's loop is the renderer's: nothing of ours to stop at exit.
    return std::make_unique<ChosenPlatform>(
        ChosenPlatform{desktop->platform(), nullptr, desktop, false, {}, nullptr, nullptr});
}

// The one place the platform is chosen: the desktop one in a process that
// has initialised GTK with a display, else the headless one, on a main
// thread of the library's own, so the renderer need not run a loop.
std::unique_ptr<ChosenPlatform> newPlatform()
{
    if (DesktopShellPlatform::hasDisplay())
        return newDesktopPlatform();
    std::shared_ptr<HeadlessShellPlatform> headless = HeadlessShellPlatform::create();
    auto stop = [headless] { headless->stopOwnMainThread(); };
    return std::make_unique<ChosenPlatform>(
        ChosenPlatform{headless->platform(), headless, nullptr, true, stop, nullptr, nullptr});
}

ChosenPlatform& platformOnce()
{
    if (ChosenPlatform* platform = startedPlatform.load())
        return *platform;
    const std::scoped_lock lock(platformMutex);
    if (ChosenPlatform* platform = startedPlatform.load())
        return *platform;
    ChosenPlatform* platform = newPlatform().release();
    startedMainThread.store(platform->shell.mainThread.get());
    startedPlatform.store(platform);
    return *platform;
}

// At exit, before the static objects of this library and the program are
// destroyed, the main thread finishes the work it has and stops, so that no
// timer tick or answer runs among destroyed objects. A renderer thread still
// calling then gets the answers of a library without a host.
void stopMainThreadAtExit() noexcept
{
    const ChosenPlatform* platform = startedPlatform.load();
    if (platform == nullptr || !platform->stopMainThread)
        return;
    try {
        platform->stopMainThread();
    } catch (...) {
        // The process ends anyway.
    }
}

void writeToStandardError(const std::string& text)
{
    // One write, so that the lines stay together among other threads'
    // output. Nothing is left to do when even standard error fails.
    (void)!::write(STDERR_FILENO, text.data(), text.size());
}

// Why a start ends before the host exists: the keys of the alert's texts.
struct EndOfStart {
    const char* message;
    const char* informativeText;
};

constexpr EndOfStart startupFailed{"startupError", "startupErrorBody"};
constexpr EndOfStart folderOwnedElsewhere{"alreadyRunning", "alreadyRunningBody"};

// Shows the start-up alert in the user's language and ends the process. The
// built-in texts are used because the content, with every other text, may
// be what could not be had.
[[noreturn]] void endStart(const ChosenPlatform& platform, EndOfStart reason) noexcept
{
    try {
        const std::string language
            = PracticeState::resolvedLanguage("system", platform.shell.systemEnvironment->preferredLanguages());
        const MacStrings::Table& texts = MacStrings::table(language);
        const std::string& message = texts.at(reason.message);
        const std::string& informativeText = texts.at(reason.informativeText);
        const std::string& buttonTitle = texts.at("okay");
        if (platform.alertsUnseen)
            writeToStandardError(message + "\n" + informativeText + "\n" + buttonTitle + "\n");
        platform.shell.application->runModalAlert(message, informativeText, buttonTitle);
        platform.shell.application->terminate();
    } catch (...) {
        // Ending the process matters more than the alert.
    }
    // The application may not end the process itself. The renderer's
    // buffered output goes out first; static destructors do not run, as
    // they would under the renderer's other threads.
    (void)std::fflush(nullptr);
    std::_Exit(EXIT_FAILURE);
}

// The graph, on the main thread.
void buildHost(ChosenPlatform& chosen, const NativeStartup::Sources& sources)
{
    if (MenuBarHost::current())
        return;
    std::shared_ptr<const ContentCatalog> catalog;
    fs::path stateFile;
    try {
        const std::optional<fs::path> resource = sources.contentResource();
        if (!resource)
            throw PracticeError(PracticeError::invalidData);
        catalog = std::make_shared<const ContentCatalog>(*resource);
        stateFile = StartupLocations::stateFile(sources.applicationSupportDirectory());
        // Claimed before anything reads the state file: a process that does
        // not own the folder must not even build on what it read, since
        // the owner may change the file at any moment.
        DurableFile::createFolders(stateFile.parent_path());
        chosen.ownership = FolderLock::tryAcquire(stateFile.parent_path());
    } catch (...) {
        endStart(chosen, startupFailed);
    }
    // Another process keeps this practice. Two keeping it at once would each
    // rewrite the file from their own copy and lose the other's noticings.
    if (!chosen.ownership)
        endStart(chosen, folderOwnedElsewhere);
    const ShellPlatform& platform = chosen.shell;
    auto store = std::make_unique<PracticeStore>(stateFile);
    auto reminders = std::make_shared<ReminderScheduler>(
        platform.notificationCenter, platform.mainThread, platform.systemEnvironment);
    auto loginLaunch = std::make_shared<LoginLaunchService>(platform.loginItemService);
    auto model = std::make_shared<PracticeCoordinator>(
        std::move(catalog), std::move(store), std::move(loginLaunch), std::move(reminders),
        [opener = platform.notificationSettingsOpener] { opener->openNotificationSettings(); },
        platform.systemEnvironment);
    chosen.host = MenuBarHost::create(std::move(model), platform);
    MenuBarHost::setCurrent(chosen.host);
    // Registered last: exit handlers and static destructors run in reverse
    // order, so this runs before the destruction of everything building the
    // graph has touched.
    (void)std::atexit(&stopMainThreadAtExit);
}

} // namespace

NativeStartup::Sources NativeStartup::processSources()
{
    return {&StartupLocations::contentResource, &StartupLocations::applicationSupportDirectory};
}

void NativeStartup::start(const Sources& sources)
{
    ChosenPlatform& platform = platformOnce();
    platform.shell.mainThread->runSync([&] { buildHost(platform, sources); });
}

MainThread* NativeStartup::mainThread()
{
    return startedMainThread.load();
}

HeadlessShellPlatform* NativeStartup::headlessPlatform()
{
    const ChosenPlatform* platform = startedPlatform.load();
    return platform == nullptr ? nullptr : platform->headless.get();
}

} // namespace velmora
