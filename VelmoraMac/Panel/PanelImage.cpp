#include "PanelImage.h"

#include <cstddef>
#include <optional>

#include "Base64.h"

namespace velmora {

namespace {

constexpr std::string_view pngSignature("\x89PNG\r\n\x1A\n", 8);
constexpr std::uint32_t headerLength = 13;
constexpr std::uint32_t largestDimension = 0x7FFFFFFFU;

std::uint32_t bigEndian(std::string_view bytes, std::size_t offset)
{
    std::uint32_t value = 0;
    for (std::size_t index = 0; index < 4; ++index)
        value = (value << 8U) | static_cast<unsigned char>(bytes[offset + index]);
    return value;
}

} // namespace

PanelImage PanelImage::fromPNG(std::string png)
{
    // Signature, then the header chunk's length, type and first two fields.
    constexpr std::size_t lengthOffset = pngSignature.size();
    constexpr std::size_t typeOffset = lengthOffset + 4;
    constexpr std::size_t widthOffset = typeOffset + 4;
    constexpr std::size_t heightOffset = widthOffset + 4;
    constexpr std::size_t checkedSize = heightOffset + 4;

    const std::string_view bytes(png);
    if (bytes.size() < checkedSize || !bytes.starts_with(pngSignature) || bigEndian(bytes, lengthOffset) != headerLength
        || bytes.substr(typeOffset, 4) != "IHDR")
        return {};
    const std::uint32_t width = bigEndian(bytes, widthOffset);
    const std::uint32_t height = bigEndian(bytes, heightOffset);
    if (width == 0 || height == 0 || width > largestDimension || height > largestDimension)
        return {};

    PanelImage image;
    image.m_png = std::make_shared<const std::string>(std::move(png));
    image.m_pixelWidth = width;
    image.m_pixelHeight = height;
    return image;
}

PanelImage PanelImage::fromBase64(std::string_view text)
{
    std::optional<std::string> bytes = Base64::decoded(text);
    return bytes ? fromPNG(std::move(*bytes)) : PanelImage();
}

} // namespace velmora
