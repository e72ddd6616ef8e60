#include "CheckedPNG.h"

#include <memory>
#include <stdexcept>

#include <gdk-pixbuf/gdk-pixbuf.h>
#include <glib.h>

namespace velmora::test {

std::string decodedBase64(std::string_view text)
{
    // GLib's decoder skips what is not base64, so only text that encodes
    // back to itself is canonical.
    const std::string input(text);
    gsize length = 0;
    const std::unique_ptr<guchar, decltype(&g_free)> bytes(g_base64_decode(input.c_str(), &length), g_free);
    std::string decoded(reinterpret_cast<const char*>(bytes.get()), length);
    const std::unique_ptr<gchar, decltype(&g_free)> encoded(
        g_base64_encode(reinterpret_cast<const guchar*>(decoded.data()), decoded.size()), g_free);
    if (input != encoded.get())
        throw std::runtime_error("not canonical base64");
    return decoded;
}

CheckedPNG checkedPNG(std::string_view bytes)
{
    GError* error = nullptr;
    const std::unique_ptr<GdkPixbufLoader, decltype(&g_object_unref)> loader(
        gdk_pixbuf_loader_new_with_type("png", &error), g_object_unref);
    const bool read = loader
        && gdk_pixbuf_loader_write(loader.get(), reinterpret_cast<const guchar*>(bytes.data()), bytes.size(), &error)
        && gdk_pixbuf_loader_close(loader.get(), &error);
    if (!read) {
        const std::string message = error != nullptr ? error->message : "unreadable";
        g_clear_error(&error);
        // The loader insists on being closed even after a failed write.
        if (loader)
            (void)gdk_pixbuf_loader_close(loader.get(), nullptr);
        throw std::runtime_error("not a PNG image: " + message);
    }
    GdkPixbuf* image = gdk_pixbuf_loader_get_pixbuf(loader.get());
    if (image == nullptr)
        throw std::runtime_error("no image in the PNG data");
    if (gdk_pixbuf_get_has_alpha(image) == FALSE)
        throw std::runtime_error("no alpha channel");
    return {static_cast<std::uint32_t>(gdk_pixbuf_get_width(image)),
        static_cast<std::uint32_t>(gdk_pixbuf_get_height(image))};
}

} // namespace velmora::test
