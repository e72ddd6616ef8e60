#include "StatusNotifierIcon.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include <gdk-pixbuf/gdk-pixbuf.h>

#include "VelmoraMac/Platform/GLibPointer.h"

namespace velmora {

namespace {

using PixbufPointer = GLibPointer<GdkPixbuf, g_object_ref, g_object_unref>;

struct Colour {
    double red = 0;
    double green = 0;
    double blue = 0;
};

// Near white rather than white, and a near-black outline that lets a little
// of the panel through, so that neither glares on a panel of its own tone.
constexpr Colour fillColour{244, 244, 244};
constexpr Colour outlineColour{30, 30, 30};
constexpr double outlineOpacity = 0.8;

// An image given no usable size gets the most common panel icon's.
constexpr int unsizedSide = 22;

// Larger than any panel; a size beyond it is a mistake, not a wish.
constexpr int largestSide = 512;

int pixelsOf(double points)
{
    if (!std::isfinite(points))
        return 1;
    return static_cast<int>(std::clamp(std::lround(points), 1L, static_cast<long>(largestSide)));
}

// The outline is a band around the shape one pixel wide, two from 32 pixels
// up, where one would vanish.
int outlineRadius(int height)
{
    return height >= 32 ? 2 : 1;
}

PixbufPointer decode(std::string_view bytes)
{
    if (bytes.empty())
        return {};
    GdkPixbufLoader* loader = gdk_pixbuf_loader_new();
    GError* error = nullptr;
    // A failed write closes the loader itself.
    bool decoded
        = gdk_pixbuf_loader_write(loader, reinterpret_cast<const guchar*>(bytes.data()), bytes.size(), &error) != FALSE;
    if (decoded)
        decoded = gdk_pixbuf_loader_close(loader, &error) != FALSE;
    PixbufPointer image;
    if (decoded) {
        GdkPixbuf* pixbuf = gdk_pixbuf_loader_get_pixbuf(loader);
        // An image without alpha is a solid block, which is what its shape is.
        if (pixbuf != nullptr)
            image = PixbufPointer::adopt(gdk_pixbuf_add_alpha(pixbuf, FALSE, 0, 0, 0));
    }
    // What the bytes were not is of no use to anyone: the caller shows an
    // empty image, as for no bytes at all.
    g_clear_error(&error);
    g_object_unref(loader);
    return image;
}

StatusNotifierIcon::Pixmap transparent(int width, int height)
{
    const auto pixels = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    return StatusNotifierIcon::Pixmap{width, height, std::vector<std::uint8_t>(pixels * 4, 0)};
}

// The shape's coverage, 0 to 255 per pixel, fitted and centred in a box of
// `width` × `height` that leaves room for the outline.
std::vector<std::uint8_t> coverage(GdkPixbuf* image, int width, int height, int margin)
{
    std::vector<std::uint8_t> alpha(static_cast<std::size_t>(width) * static_cast<std::size_t>(height), 0);
    const int innerWidth = std::max(1, width - 2 * margin);
    const int innerHeight = std::max(1, height - 2 * margin);
    const int sourceWidth = gdk_pixbuf_get_width(image);
    const int sourceHeight = gdk_pixbuf_get_height(image);
    const double scale
        = std::min(static_cast<double>(innerWidth) / sourceWidth, static_cast<double>(innerHeight) / sourceHeight);
    const int scaledWidth = std::clamp(static_cast<int>(std::lround(sourceWidth * scale)), 1, innerWidth);
    const int scaledHeight = std::clamp(static_cast<int>(std::lround(sourceHeight * scale)), 1, innerHeight);
    const PixbufPointer scaled
        = PixbufPointer::adopt(gdk_pixbuf_scale_simple(image, scaledWidth, scaledHeight, GDK_INTERP_HYPER));
    if (!scaled)
        return alpha; // Out of memory for a few pixels: an empty picture.
    const guint8* pixels = gdk_pixbuf_read_pixels(scaled.get());
    const auto stride = static_cast<std::size_t>(gdk_pixbuf_get_rowstride(scaled.get()));
    const auto channels = static_cast<std::size_t>(gdk_pixbuf_get_n_channels(scaled.get()));
    const int left = (width - scaledWidth) / 2;
    const int top = (height - scaledHeight) / 2;
    for (int y = 0; y < scaledHeight; ++y) {
        for (int x = 0; x < scaledWidth; ++x) {
            const std::size_t from = static_cast<std::size_t>(y) * stride + static_cast<std::size_t>(x) * channels + 3;
            const auto to = static_cast<std::size_t>(top + y) * static_cast<std::size_t>(width)
                + static_cast<std::size_t>(left + x);
            alpha[to] = pixels[from];
        }
    }
    return alpha;
}

// The shape grown by `radius` pixels in every direction (a rough disc).
std::vector<std::uint8_t> dilated(const std::vector<std::uint8_t>& alpha, int width, int height, int radius)
{
    std::vector<std::uint8_t> grown(alpha.size(), 0);
    const int reach = radius * radius + 1;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            std::uint8_t most = 0;
            for (int dy = -radius; dy <= radius; ++dy) {
                for (int dx = -radius; dx <= radius; ++dx) {
                    const int nx = x + dx;
                    const int ny = y + dy;
                    if (dx * dx + dy * dy > reach || nx < 0 || ny < 0 || nx >= width || ny >= height)
                        continue;
                    most = std::max(most,
                        alpha[static_cast<std::size_t>(ny) * static_cast<std::size_t>(width)
                            + static_cast<std::size_t>(nx)]);
                }
            }
            grown[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x)] = most;
        }
    }
    return grown;
}

