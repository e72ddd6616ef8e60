#include <optional>
#include <string>

#include <gtest/gtest.h>

#include "VelmoraMac/Panel/Base64.h"
#include "VelmoraMac/Panel/PanelImage.h"
#include "VelmoraMac/Panel/PanelStyle.h"
#include "tests/VelmoraMac/CatalogFixture.h"

namespace velmora {
namespace {

using namespace std::string_literals;

// The signature and a header chunk for an image of the given size; the rest
// of a PNG file is the toolkit's to read.
std::string pngHeader(std::uint32_t width, std::uint32_t height)
{
    std::string bytes = "\x89PNG\r\n\x1A\n"s + "\0\0\0\x0D"s + "IHDR";
    for (const std::uint32_t value : {width, height}) {
        for (int shift = 24; shift >= 0; shift -= 8)
            bytes.push_back(static_cast<char>((value >> static_cast<unsigned>(shift)) & 0xFFU));
    }
    return bytes + "\x08\x06\0\0\0"s;
}

TEST(PanelStyle, PaletteColor_FallsBackToPaperForAMissingKeyOrAnEmptyPalette)
{
    const ContentCatalog::StringMap palette{{"gold", "#D9C59A"}, {"broken", "#GG0000"}};
    const Color fallback = Color::mobileHex("#F3EBD9");
    EXPECT_EQ(PanelStyle::paletteColor(palette, "gold"), Color::mobileHex("D9C59A"));
    EXPECT_EQ(PanelStyle::paletteColor(palette, "muted"), fallback);
    EXPECT_EQ(PanelStyle::paletteColor({}, "gold"), fallback);
    EXPECT_EQ(PanelStyle::paletteColor(palette, "broken"), Color::mobileHex("")) << "a present key is read as it is";
}

TEST(PanelStyle, Icon_MissingOrUndecodable_IsAnEmptyImageThatKeepsItsPlace)
{
    nlohmann::json content = test::minimalCatalogDocument();
    content["uiIcons"] = {{"text", "aWNvbg=="}, {"garbled", "iVBORw0KGgo*"}};
    const PanelStyle style(ContentCatalog::fromJSON(content.dump()));
    for (const char* name : {"text", "garbled", "absent"}) {
        SCOPED_TRACE(name);
        const PanelIcon icon = style.icon(name, 18, Color::mobileHex("#D9C59A"));
        EXPECT_TRUE(icon.image.empty());
        EXPECT_EQ(icon.size, 18);
        EXPECT_EQ(icon.name, name);
    }
    EXPECT_TRUE(style.topicImage("unknown").empty());
}

TEST(PanelStyle, Base64_DecodesOnlyStrictStandardText)
{
    struct DecodeCase {
        std::string text;
        std::optional<std::string> bytes;
    };
    const DecodeCase cases[] = {
        {"", ""s},
        {"aGk=", "hi"s},
        {"aGkh", "hi!"s},
        {"+/+/", "\xFB\xFF\xBF"s},
        {"AAAA", "\0\0\0"s},
        {"aGk", std::nullopt},
        {"aGk==", std::nullopt},
        {"aG=k", std::nullopt},
        {"====", std::nullopt},
        {"aGk=aGk=", std::nullopt},
        {"aG k", std::nullopt},
        {"-_-_", std::nullopt},
        {"aGk\0"s, std::nullopt},
    };
    for (const DecodeCase& c : cases) {
        SCOPED_TRACE(testing::PrintToString(c.text));
        EXPECT_EQ(Base64::decoded(c.text), c.bytes);
    }
}

TEST(PanelStyle, PanelImage_TakesOnlyBytesThatBeginAsAPNGFile)
{
    struct ImageCase {
        const char* name = nullptr;
        std::string bytes;
        std::uint32_t width = 0;
        std::uint32_t height = 0;
    };
    std::string wrongLength = pngHeader(4, 4);
    wrongLength[11] = 12;
    std::string wrongChunk = pngHeader(4, 4);
    wrongChunk[12] = 'i';
    const ImageCase cases[] = {
        {"a header", pngHeader(136, 68), 136, 68},
        {"the largest size", pngHeader(0x7FFFFFFF, 1), 0x7FFFFFFF, 1},
        {"no width", pngHeader(0, 4), 0, 0},
        {"too wide", pngHeader(0x80000000, 4), 0, 0},
        {"cut short", pngHeader(4, 4).substr(0, 23), 0, 0},
        {"another chunk first", wrongChunk, 0, 0},
        {"a header of the wrong length", wrongLength, 0, 0},
        {"not a PNG", "GIF89a" + pngHeader(4, 4).substr(6), 0, 0},
        {"nothing", "", 0, 0},
    };
    for (const ImageCase& c : cases) {
        SCOPED_TRACE(c.name);
        const PanelImage image = PanelImage::fromPNG(c.bytes);
        EXPECT_EQ(image.empty(), c.width == 0);
        EXPECT_EQ(image.pixelWidth(), c.width);
        EXPECT_EQ(image.pixelHeight(), c.height);
    }
}

} // namespace
} // namespace velmora
