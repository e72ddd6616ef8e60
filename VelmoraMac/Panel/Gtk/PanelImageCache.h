#pragma once

#include <map>
#include <string>

#include <gdk-pixbuf/gdk-pixbuf.h>

#include "VelmoraMac/Panel/PanelImage.h"
#include "VelmoraMac/Platform/GLibPointer.h"

namespace velmora {

// The panel's images decoded once: a page is rebuilt on every change, and
// it draws the same few icons each time. Keyed by the PNG bytes, so an
// image is decoded once however many descriptions carry it.
// Main thread only.
class PanelImageCache {
public:
    using PixbufPointer = GLibPointer<GdkPixbuf, g_object_ref, g_object_unref>;

    // The decoded image, with a reference of the caller's own; null for an
    // empty image and for bytes GdkPixbuf cannot read, which then draw as
    // an empty square.
    [[nodiscard]] PixbufPointer pixbuf(const PanelImage& image);

private:
    // Null entries remember images that failed, so that they are not
    // decoded again.
    std::map<std::string, PixbufPointer, std::less<>> m_decoded;
};

} // namespace velmora
