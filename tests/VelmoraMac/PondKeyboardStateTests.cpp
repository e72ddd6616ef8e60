#include <cstdint>
#include <initializer_list>
#include <iomanip>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "VelmoraMac/Platform/EventMonitors.h"
#include "VelmoraMac/PondKeyboardState.h"

namespace velmora {
namespace {

constexpr double diagonal = 0.7071067811865476;
constexpr std::uint16_t space = 49;

// Exact to the last digit: the renderer compares directions it gets with
// the ones it expects.
std::string text(Point point)
{
    std::ostringstream out;
    out << std::setprecision(17) << '(' << point.x << ", " << point.y << ')';
    return out.str();
}

PondKeyboardState holding(std::initializer_list<std::uint16_t> keys)
{
    PondKeyboardState state;
    for (const std::uint16_t key : keys)
        state.press(key);
    return state;
}

struct DirectionCase {
    const char* name = "";
    std::vector<std::uint16_t> held;
    Point expected;
};

TEST(PondKeyboardState, Direction_IsTheUnitVectorOfTheHeldKeys)
{
    using namespace KeyCode;
    const DirectionCase cases[] = {
        {"nothing held", {}, {0, 0}},
        {"W", {w}, {0, 1}},
        {"D", {d}, {1, 0}},
        {"Left Arrow alone", {leftArrow}, {-1, 0}},
        {"Down Arrow", {downArrow}, {0, -1}},
        {"W and D", {w, d}, {diagonal, diagonal}},
        {"S and Left Arrow", {s, leftArrow}, {-diagonal, -diagonal}},
        {"Up Arrow and A", {upArrow, a}, {-diagonal, diagonal}},
        {"W and S cancel", {w, s}, {0, 0}},
        {"W and Up Arrow count once", {w, upArrow}, {0, 1}},
        {"D, Right Arrow and S: still a diagonal", {d, rightArrow, s}, {diagonal, -diagonal}},
        {"all eight", {a, s, d, w, leftArrow, rightArrow, downArrow, upArrow}, {0, 0}},
    };
    for (const auto& c : cases) {
        PondKeyboardState state;
        for (const std::uint16_t key : c.held)
            state.press(key);
        EXPECT_EQ(text(state.direction()), text(c.expected)) << c.name;
    }
}

TEST(PondKeyboardState, HeldSet_TracksEachNavigationKeyOnItsOwnAndNoOtherKey)
{
    PondKeyboardState state = holding({KeyCode::w, KeyCode::upArrow});
    state.release(KeyCode::w);
    EXPECT_EQ(text(state.direction()), text({0, 1})) << "Up Arrow is still held";

    // A key repeating while held is pressed again: still one key.
    state.press(KeyCode::d);
    state.press(KeyCode::d);
    state.release(KeyCode::d);
    EXPECT_FALSE(state.isHeld(KeyCode::d));

    state.release(KeyCode::s);
    EXPECT_EQ(state, holding({KeyCode::upArrow})) << "releasing a key not held changed the set";

    // Other keys never enter the set, nor let go of a held one.
    for (const std::uint16_t key : {KeyCode::f, KeyCode::escape, space, std::uint16_t{4}, std::uint16_t{0xFFFF}}) {
        EXPECT_FALSE(PondKeyboardState::isNavigation(key)) << key;
        state.press(key);
        EXPECT_FALSE(state.isHeld(key)) << key;
        state.release(key);
        EXPECT_EQ(state, holding({KeyCode::upArrow})) << "releasing " << key << " let go of Up Arrow";
    }
    state.clear();
    EXPECT_TRUE(state.empty());
    EXPECT_EQ(text(state.direction()), text({0, 0}));
}

} // namespace
} // namespace velmora
