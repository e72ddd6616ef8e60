// The readers against a real host in this process, fed through the headless
// platform's event monitors as the window system feeds them. The host is
// process-wide and never cleared, so every test here shares the one started
// once for the suite; each begins with the pond shown and interactive.

#include <cstdint>
#include <filesystem>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>

#include <gtest/gtest.h>

#include "VelmoraCore/PracticeState.h"
#include "VelmoraCore/Rect.h"
#include "VelmoraMac/Exports/NativeStartup.h"
#include "VelmoraMac/Host/MenuBarHost.h"
#include "VelmoraMac/Platform/Headless/HeadlessApplication.h"
#include "VelmoraMac/Platform/Headless/HeadlessEventMonitors.h"
#include "VelmoraMac/Platform/Headless/HeadlessShellPlatform.h"
#include "VelmoraMac/Platform/Headless/HeadlessWindowSystem.h"
#include "VelmoraMac/Platform/MainThread.h"
#include "tests/VelmoraCore/CoreTestSupport.h"
#include "tests/VelmoraCore/TemporaryFolder.h"
#include "velmora/velmora.h"

namespace velmora {
namespace {

namespace fs = std::filesystem;

struct Buttons {
    std::int32_t down = -1;
    std::int32_t held = -1;
    std::int32_t up = -1;

    friend bool operator==(const Buttons&, const Buttons&) = default;
};

struct Pair {
    float x = -1;
    float y = -1;

    friend bool operator==(const Pair&, const Pair&) = default;
};

Buttons readButtons()
{
    Buttons buttons;
    VelmoraReadPointerButtons(&buttons.down, &buttons.held, &buttons.up);
    return buttons;
}

Pair readPointer()
{
    Pair pair;
    VelmoraReadPointer(&pair.x, &pair.y);
    return pair;
}

Pair readScroll()
{
    Pair pair;
    VelmoraReadScroll(&pair.x, &pair.y);
    return pair;
}

Pair readNavigation()
{
    Pair pair;
    VelmoraReadNavigation(&pair.x, &pair.y);
    return pair;
}

template <typename Work>
std::invoke_result_t<Work&> onMain(Work&& work)
{
    return NativeStartup::mainThread()->runSync(std::forward<Work>(work));
}

// Main thread only, as everything of the host's.
MenuBarHost& host()
{
    return *MenuBarHost::current();
}

HeadlessShellPlatform& platform()
{
    return *NativeStartup::headlessPlatform();
}

class NativeExportsInputTest : public testing::Test {
protected:
    static void SetUpTestSuite()
    {
        // Outlives the host's last write: destroyed at exit, after the
        // library's main thread has stopped.
        static const test::TemporaryFolder dataHome;
        PracticeState state;
        state.onboarded = true;
        state.hintSeen = true;
        state.selected = {"phone"};
        fs::create_directories(dataHome / "app.velmora.mac");
        test::writeFileBytes(dataHome / "app.velmora.mac" / "practice.json", state.toJSON());
        NativeStartup::start({
            [] { return std::optional<fs::path>(VELMORA_CONTENT_RESOURCE); },
            [] { return dataHome.path(); },
        });
        onMain([] {
            // The renderer's window appears after the start; the host adopts it.
            platform().windowSystem().addWindow(Rect{100, 100, 800, 600});
            host().attachWindow();
        });
    }

    void SetUp() override
    {
        onMain([] {
            host().showPond();
            host().resetInput();
        });
        ASSERT_EQ(VelmoraIsPondInteractive(), 1);
    }

