#include <cstdint>
#include <memory>
#include <optional>

#include <gdk/gdk.h>
#include <gtest/gtest.h>

#include "VelmoraMac/Platform/Desktop/GdkEventTranslator.h"

namespace velmora {
namespace {

struct EventDeleter {
    void operator()(GdkEvent* event) const { gdk_event_free(event); }
};
using Event = std::unique_ptr<GdkEvent, EventDeleter>;

Event newEvent(GdkEventType type)
{
    return Event(gdk_event_new(type));
}

// Stands for a window whose content starts at (100, 50) on the screen and
// is 600 points high.
Window* const pond = reinterpret_cast<Window*>(0x1000); // NOLINT(performance-no-int-to-ptr): compared, never used
GdkEventTranslator translator()
{
    return GdkEventTranslator([](GdkWindow* /*window*/) { return GdkEventTranslator::Target{pond, {100, 50}, 600}; });
}

Event key(GdkEventType type, std::uint16_t hardware, guint keyval = GDK_KEY_a, unsigned state = 0)
{
    Event event = newEvent(type);
    event->key.hardware_keycode = hardware;
    event->key.keyval = keyval;
    event->key.state = state;
    return event;
}

TEST(GdkEventTranslator, Keys_GoByTheirPlaceWhateverTheLayoutPrintsOnThemAndRepeatWhileHeld)
{
    struct KeyCase {
        std::uint16_t hardware = 0;
        std::uint16_t expected = 0;
        // An AZERTY "z" on the W key is still the W key.
        guint keyval = GDK_KEY_z;
    };
    // A sample of the table, and keys outside it: Space and the first key
    // of the main row, never mistaken for A (0) or S (1).
    const KeyCase cases[] = {
        {25, KeyCode::w},
        {9, KeyCode::escape, GDK_KEY_Escape},
        {111, KeyCode::upArrow, GDK_KEY_Up},
        {65, GdkEventTranslator::otherKeyOffset + 65},
        {10, GdkEventTranslator::otherKeyOffset + 10},
    };
    GdkEventTranslator translate = translator();
    for (const KeyCase& entry : cases) {
        SCOPED_TRACE(entry.hardware);
        const std::optional<InputEvent> down = translate.translate(*key(GDK_KEY_PRESS, entry.hardware, entry.keyval));
        ASSERT_TRUE(down);
        EXPECT_EQ(down->type, InputEventType::keyDown);
        EXPECT_EQ(down->keyCode, entry.expected);
        EXPECT_EQ(down->window, pond);
        EXPECT_FALSE(down->isARepeat);
        EXPECT_TRUE(translate.translate(*key(GDK_KEY_PRESS, entry.hardware))->isARepeat) << "pressed again while held";
        const std::optional<InputEvent> up = translate.translate(*key(GDK_KEY_RELEASE, entry.hardware));
        ASSERT_TRUE(up);
        EXPECT_EQ(up->type, InputEventType::keyUp);
        EXPECT_FALSE(up->isARepeat);
    }
}

// A virtual keyboard (an on-screen one, a remote desktop's, wtype) sends a
// keymap of its own, numbering its keys from the first code up: its F may
// arrive with the code evdev gives to Escape.
TEST(GdkEventTranslator, Keys_FromAKeymapOfTheirOwn_AreKnownByTheirSymbol)
{
    EXPECT_EQ(GdkEventTranslator::keyCode(9, GDK_KEY_f), KeyCode::f);
    EXPECT_EQ(GdkEventTranslator::keyCode(9, GDK_KEY_F), KeyCode::f);
    EXPECT_EQ(GdkEventTranslator::keyCode(12, GDK_KEY_f), KeyCode::f);
    EXPECT_EQ(GdkEventTranslator::keyCode(12, GDK_KEY_w), GdkEventTranslator::otherKeyOffset + 12);
    EXPECT_EQ(GdkEventTranslator::keyCode(113, GDK_KEY_x), GdkEventTranslator::otherKeyOffset + 113);
    EXPECT_EQ(GdkEventTranslator::keyCode(30, GDK_KEY_Escape), KeyCode::escape);
    EXPECT_EQ(GdkEventTranslator::keyCode(31, GDK_KEY_Right), KeyCode::rightArrow);
}

TEST(GdkEventTranslator, Modifiers_MapToOurBitsAndModifierKeysReportTheStateAfterThem)
{
    using Flags = std::uint64_t;
    EXPECT_EQ(GdkEventTranslator::modifierFlags(GDK_MOD4_MASK), ModifierFlag::command) << "Super as X11 reports it";
    EXPECT_EQ(GdkEventTranslator::modifierFlags(GDK_BUTTON1_MASK | GDK_MOD2_MASK), Flags{0})
        << "buttons and Num Lock are no modifiers here";

    GdkEventTranslator translate = translator();
    // GDK's state is from before the event: pressing Control adds it,
    // releasing it takes it away.
    const std::optional<InputEvent> control
        = translate.translate(*key(GDK_KEY_PRESS, 37, GDK_KEY_Control_L, GDK_SHIFT_MASK));
    EXPECT_EQ(control->type, InputEventType::flagsChanged);
    EXPECT_EQ(control->modifierFlags, ModifierFlag::shift | ModifierFlag::control);
    const std::optional<InputEvent> released
        = translate.translate(*key(GDK_KEY_RELEASE, 37, GDK_KEY_Control_L, GDK_CONTROL_MASK | GDK_SUPER_MASK));
    EXPECT_EQ(released->type, InputEventType::flagsChanged);
    EXPECT_EQ(released->modifierFlags, ModifierFlag::command);
}

TEST(GdkEventTranslator, Pointer_ButtonsAndMotionInContentCoordinatesFromTheBottomLeft)
{
    GdkEventTranslator translate = translator();
    const auto button = [&translate](GdkEventType type, guint number, unsigned state = 0) {
        Event event = newEvent(type);
        event->button.button = number;
        event->button.x_root = 150;
        event->button.y_root = 80;
        event->button.state = static_cast<GdkModifierType>(state);
        return translate.translate(*event);
    };
    const std::optional<InputEvent> down = button(GDK_BUTTON_PRESS, 1);
    ASSERT_TRUE(down);
    EXPECT_EQ(down->type, InputEventType::leftMouseDown);
    EXPECT_EQ(down->window, pond);
    EXPECT_EQ(down->locationInWindow, (Point{50, 570}));
    EXPECT_EQ(button(GDK_BUTTON_RELEASE, 3)->type, InputEventType::rightMouseUp);
    EXPECT_FALSE(button(GDK_BUTTON_PRESS, 2)) << "the middle button";
    EXPECT_FALSE(button(GDK_2BUTTON_PRESS, 1)) << "each click of a double click comes on its own";

    const auto motion = [&translate](unsigned state) {
        Event event = newEvent(GDK_MOTION_NOTIFY);
        event->motion.x_root = 100;
        event->motion.y_root = 650;
        event->motion.state = static_cast<GdkModifierType>(state);
        return translate.translate(*event);
    };
    EXPECT_EQ(motion(0)->type, InputEventType::mouseMoved);
    EXPECT_EQ(motion(0)->locationInWindow, (Point{0, 0})) << "the bottom left corner";
    EXPECT_EQ(motion(GDK_BUTTON1_MASK)->type, InputEventType::leftMouseDragged);
    EXPECT_FALSE(translate.translate(*newEvent(GDK_FOCUS_CHANGE)));
}

TEST(GdkEventTranslator, Scroll_StepsAreLinesSmoothDeltasArePreciseAndUpIsPositive)
{
    GdkEventTranslator translate = translator();
    struct ScrollCase {
        double deltaX = 0;
        double deltaY = 0;
        Point expected;
        GdkScrollDirection direction = GDK_SCROLL_UP;
        bool precise = false;
    };
    const ScrollCase cases[] = {
        {0, 0, {0, 1}, GDK_SCROLL_UP, false},
        {0, 0, {-1, 0}, GDK_SCROLL_RIGHT, false},
        {0.5, -3.5, {-0.5, 3.5}, GDK_SCROLL_SMOOTH, true},
    };
    for (const ScrollCase& entry : cases) {
        SCOPED_TRACE(entry.direction);
        Event event = newEvent(GDK_SCROLL);
        event->scroll.direction = entry.direction;
        event->scroll.delta_x = entry.deltaX;
        event->scroll.delta_y = entry.deltaY;
        event->scroll.x_root = 400;
        event->scroll.y_root = 350;
        const std::optional<InputEvent> scroll = translate.translate(*event);
        ASSERT_TRUE(scroll);
        EXPECT_EQ(scroll->type, InputEventType::scrollWheel);
        EXPECT_EQ((Point{scroll->scrollingDeltaX, scroll->scrollingDeltaY}), entry.expected);
        EXPECT_EQ(scroll->hasPreciseScrollingDeltas, entry.precise);
        EXPECT_EQ(scroll->locationInWindow, (Point{300, 300}));
    }
}

} // namespace
} // namespace velmora
