#include "DetachedCommand.h"

#include <glib.h>

namespace velmora {

bool launchDetached(const std::vector<std::string>& command)
{
    if (command.empty())
        return false;
    std::vector<gchar*> argv;
    argv.reserve(command.size() + 1);
    for (const std::string& argument : command)
        argv.push_back(const_cast<gchar*>(argument.c_str())); // NOLINT(cppcoreguidelines-pro-type-const-cast): GLib only reads it
    argv.push_back(nullptr);
    GError* error = nullptr;
    const auto flags = static_cast<GSpawnFlags>(G_SPAWN_SEARCH_PATH | G_SPAWN_STDOUT_TO_DEV_NULL | G_SPAWN_STDERR_TO_DEV_NULL);
    if (g_spawn_async(nullptr, argv.data(), nullptr, flags, nullptr, nullptr, nullptr, &error) == FALSE) {
        g_error_free(error);
        return false;
    }
    return true;
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
