#include <functional>

#include <gtest/gtest.h>

#include "HostFixture.h"

namespace velmora {
namespace {

using test::HostFixture;

constexpr double diagonal = 0.7071067811865476;

// The pond shown and interactive, its content 780 × 640 points.
class MenuBarHostInputTest : public HostFixture {
protected:
    void SetUp() override
    {
        storeOnboarded();
        m_window = addRendererWindow();
        start();
        ASSERT_TRUE(host().interactive());
        ASSERT_EQ(host().contentWidth(), 780);
    }

    EventDisposition pointer(InputEventType type, Point location) const
    {
        return dispatch(mouse(type, m_window.get(), location));
    }
    EventDisposition release(std::uint16_t code, Window* window, std::uint64_t flags = 0) const
    {
        return dispatch(key(InputEventType::keyUp, code, window, flags));
    }

    std::shared_ptr<HeadlessWindow> m_window;
};

TEST_F(MenuBarHostInputTest, Buttons_BothEdgesBetweenTwoReadsAreKept_AndPressesOutsideTheContentAreTheWindows)
{
    EXPECT_EQ(pointer(InputEventType::leftMouseDown, {390, 160}), EventDisposition::passOn);
    EXPECT_EQ(host().eventPointer(), Point(0.5, 0.25));
    EXPECT_TRUE(readButtons().held);
    EXPECT_TRUE(readButtons().held) << "the level stays while held";

    pointer(InputEventType::leftMouseUp, {390, 160});
    pointer(InputEventType::leftMouseDown, {390, 160});
    pointer(InputEventType::leftMouseDragged, {0, 0});
    EXPECT_EQ(host().eventPointer(), Point(0, 0));
    pointer(InputEventType::leftMouseUp, {10, 10});
    const PondPointerState first = readButtons();
    EXPECT_TRUE(first.down);
    EXPECT_FALSE(first.held);
    EXPECT_TRUE(first.up);

    // The title bar lies above the content: y beyond its height.
    pointer(InputEventType::leftMouseDown, {390, 660});
    pointer(InputEventType::leftMouseUp, {390, 300});
    EXPECT_EQ(readButtons(), PondPointerState());
}

TEST_F(MenuBarHostInputTest, Pointer_IsTrackedInThePondOnly_InteractiveOrNot)
{
    struct PointerCase {
        const char* name = nullptr;
        Window* window = nullptr;
        Point location;
        Point expected;
    };
    host().settings();
    ASSERT_FALSE(host().interactive());
    const PointerCase cases[] = {
        {"pond, panel in front", m_window.get(), {195, 480}, {0.25, 0.75}},
        {"outside the bounds", m_window.get(), {-78, 1280}, {-0.1, 2}},
        {"the panel's own window", panel(), {0, 0}, {-0.1, 2}},
        {"no window", nullptr, {0, 0}, {-0.1, 2}},
    };
    for (const PointerCase& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(dispatch(mouse(InputEventType::mouseMoved, c.window, c.location)), EventDisposition::passOn);
        EXPECT_EQ(host().eventPointer(), c.expected);
    }
    // Not interactive: no press is recorded.
    pointer(InputEventType::leftMouseDown, {390, 160});
    EXPECT_EQ(readButtons(), PondPointerState());
}

TEST_F(MenuBarHostInputTest, Pointer_InAFlippedContentView_IsNormalizedUpwards)
{
    m_host.reset();
    m_platform = HeadlessShellPlatform::create(m_mainThread, m_system);
    m_window = addRendererWindow(HeadlessContentView::Orientation::flipped);
    start();
    pointer(InputEventType::mouseMoved, {390, 160});
    EXPECT_EQ(host().eventPointer(), Point(0.5, 0.25));
}

TEST_F(MenuBarHostInputTest, Scroll_IsScaledAccumulatedAndConsumedInsideThePond)
{
    EXPECT_EQ(dispatch(wheel(m_window.get(), {390, 320}, 0, 1, false)), EventDisposition::consume);
    EXPECT_EQ(host().pointerState().scroll, Point(0, 16));
    EXPECT_EQ(dispatch(wheel(m_window.get(), {390, 320}, -2, 3.5, true)), EventDisposition::consume);
    EXPECT_EQ(host().pointerState().scroll, Point(-2, 19.5));
    EXPECT_EQ(host().eventPointer(), Point(0.5, 0.5));

    // Outside the content: left alone entirely.
    EXPECT_EQ(dispatch(wheel(m_window.get(), {390, 700}, 0, 5, true)), EventDisposition::passOn);
    EXPECT_EQ(host().pointerState().scroll, Point(-2, 19.5));
    EXPECT_EQ(host().eventPointer(), Point(0.5, 0.5));

    // Over the pond with the panel in front: the panel's.
    host().settings();
    EXPECT_EQ(dispatch(wheel(m_window.get(), {390, 320}, 0, 5, true)), EventDisposition::passOn);
    EXPECT_EQ(host().pointerState().scroll, Point());
}

TEST_F(MenuBarHostInputTest, Keys_SteerOnlyInThePondAndWithoutBlockingModifiers)
{
    EXPECT_EQ(press(KeyCode::w, m_window.get()), EventDisposition::consume);
    EXPECT_EQ(press(KeyCode::d, m_window.get()), EventDisposition::consume);
    EXPECT_EQ(navigation(), Point(diagonal, diagonal));
    EXPECT_EQ(release(KeyCode::d, m_window.get()), EventDisposition::consume);
    EXPECT_EQ(navigation(), Point(0, 1));

    // Shift still steers; Space is the window's and disturbs nothing.
    EXPECT_EQ(press(KeyCode::upArrow, m_window.get(), ModifierFlag::shift | ModifierFlag::capsLock),
        EventDisposition::consume);
    EXPECT_EQ(press(49, m_window.get()), EventDisposition::passOn);
    EXPECT_TRUE(host().keyboardState().isHeld(KeyCode::w));
    EXPECT_TRUE(host().keyboardState().isHeld(KeyCode::upArrow));

    // Command+Up is a shortcut: it reaches the window and steering stops.
    EXPECT_EQ(press(KeyCode::upArrow, m_window.get(), ModifierFlag::command), EventDisposition::passOn);
    EXPECT_TRUE(host().keyboardState().empty());

    press(KeyCode::a, m_window.get());
    EXPECT_EQ(
        dispatch(key(InputEventType::flagsChanged, 0, m_window.get(), ModifierFlag::shift)), EventDisposition::passOn);
    EXPECT_FALSE(host().keyboardState().empty());
    for (const std::uint64_t modifier : {ModifierFlag::control, ModifierFlag::option, ModifierFlag::command}) {
        press(KeyCode::a, m_window.get());
        EXPECT_EQ(dispatch(key(InputEventType::flagsChanged, 0, m_window.get(), modifier)), EventDisposition::passOn);
        EXPECT_TRUE(host().keyboardState().empty()) << modifier;
    }

    // A key in another window is not the pond's, and lets go of the held set.
    press(KeyCode::leftArrow, m_window.get());
    const auto other = windows().addWindow(Rect(0, 0, 100, 100));
    EXPECT_EQ(press(KeyCode::leftArrow, other.get()), EventDisposition::passOn);
    EXPECT_TRUE(host().keyboardState().empty());
}

TEST_F(MenuBarHostInputTest, InputReset_OnEveryLossOfFocus)
{
    struct ResetCase {
        const char* name;
        std::function<void()> loseFocus;
    };
    const ResetCase cases[] = {
        {"application resigns", [this] { application().resignActive(); }},
        {"pond resigns key", [this] { windows().resignKeyWindow(); }},
        {"panel shown", [this] { host().settings(); }},
        {"hidden", [this] { host().hide(); }},
        {"full screen begins", [this] { host().toggleFullScreen(); }},
    };
    for (const ResetCase& c : cases) {
        SCOPED_TRACE(c.name);
        host().open();
        runPending();
        application().activate();
        ASSERT_TRUE(host().interactive());
        press(KeyCode::d, m_window.get());
        pointer(InputEventType::leftMouseDown, {390, 160});
        dispatch(wheel(m_window.get(), {390, 320}, 1, 1, true));
        pointer(InputEventType::mouseMoved, {195, 160});
        c.loseFocus();

        EXPECT_FALSE(host().interactive());
        EXPECT_EQ(host().pointerState(), PondPointerState());
        EXPECT_TRUE(host().keyboardState().empty());
        EXPECT_EQ(host().eventPointer(), Point(0.25, 0.25)) << "the position stays";
        runPending();
        if (m_window->isFullScreen()) {
            host().toggleFullScreen();
            runPending();
        }
    }
}

} // namespace
} // namespace velmora
