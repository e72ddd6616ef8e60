#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace velmora {

// An icon's image as the content carries it: the bytes of a PNG file with
// its size in pixels, for a toolkit to decode and draw. Empty when the
// content has no usable image, so that the layout still keeps its place.
//
// A plain value; copies share the bytes.
class PanelImage {
public:
    PanelImage() = default;

    // The image in `png`, or an empty one unless the bytes begin as a PNG
    // file does: the signature, then a header chunk with a width and a
    // height from 1 to 2^31 - 1.
    static PanelImage fromPNG(std::string png);
    // The same from base64 text (Base64::decoded); empty when it does not
    // decode.
    static PanelImage fromBase64(std::string_view text);

    [[nodiscard]] bool empty() const { return !m_png; }
    // Empty for an empty image.
    [[nodiscard]] std::string_view png() const { return m_png ? std::string_view(*m_png) : std::string_view(); }
    [[nodiscard]] std::uint32_t pixelWidth() const { return m_pixelWidth; }
    [[nodiscard]] std::uint32_t pixelHeight() const { return m_pixelHeight; }

    bool operator==(const PanelImage& other) const
    {
        return png() == other.png() && m_pixelWidth == other.m_pixelWidth && m_pixelHeight == other.m_pixelHeight;
    }

private:
    std::shared_ptr<const std::string> m_png;
    std::uint32_t m_pixelWidth = 0;
    std::uint32_t m_pixelHeight = 0;
};

} // namespace velmora
