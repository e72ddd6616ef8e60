#include "DesktopUrlOpener.h"

#include <gdk/gdk.h>
#include <gio/gio.h>

namespace velmora {

void DesktopUrlOpener::openURL(const std::string& url)
{
    GdkDisplay* display = gdk_display_get_default();
    GdkAppLaunchContext* context = display != nullptr ? gdk_display_get_app_launch_context(display) : nullptr;
    GError* error = nullptr;
    if (g_app_info_launch_default_for_uri(url.c_str(), context != nullptr ? G_APP_LAUNCH_CONTEXT(context) : nullptr, &error) == FALSE) {
        // No handler for the scheme, or one that would not start: the
        // desktop shows nothing either, and the panel has no alternative.
        g_error_free(error);
    }
    if (context != nullptr)
        g_object_unref(context);
}

} // namespace velmora
