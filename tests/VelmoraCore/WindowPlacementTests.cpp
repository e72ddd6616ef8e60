#include <iomanip>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "VelmoraCore/WindowPlacement.h"

namespace velmora {
namespace {

using WindowPlacement::Flipped;

// Geometry as text, so that a failing comparison reads as coordinates.
std::string text(const Rect& rect)
{
    std::ostringstream out;
    out << std::setprecision(17) << '(' << rect.minX() << ", " << rect.minY() << ", " << rect.width() << ", "
        << rect.height() << ')';
    return out.str();
}

std::string text(Point point)
{
    std::ostringstream out;
    out << std::setprecision(17) << '(' << point.x << ", " << point.y << ')';
    return out.str();
}

struct FrameCase {
    const char* name = "";
    Rect visible;
    Rect expected;
};

TEST(WindowPlacement, Frame_CentresTheDefaultSizeWithinTheInset)
{
    const FrameCase cases[] = {
        {"laptop screen below a menu bar", {0, 0, 1440, 875}, {330, 117.5, 780, 640}},
        {"small screen: the inset bounds both sides", {0, 0, 700, 500}, {8, 8, 684, 484}},
        {"exactly the default size plus the inset", {0, 0, 796, 656}, {8, 8, 780, 640}},
        {"second screen to the right", {1440, 0, 1920, 1055}, {2010, 207.5, 780, 640}},
        {"narrow and short: only one side limited", {0, 0, 500, 2000}, {8, 680, 484, 640}},
        {"smaller than the inset: one point, centred", {0, 0, 10, 4}, {4.5, 1.5, 1, 1}},
        {"empty screen", {100, 100, 0, 0}, {99.5, 99.5, 1, 1}},
    };
    for (const auto& c : cases)
        EXPECT_EQ(text(WindowPlacement::frame(c.visible)), text(c.expected)) << c.name;
}

struct ConstrainedCase {
    const char* name = "";
    Rect frame;
    Rect visible;
    Rect expected;
};

constexpr ConstrainedCase constrainedCases[] = {
    {"past the right and top edges: moved in", {1000, 600, 800, 600}, {0, 0, 1440, 875}, {632, 267, 800, 600}},
    {"past the left and bottom edges: moved in", {-200, -50, 400, 300}, {0, 25, 1440, 850}, {8, 33, 400, 300}},
    {"already inside: unchanged", {100, 100, 400, 300}, {0, 0, 1440, 875}, {100, 100, 400, 300}},
    {"small frame is not grown", {300, 200, 120, 90}, {0, 0, 1440, 875}, {300, 200, 120, 90}},
    {"larger than the screen: shrunk to the inset, at the left and bottom margins", {500, 400, 3000, 2000},
        {0, 0, 1440, 875}, {8, 8, 1424, 859}},
    {"only too wide: height kept", {0, 300, 1600, 300}, {0, 0, 1440, 875}, {8, 300, 1424, 300}},
    {"onto a second screen to the right", {3000, 500, 600, 400}, {1440, 0, 1920, 1080}, {2752, 500, 600, 400}},
    {"onto a screen at negative coordinates", {0, 0, 800, 600}, {-1920, -1080, 1920, 1080}, {-808, -608, 800, 600}},
    {"screen smaller than the inset: one point at the left and bottom margins", {50, 50, 400, 300}, {0, 0, 10, 10},
        {8, 8, 1, 1}},
};

TEST(WindowPlacement, Constrained_FitsTheFrameInsideTheInsetWithoutGrowingItAndLeavesItThere)
{
    // Every show and reposition constrains the frame it remembered last
    // time: a second pass must not move the window again.
    for (const auto& c : constrainedCases) {
        const Rect once = WindowPlacement::constrained(c.frame, c.visible);
        EXPECT_EQ(text(once), text(c.expected)) << c.name;
        EXPECT_EQ(text(WindowPlacement::constrained(once, c.visible)), text(once)) << c.name << ", again";
    }
}

TEST(WindowPlacement, Constrained_KeepsTheDefaultFrameOfTheSameScreen)
{
    // A window that opened at its default frame must not jump at the next
    // reposition. (Screens smaller than the inset are left out: there the
    // default frame is centred, the constrained one at the margins.)
    for (const Rect visible :
        {Rect(0, 0, 1440, 875), Rect(0, 0, 700, 500), Rect(-1280, -200, 1280, 800), Rect(0, 0, 796, 656)}) {
        const Rect opened = WindowPlacement::frame(visible);
        EXPECT_EQ(text(WindowPlacement::constrained(opened, visible)), text(opened)) << text(visible);
    }
}

struct PointerCase {
    const char* name = "";
    Point local;
    Rect bounds;
    Point expected;
    Point expectedFlipped;
};

TEST(WindowPlacement, NormalizedPointer_RunsFromBottomLeftToTopRightWhicheverWayTheViewIsFlipped)
{
    const PointerCase cases[] = {
        {"inside", {400, 150}, {0, 0, 800, 600}, {0.5, 0.25}, {0.5, 0.75}},
        {"origin corner", {0, 0}, {0, 0, 800, 600}, {0, 0}, {0, 1}},
        {"far corner", {800, 600}, {0, 0, 800, 600}, {1, 1}, {1, 0}},
        {"bounds with an origin of their own", {150, 75}, {100, 50, 200, 100}, {0.25, 0.25}, {0.25, 0.75}},
        {"outside: below 0 and above 1", {-80, 750}, {0, 0, 800, 600}, {-0.1, 1.25}, {-0.1, -0.25}},
        {"width 0.5 and height 0 divide by 1", {0.25, 3}, {0, 0, 0.5, 0}, {0.25, 3}, {0.25, -2}},
        {"empty bounds away from the origin", {12, 7}, {10, 10, 0, 0}, {2, -3}, {2, 4}},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(text(WindowPlacement::normalizedPointer(c.local, c.bounds, Flipped::no)), text(c.expected)) << c.name;
        EXPECT_EQ(text(WindowPlacement::normalizedPointer(c.local, c.bounds, Flipped::yes)), text(c.expectedFlipped))
            << c.name << ", flipped";
    }
}

} // namespace
} // namespace velmora
