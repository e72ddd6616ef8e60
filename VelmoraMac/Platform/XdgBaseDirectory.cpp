#include "XdgBaseDirectory.h"

#include <cerrno>
#include <cstdlib>
#include <vector>

#include <pwd.h>
#include <unistd.h>

namespace velmora {

std::string_view XdgBaseDirectory::environmentVariable(const char* name)
{
    // Nothing in the library changes the environment.
    const char* value = std::getenv(name); // NOLINT(concurrency-mt-unsafe)
    return value == nullptr ? std::string_view() : std::string_view(value);
}

std::optional<std::filesystem::path> XdgBaseDirectory::resolve(
    std::string_view value, std::string_view home, const std::filesystem::path& fallback)
{
    const std::filesystem::path given(value);
    if (given.is_absolute())
        return given;
    const std::filesystem::path homeFolder(home);
    if (homeFolder.is_absolute())
        return homeFolder / fallback;
    return std::nullopt;
}

std::optional<std::filesystem::path> XdgBaseDirectory::forThisProcess(
    const char* variable, const std::filesystem::path& fallback)
{
    const std::string_view value = environmentVariable(variable);
    if (std::optional<std::filesystem::path> folder = resolve(value, environmentVariable("HOME"), fallback))
        return folder;
    return resolve(value, passwordDatabaseHome(), fallback);
}

std::string XdgBaseDirectory::passwordDatabaseHome()
{
    const long suggested = ::sysconf(_SC_GETPW_R_SIZE_MAX);
    std::vector<char> buffer(suggested > 0 ? static_cast<std::size_t>(suggested) : 4096U);
    passwd entry{};
    passwd* found = nullptr;
    while (::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &found) == ERANGE)
        buffer.resize(buffer.size() * 2);
    if (found == nullptr || found->pw_dir == nullptr)
        return {};
    return found->pw_dir;
}

} // namespace velmora
