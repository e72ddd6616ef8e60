#include "DriverProcess.h"

#include <memory>
#include <sstream>
#include <stdexcept>

#include <glib.h>
#include <sys/wait.h>

namespace velmora::test {

namespace {

std::vector<std::string> lines(const std::string& text)
{
    std::vector<std::string> result;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        result.push_back(line);
    return result;
}

} // namespace

std::optional<std::string> DriverProcess::Result::value(const std::string& key) const
{
    const std::vector<std::string> found = linesStartingWith(key + " ");
    if (found.empty())
        return std::nullopt;
    return found.front();
}

std::vector<std::string> DriverProcess::Result::linesStartingWith(const std::string& prefix) const
{
    std::vector<std::string> found;
    for (const std::string& line : lines(output)) {
        if (line.starts_with(prefix))
            found.push_back(line.substr(prefix.size()));
    }
    return found;
}

std::vector<std::string> DriverProcess::Result::errorLines() const
{
    return lines(errors);
}

std::filesystem::path DriverProcess::builtLibrary()
{
    return VELMORA_NATIVE_LIBRARY;
}

DriverProcess::Result DriverProcess::run(const std::filesystem::path& library, const std::string& scenario,
    const std::vector<std::string>& arguments, const Environment& environment)
{
    std::vector<std::string> command = {VELMORA_EXPORTS_DRIVER, library.string(), scenario};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return runProgram(std::move(command), environment);
}

DriverProcess::Result DriverProcess::runProgram(std::vector<std::string> command, const Environment& environment)
{
    // The GLib calls hand back a possibly moved array and throw nothing, so
    // the list is owned only once it is complete.
    gchar** envp = g_get_environ();
    for (const auto& [name, value] : environment)
        envp = value ? g_environ_setenv(envp, name.c_str(), value->c_str(), TRUE)
                     : g_environ_unsetenv(envp, name.c_str());
    const std::unique_ptr<gchar*, decltype(&g_strfreev)> variables(envp, g_strfreev);

    std::vector<char*> argv;
    argv.reserve(command.size() + 1);
    for (std::string& word : command)
        argv.push_back(word.data());
    argv.push_back(nullptr);
    gchar* output = nullptr;
    gchar* errors = nullptr;
    gint waitStatus = 0;
    GError* error = nullptr;
    const gboolean spawned = g_spawn_sync(
        nullptr, argv.data(), envp, G_SPAWN_SEARCH_PATH, nullptr, nullptr, &output, &errors, &waitStatus, &error);
    const std::unique_ptr<gchar, decltype(&g_free)> outputText(output, g_free);
    const std::unique_ptr<gchar, decltype(&g_free)> errorText(errors, g_free);
    if (spawned == FALSE) {
        const std::string message = error->message;
        g_error_free(error);
        throw std::runtime_error(command.front() + ": " + message);
    }
    Result result;
    result.status = WIFEXITED(waitStatus) ? WEXITSTATUS(waitStatus) : 128 + WTERMSIG(waitStatus);
    result.output = outputText.get();
    result.errors = errorText.get();
    return result;
}

} // namespace velmora::test
