#include "LoginLaunchMarker.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>

namespace velmora {

LaunchEvent LoginLaunchMarker::launchEvent(const std::optional<std::string>& marker)
{
    LaunchEvent event{LaunchEvent::openApplication, std::nullopt};
    if (marker == value)
        event.propertyData = LaunchEvent::launchedAsLoginItem;
    return event;
}

std::vector<std::string> LoginLaunchMarker::loginCommand(
    const std::string& executable, const std::vector<std::string>& arguments)
{
    std::vector<std::string> command{"env", std::string(variable) + "=" + std::string(value), executable};
    if (arguments.size() > 1)
        command.insert(command.end(), std::next(arguments.begin()), arguments.end());
    return command;
}

std::vector<std::string> LoginLaunchMarker::processArguments()
{
    std::ifstream file("/proc/self/cmdline", std::ios::binary);
    std::vector<std::string> arguments;
    for (std::string field; std::getline(file, field, '\0');)
        arguments.push_back(field);
    return arguments;
}

std::string LoginLaunchMarker::processExecutable()
{
    std::error_code error;
    const std::filesystem::path executable = std::filesystem::read_symlink("/proc/self/exe", error);
    // Without /proc there is no program to name; the caller starts nothing.
    return error ? std::string() : executable.string();
}

std::optional<std::string> LoginLaunchMarker::processMarker()
{
    const gchar* marker = g_getenv(std::string(variable).c_str());
    return marker != nullptr ? std::optional<std::string>(marker) : std::nullopt;
}

gchar** LoginLaunchMarker::withoutMarker(gchar** environment)
{
    return g_environ_unsetenv(environment, std::string(variable).c_str());
}

} // namespace velmora
