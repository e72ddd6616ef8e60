#include "LoginLaunchMarker.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>

namespace velmora {

namespace {

bool isMarker(const std::string& argument)
{
    return argument == LoginLaunchMarker::argument;
}

} // namespace

LaunchEvent LoginLaunchMarker::launchEvent(const std::vector<std::string>& arguments)
{
    const bool atLogin = arguments.size() > 1 && std::any_of(std::next(arguments.begin()), arguments.end(), isMarker);
    LaunchEvent event{LaunchEvent::openApplication, std::nullopt};
    if (atLogin)
        event.propertyData = LaunchEvent::launchedAsLoginItem;
    return event;
}

std::vector<std::string> LoginLaunchMarker::loginCommand(const std::string& executable, const std::vector<std::string>& arguments)
{
    std::vector<std::string> command{executable};
    if (arguments.size() > 1)
        std::remove_copy_if(std::next(arguments.begin()), arguments.end(), std::back_inserter(command), isMarker);
    command.emplace_back(argument);
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

} // namespace velmora
