#include "DetachedCommand.h"

#include <glib.h>

#include "LoginLaunchMarker.h"

namespace velmora {

bool launchDetached(const std::vector<std::string>& command)
{
    if (command.empty())
        return false;
    std::vector<gchar*> argv;
    argv.reserve(command.size() + 1);
    for (const std::string& argument : command)
        argv.push_back(
            const_cast<gchar*>(argument.c_str())); // NOLINT(cppcoreguidelines-pro-type-const-cast): GLib only reads it
    argv.push_back(nullptr);
    // Started at login or not, what this process starts was not.
    gchar** environment = LoginLaunchMarker::withoutMarker(g_get_environ());
    GError* error = nullptr;
    const auto flags
        = static_cast<GSpawnFlags>(G_SPAWN_SEARCH_PATH | G_SPAWN_STDOUT_TO_DEV_NULL | G_SPAWN_STDERR_TO_DEV_NULL);
    const bool started
        = g_spawn_async(nullptr, argv.data(), environment, flags, nullptr, nullptr, nullptr, &error) != FALSE;
    g_strfreev(environment);
    if (!started)
        g_error_free(error);
    return started;
}

bool currentDesktopIncludes(std::string_view currentDesktop, std::string_view wanted)
{
    while (!currentDesktop.empty()) {
        const std::size_t colon = currentDesktop.find(':');
        if (currentDesktop.substr(0, colon) == wanted)
            return true;
        currentDesktop = colon == std::string_view::npos ? std::string_view() : currentDesktop.substr(colon + 1);
    }
    return false;
}

} // namespace velmora
