#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

#include "CheckedPNG.h"

namespace velmora {
namespace {

// Small images made with a reference encoder, so that the checker that
// guards the shipped icons is itself known to tell good from bad.
struct PNGCase {
    const char* name;
    const char* base64;
    bool valid;
};

class CheckedPNGCases : public testing::TestWithParam<PNGCase> { };

TEST_P(CheckedPNGCases, AcceptsOnlyWellFormedImagesWithAlpha)
{
    const std::string bytes = test::decodedBase64(GetParam().base64);
    if (GetParam().valid) {
        EXPECT_NO_THROW((void)test::checkedPNG(bytes));
    } else {
        EXPECT_THROW((void)test::checkedPNG(bytes), std::runtime_error);
    }
}

const PNGCase pngCases[] = {
    {"RGBA", "iVBORw0KGgoAAAANSUhEUgAAAAIAAAACCAYAAABytg0kAAAAEUlEQVR4nGP4z8DQAMIMMAYAOOgF/REzMMkAAAAASUVORK5CYII=", true},
    {"GreyAlphaInterlaced", "iVBORw0KGgoAAAANSUhEUgAAAAMAAAADCAQAAAGLJk2iAAAAE0lEQVR4nGMQEGAAIxgNZgoIAAANCAEhwyfy2wAAAABJRU5ErkJggg==", true},
    {"PaletteWithTransparency", "iVBORw0KGgoAAAANSUhEUgAAAAIAAAACAQMAAABIeJ9nAAAABlBMVEUAAAD///+l2Z/dAAAAAXRSTlMAQObYZgAAAAxJREFUeJxjcGBwAAABBACBaA0CrwAAAABJRU5ErkJggg==", true},
    {"RGBWithTransparency", "iVBORw0KGgoAAAANSUhEUgAAAAIAAAACCAIAAAD91JpzAAAABnRSTlMAAQACAAPJS6v1AAAAEElEQVR4nGNgZGIGIgYIBQAArgAZhy4cnQAAAABJRU5ErkJggg==", true},
    {"RGBWithoutAlpha", "iVBORw0KGgoAAAANSUhEUgAAAAIAAAACCAIAAAD91JpzAAAAEElEQVR4nGNgZGIGIgYIBQAArgAZhy4cnQAAAABJRU5ErkJggg==", false},
    {"DataTooShortForTheGeometry", "iVBORw0KGgoAAAANSUhEUgAAAAMAAAACCAYAAACddGYaAAAAEUlEQVR4nGP4z8DQAMIMMAYAOOgF/REzMMkAAAAASUVORK5CYII=", false},
    {"WrongCRC", "iVBORw0KGgoAAAANSUhEUgAAAAIAAAACCAYAAABytg0kAAAAEUlEQVR4nGP4z8DQAMIMMAYAOegF/REzMMkAAAAASUVORK5CYII=", false},
    {"WithoutIEND", "iVBORw0KGgoAAAANSUhEUgAAAAIAAAACCAYAAABytg0kAAAAEUlEQVR4nGP4z8DQAMIMMAYAOOgF/REzMMk=", false},
    {"NotAPNG", "R0lGODlhAQABAAAAACw=", false},
};

INSTANTIATE_TEST_SUITE_P(Images, CheckedPNGCases, testing::ValuesIn(pngCases),
    [](const testing::TestParamInfo<PNGCase>& param) { return std::string(param.param.name); });

TEST(CheckedPNG, Base64_AcceptsOnlyTheCanonicalForm)
{
    EXPECT_EQ(test::decodedBase64("aWNvbg=="), "icon");
    for (const char* text : {"", "aWNvbg", "aWNv bg==", "aWNv\nbg==", "aWNvbg=", "aWNvbg===", "aWNv*bg==", "aWNvbh=="})
        EXPECT_THROW((void)test::decodedBase64(text), std::runtime_error) << text;
}

} // namespace
} // namespace velmora