std::uint8_t byteOf(double value)
{
    return static_cast<std::uint8_t>(std::lround(std::clamp(value, 0.0, 255.0)));
}

// The fill over its outline, as non-premultiplied ARGB.
StatusNotifierIcon::Pixmap tinted(GdkPixbuf* image, int width, int height)
{
    const int radius = outlineRadius(height);
    const std::vector<std::uint8_t> shape = coverage(image, width, height, radius);
    const std::vector<std::uint8_t> outline = dilated(shape, width, height, radius);
    StatusNotifierIcon::Pixmap pixmap = transparent(width, height);
    for (std::size_t index = 0; index < shape.size(); ++index) {
        const double fill = shape[index] / 255.0;
        const double under = outline[index] / 255.0 * outlineOpacity * (1 - fill);
        const double opacity = fill + under;
        if (opacity <= 0)
            continue;
        std::uint8_t* pixel = &pixmap.argb[index * 4];
        pixel[0] = byteOf(opacity * 255);
        pixel[1] = byteOf((fillColour.red * fill + outlineColour.red * under) / opacity);
        pixel[2] = byteOf((fillColour.green * fill + outlineColour.green * under) / opacity);
        pixel[3] = byteOf((fillColour.blue * fill + outlineColour.blue * under) / opacity);
    }
    return pixmap;
}

} // namespace

StatusNotifierIcon StatusNotifierIcon::fromTemplate(std::string_view png, Size size)
{
    const bool sized = std::isfinite(size.width) && std::isfinite(size.height) && size.width > 0 && size.height > 0;
    const double aspect = sized ? size.width / size.height : 1.0;
    StatusNotifierIcon icon;
    const PixbufPointer image = decode(png);
    if (!image) {
        icon.m_pixmaps.push_back(
            sized ? transparent(pixelsOf(size.width), pixelsOf(size.height)) : transparent(unsizedSide, unsizedSide));
        return icon;
    }
    for (const int height : heights)
        icon.m_pixmaps.push_back(tinted(image.get(), pixelsOf(height * aspect), height));
    return icon;
}

GVariant* StatusNotifierIcon::toVariant() const
{
    GVariantBuilder builder;
    g_variant_builder_init(&builder, G_VARIANT_TYPE("a(iiay)"));
    for (const Pixmap& pixmap : m_pixmaps) {
        GVariant* bytes = g_variant_new_fixed_array(G_VARIANT_TYPE_BYTE, pixmap.argb.data(), pixmap.argb.size(), 1);
        g_variant_builder_add(&builder, "(ii@ay)", pixmap.width, pixmap.height, bytes);
    }
    return g_variant_builder_end(&builder);
}

} // namespace velmora
