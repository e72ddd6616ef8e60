#include <filesystem>
#include <memory>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "VelmoraCore/Point.h"
#include "VelmoraCore/Rect.h"
#include "VelmoraMac/Host/MenuBarHost.h"
#include "VelmoraMac/Platform/Headless/HeadlessEventMonitors.h"
#include "VelmoraMac/Platform/Headless/HeadlessShellPlatform.h"
#include "VelmoraMac/Platform/Headless/HeadlessWindowSystem.h"
#include "VelmoraMac/PracticeCoordinator.h"
#include "VelmoraMac/Services/LoginLaunchService.h"
#include "tests/VelmoraCore/TemporaryFolder.h"
#include "tests/VelmoraMac/CoordinatorTestDoubles.h"

namespace velmora {
namespace {

// The process's platform runs the host on a main thread of its own; every
// other thread reaches the host only by hopping there, as the exports do.
TEST(MenuBarHostConcurrencyTest, ProcessPlatform_HostLivesOnItsOwnMainThread)
{
    test::TemporaryFolder folder;
    const std::shared_ptr<HeadlessShellPlatform> headless = HeadlessShellPlatform::create();
    const ShellPlatform platform = headless->platform();
    std::shared_ptr<MenuBarHost> host;
    std::shared_ptr<HeadlessWindow> window;
    platform.mainThread->runSync([&] {
        window = headless->windowSystem().addWindow(Rect(0, 0, 400, 300));
        auto model = std::make_shared<PracticeCoordinator>(
            std::make_shared<const ContentCatalog>(std::filesystem::path(VELMORA_CONTENT_RESOURCE)),
            std::make_unique<PracticeStore>(folder / "practice.json"),
            std::make_shared<LoginLaunchService>(platform.loginItemService),
            std::make_shared<test::RecordingReminders>(), [] {}, platform.systemEnvironment);
        host = MenuBarHost::create(std::move(model), platform);
    });

    // Adoption places the window at its default frame, so the centre is
    // taken from the content as it is now.
    const Point centre = platform.mainThread->runSync([&] {
        const Rect bounds = window->contentView()->bounds();
        return Point{bounds.width() / 2, bounds.height() / 2};
    });
    std::vector<std::thread> readers;
    readers.reserve(3);
    for (int reader = 0; reader < 3; ++reader) {
        readers.emplace_back([&] {
            for (int round = 0; round < 200; ++round) {
                platform.mainThread->runSync([&] {
                    InputEvent event;
                    event.type = InputEventType::mouseMoved;
                    event.window = window.get();
                    event.locationInWindow = centre;
                    headless->eventMonitors().dispatch(event);
                    (void)host->interactive();
                    host->pointerState().scroll = Point();
                });
            }
        });
    }
    for (std::thread& reader : readers)
        reader.join();

    const Point pointer = platform.mainThread->runSync([&] { return host->eventPointer(); });
    EXPECT_EQ(pointer, (Point{0.5, 0.5}));
    platform.mainThread->runSync([&] {
        host.reset();
        window.reset();
    });
}

} // namespace
} // namespace velmora
