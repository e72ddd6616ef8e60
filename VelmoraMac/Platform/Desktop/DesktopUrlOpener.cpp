#include "DesktopUrlOpener.h"

#include <string>

#include <gdk/gdk.h>
#include <gio/gio.h>

#include "LoginLaunchMarker.h"

namespace velmora {

void DesktopUrlOpener::openURL(const std::string& url)
{
    GdkDisplay* display = gdk_display_get_default();
    GAppLaunchContext* context = display != nullptr ? G_APP_LAUNCH_CONTEXT(gdk_display_get_app_launch_context(display))
                                                    : g_app_launch_context_new();
    // The browser was not started at login, whether this process was.
    g_app_launch_context_unsetenv(context, std::string(LoginLaunchMarker::variable).c_str());
    GError* error = nullptr;
    if (g_app_info_launch_default_for_uri(url.c_str(), context, &error) == FALSE) {
        // No handler for the scheme, or one that would not start: the
        // desktop shows nothing either, and the panel has no alternative.
        g_error_free(error);
    }
    g_object_unref(context);
}

} // namespace velmora
