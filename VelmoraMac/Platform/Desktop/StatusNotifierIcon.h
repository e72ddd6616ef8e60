#pragma once

#include <array>
#include <cstdint>
#include <string_view>
#include <vector>

#include <glib.h>

#include "VelmoraCore/Size.h"

namespace velmora {

// The status item's icon as tray hosts take it: the same picture at
// several pixel sizes, so that each host picks the one its panel fits
// without blurring a single size up or down.
//
// The picture is a template, a shape whose colour means nothing, and no
// tray host tints anything. It is drawn light with a thin dark outline:
// light reads on the dark panels most desktops ship with, and the outline
// keeps the shape distinct on a light panel, so one picture serves both
// without knowing the panel's colour (which the tray protocol never says).
//
// A plain value; built on any thread.
class StatusNotifierIcon {
public:
    struct Pixmap {
        int width = 0;
        int height = 0;
        // Row by row, each pixel as the bytes A, R, G, B (ARGB32 in network
        // byte order), not premultiplied.
        std::vector<std::uint8_t> argb;
    };

    // The heights offered, in pixels: what common panels use.
    static constexpr std::array<int, 5> heights{16, 22, 24, 32, 48};

    // The shape of the image in `png` (any format GdkPixbuf decodes), fitted
    // into each height with the width `size` gives it, centred. Bytes that
    // are no image (empty ones included) give one transparent pixmap of
    // `size`, so that the item keeps its place in the panel.
    static StatusNotifierIcon fromTemplate(std::string_view png, Size size);

    [[nodiscard]] const std::vector<Pixmap>& pixmaps() const { return m_pixmaps; }
    // The pixmaps as the IconPixmap property carries them, `a(iiay)`; a new
    // floating reference.
    [[nodiscard]] GVariant* toVariant() const;

private:
    std::vector<Pixmap> m_pixmaps;
};

} // namespace velmora
