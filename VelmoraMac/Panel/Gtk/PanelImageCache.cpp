#include "PanelImageCache.h"

namespace velmora {

namespace {

using LoaderPointer = GLibPointer<GdkPixbufLoader, g_object_ref, g_object_unref>;

GdkPixbuf* decoded(std::string_view png)
{
    const LoaderPointer loader = LoaderPointer::adopt(gdk_pixbuf_loader_new_with_type("png", nullptr));
    if (!loader)
        return nullptr;
    GError* error = nullptr;
    const bool written
        = gdk_pixbuf_loader_write(loader.get(), reinterpret_cast<const guchar*>(png.data()), png.size(), &error)
        != FALSE;
    // The loader must be closed either way; a failure here only means the
    // image is unusable, which the panel shows as an empty square.
    const bool closed = gdk_pixbuf_loader_close(loader.get(), written ? &error : nullptr) != FALSE;
    if (error != nullptr)
        g_error_free(error);
    if (!written || !closed)
        return nullptr;
    GdkPixbuf* pixbuf = gdk_pixbuf_loader_get_pixbuf(loader.get());
    return pixbuf != nullptr ? GDK_PIXBUF(g_object_ref(pixbuf)) : nullptr;
}

} // namespace

PanelImageCache::PixbufPointer PanelImageCache::pixbuf(const PanelImage& image)
{
    if (image.empty())
        return {};
    auto found = m_decoded.find(image.png());
    if (found == m_decoded.end())
        found = m_decoded.emplace(std::string(image.png()), PixbufPointer::adopt(decoded(image.png()))).first;
    return PixbufPointer::share(found->second.get());
}

} // namespace velmora