    // An event of the window system over the pond, `x` and `y` a fraction
    // of its content.
    static void dispatch(InputEventType type, double x = 0.5, double y = 0.5, std::uint16_t keyCode = 0, Point scroll = {})
    {
        onMain([=] {
            Window* pond = host().pond().get();
            InputEvent event;
            event.type = type;
            event.window = pond;
            const Rect bounds = pond->contentView()->bounds();
            event.locationInWindow = Point{bounds.width() * x, bounds.height() * y};
            event.keyCode = keyCode;
            event.scrollingDeltaX = scroll.x;
            event.scrollingDeltaY = scroll.y;
            event.hasPreciseScrollingDeltas = true;
            platform().eventMonitors().dispatch(event);
        });
    }
};

TEST_F(NativeExportsInputTest, PointerButtons_EdgesAreReadOnceAndTheLevelStays)
{
    dispatch(InputEventType::leftMouseDown);
    EXPECT_EQ(readButtons(), (Buttons{1, 1, 0}));
    EXPECT_EQ(readButtons(), (Buttons{0, 1, 0}));
    dispatch(InputEventType::leftMouseUp);
    EXPECT_EQ(readButtons(), (Buttons{0, 0, 1}));

    // A whole click between two reads.
    dispatch(InputEventType::leftMouseDown);
    dispatch(InputEventType::leftMouseUp);
    EXPECT_EQ(readButtons(), (Buttons{1, 0, 1}));
    EXPECT_EQ(readButtons(), (Buttons{0, 0, 0}));
}

TEST_F(NativeExportsInputTest, Pointer_IsTheLastPositionAndStaysAfterReading)
{
    dispatch(InputEventType::mouseMoved, 0.25, 0.75);
    const Pair pointer = readPointer();
    EXPECT_FLOAT_EQ(pointer.x, 0.25F);
    EXPECT_NEAR(pointer.y, 0.75F, 1e-6);
    EXPECT_EQ(readPointer(), pointer);
}

TEST_F(NativeExportsInputTest, Scroll_IsTheSumSinceTheLastReadAndIsReset)
{
    dispatch(InputEventType::scrollWheel, 0.5, 0.5, 0, {1.5, -2});
    dispatch(InputEventType::scrollWheel, 0.5, 0.5, 0, {0.25, -1});
    EXPECT_EQ(readScroll(), (Pair{1.75F, -3.0F}));
    EXPECT_EQ(readScroll(), (Pair{0, 0}));
}

TEST_F(NativeExportsInputTest, Navigation_FollowsHeldKeysOnlyWhileThePondTakesInput)
{
    dispatch(InputEventType::keyDown, 0.5, 0.5, KeyCode::upArrow);
    dispatch(InputEventType::keyDown, 0.5, 0.5, KeyCode::d);
    const Pair diagonal = readNavigation();
    EXPECT_FLOAT_EQ(diagonal.x, 0.70710677F);
    EXPECT_FLOAT_EQ(diagonal.y, 0.70710677F);
    EXPECT_EQ(readNavigation(), diagonal);

    // The settings panel over the pond: the keys may still be down, but the
    // pond does not steer.
    onMain([] { host().showPanel(); });
    EXPECT_EQ(VelmoraIsPondInteractive(), 0);
    EXPECT_EQ(readNavigation(), (Pair{0, 0}));
}

TEST_F(NativeExportsInputTest, VisibilityAndWidth_AreThePonds)
{
    // The user makes the pond wider than the width it starts with.
    const double width = onMain([] {
        Window& pond = *host().pond();
        Rect frame = pond.frame();
        frame.size.width += 123.5;
        pond.setFrame(frame, FrameDisplay::immediate);
        return host().contentWidth().value_or(-1);
    });
    EXPECT_EQ(VelmoraContentWidth(), static_cast<float>(width));
    EXPECT_NE(VelmoraContentWidth(), 780.0F);
    EXPECT_EQ(VelmoraIsPondVisible(), 1);

    onMain([] { host().hide(); });
    EXPECT_EQ(VelmoraIsPondVisible(), 0);
    EXPECT_EQ(VelmoraIsPondInteractive(), 0);
    EXPECT_EQ(VelmoraContentWidth(), static_cast<float>(width));
}

// A renderer drawing on the library's main thread calls from there: the
// calls run at once instead of waiting for the thread they are on.
TEST_F(NativeExportsInputTest, Calls_OnTheMainThread_RunInPlace)
{
    dispatch(InputEventType::leftMouseDown, 0.1, 0.2);
    const auto [buttons, pointer, visible, width] = onMain([] {
        return std::tuple(readButtons(), readPointer(), VelmoraIsPondVisible(), VelmoraContentWidth());
    });
    EXPECT_EQ(buttons, (Buttons{1, 1, 0}));
    EXPECT_EQ(pointer, readPointer());
    EXPECT_EQ(visible, VelmoraIsPondVisible());
    EXPECT_EQ(width, VelmoraContentWidth());

    const std::string event = onMain([] {
        while (char* stale = VelmoraCopyEvent())
            VelmoraFree(stale);
        VelmoraNotice("phone");
        char* copied = VelmoraCopyEvent();
        std::string text = copied == nullptr ? "" : copied;
        VelmoraFree(copied);
        return text;
    });
    EXPECT_NE(event.find(R"(\"id\":\"phone\")"), std::string::npos) << event;
}

} // namespace
} // namespace velmora
