#include "DriverProcess.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <system_error>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/VelmoraCore/TemporaryFolder.h"

extern char** environ; // NOLINT(readability-redundant-declaration): POSIX declares it nowhere else

namespace velmora::test {

namespace fs = std::filesystem;

namespace {

std::vector<std::string> childEnvironment(const DriverProcess::Environment& changes)
{
    std::vector<std::string> variables;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        const std::string variable(*entry);
        const std::string name = variable.substr(0, variable.find('='));
        if (!changes.contains(name))
            variables.push_back(variable);
    }
    for (const auto& [name, value] : changes) {
        if (value)
            variables.push_back(name + "=" + *value);
    }
    return variables;
}

std::vector<char*> pointers(std::vector<std::string>& strings)
{
    std::vector<char*> result;
    result.reserve(strings.size() + 1);
    for (std::string& string : strings)
        result.push_back(string.data());
    result.push_back(nullptr);
    return result;
}

std::string contents(const fs::path& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::vector<std::string> lines(const std::string& text)
{
    std::vector<std::string> result;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        result.push_back(line);
    return result;
}

void check(int error, const char* operation)
{
    if (error != 0)
        throw std::system_error(error, std::system_category(), operation);
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

fs::path DriverProcess::builtLibrary()
{
    return VELMORA_NATIVE_LIBRARY;
}

fs::path DriverProcess::driver()
{
    return VELMORA_EXPORTS_DRIVER;
}

DriverProcess::Result DriverProcess::run(const fs::path& library, const std::string& scenario, const std::vector<std::string>& arguments, const Environment& environment)
{
    // Files rather than pipes: nothing to drain while the child runs.
    const TemporaryFolder capture;
    const fs::path outputFile = capture / "output";
    const fs::path errorFile = capture / "errors";

    posix_spawn_file_actions_t actions;
    check(posix_spawn_file_actions_init(&actions), "posix_spawn_file_actions_init");
    check(posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0), "addopen");
    check(posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, outputFile.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600), "addopen");
    check(posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, errorFile.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600), "addopen");

    std::vector<std::string> argumentStrings = {driver().string(), library.string(), scenario};
    argumentStrings.insert(argumentStrings.end(), arguments.begin(), arguments.end());
    std::vector<std::string> variables = childEnvironment(environment);
    std::vector<char*> argv = pointers(argumentStrings);
    std::vector<char*> envp = pointers(variables);

    pid_t child = 0;
    const int spawned = posix_spawn(&child, argv.front(), &actions, nullptr, argv.data(), envp.data());
    posix_spawn_file_actions_destroy(&actions);
    check(spawned, "posix_spawn");

    int waitStatus = 0;
    while (::waitpid(child, &waitStatus, 0) < 0) {
        if (errno != EINTR)
            throw std::system_error(errno, std::system_category(), "waitpid");
    }
    Result result;
    result.status = WIFEXITED(waitStatus) ? WEXITSTATUS(waitStatus) : 128 + WTERMSIG(waitStatus);
    result.output = contents(outputFile);
    result.errors = contents(errorFile);
    return result;
}

} // namespace velmora::test
