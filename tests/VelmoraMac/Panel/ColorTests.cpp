#include <gtest/gtest.h>

#include "VelmoraMac/Panel/Color.h"

namespace velmora {
namespace {

Color rgb(int red, int green, int blue)
{
    return Color{red / 255.0, green / 255.0, blue / 255.0, 1};
}

TEST(Color, MobileHex_ReadsTheContentsColoursAsTheyHaveAlwaysBeenRead)
{
    struct HexCase {
        const char* text = nullptr;
        Color expected;
    };
    const Color black = rgb(0, 0, 0);
    const HexCase cases[] = {
        {"F3EBD9", rgb(243, 235, 217)},
        {"#F3EBD9", rgb(243, 235, 217)},
        {"##F3EBD9##", rgb(243, 235, 217)},
        {"#f3ebd9", rgb(243, 235, 217)},
        {"#FFF", rgb(0, 15, 255)},
        {"+FF0000", rgb(255, 0, 0)},
        // Eight digits: the first two fall outside the colour, not into opacity.
        {"#FF000080", rgb(0, 0, 128)},
        // Leading zeros never overflow.
        {"#0000000000FF", rgb(0, 0, 255)},
        // Everything else is black.
        {"", black},
        {"#GG0000", black},
        {"++FF0000", black},
        {"-FF0000", black},
        {"#123456789", black},
        {"#FFFFFFFFF", black},
        {" F3EBD9", black},
        {"F3EBD9 ", black},
        {"0xF3EBD9", black},
    };
    for (const HexCase& c : cases) {
        SCOPED_TRACE(c.text);
        EXPECT_EQ(Color::mobileHex(c.text), c.expected);
    }
}

} // namespace
} // namespace velmora
