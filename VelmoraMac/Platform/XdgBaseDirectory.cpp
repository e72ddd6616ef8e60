#include "XdgBaseDirectory.h"

#include <cstdlib>

namespace velmora {

std::string_view XdgBaseDirectory::environmentVariable(const char* name)
{
    // Nothing in the library changes the environment.
    const char* value = std::getenv(name); // NOLINT(concurrency-mt-unsafe)
    return value == nullptr ? std::string_view() : std::string_view(value);
}

std::optional<std::filesystem::path> XdgBaseDirectory::resolve(std::string_view value, std::string_view home, const std::filesystem::path& fallback)
{
    const std::filesystem::path given(value);
    if (given.is_absolute())
        return given;
    const std::filesystem::path homeFolder(home);
    if (homeFolder.is_absolute())
        return homeFolder / fallback;
    return std::nullopt;
}

} // namespace velmora
