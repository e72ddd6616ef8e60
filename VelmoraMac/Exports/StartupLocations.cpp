#include "StartupLocations.h"

#include <charconv>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <system_error>

#include <dlfcn.h>

#include "VelmoraCore/DurableFile.h"
#include "VelmoraMac/Platform/XdgBaseDirectory.h"

namespace velmora {

namespace fs = std::filesystem;

namespace {

// Any address inside this library names the file it was loaded from.
const char libraryAnchor = 0;

} // namespace

std::optional<fs::path> StartupLocations::contentResource()
{
    const std::optional<fs::path> folder = folderOfLoadedFile(&libraryAnchor);
    if (!folder)
        return std::nullopt;
    fs::path resource = *folder / resourceFolder / "content.json";
    std::error_code error;
    if (!fs::is_regular_file(resource, error))
        return std::nullopt;
    return resource;
}

std::optional<fs::path> StartupLocations::folderOfLoadedFile(const void* address)
{
    // The kernel names the file it mapped by its real path, which no link
    // and no change of the current folder can mislead.
    std::ifstream maps("/proc/self/maps");
    const std::string mappings{std::istreambuf_iterator<char>(maps), std::istreambuf_iterator<char>()};
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast): an address to look up
    const auto where = reinterpret_cast<std::uintptr_t>(address);
    if (std::optional<fs::path> mapped = mappedFile(mappings, where))
        return mapped->parent_path();
    // Without /proc, the loader's name for it, resolved now: a relative one
    // is read against the current folder, which the program is unlikely to
    // have changed since loading it.
    Dl_info info{};
    if (::dladdr(address, &info) == 0 || info.dli_fname == nullptr || *info.dli_fname == '\0')
        return std::nullopt;
    std::error_code error;
    const fs::path file = fs::canonical(info.dli_fname, error);
    if (error)
        return std::nullopt;
    return file.parent_path();
}

std::optional<fs::path> StartupLocations::mappedFile(std::string_view maps, std::uintptr_t address)
{
    // Lines of "start-end perms offset device inode  path", addresses in
    // hexadecimal; the path (which may hold spaces) starts with "/".
    while (!maps.empty()) {
        const std::size_t end = maps.find('\n');
        const std::string_view line = maps.substr(0, end);
        maps = end == std::string_view::npos ? std::string_view() : maps.substr(end + 1);
        std::uintptr_t start = 0;
        std::uintptr_t stop = 0;
        const char* cursor = line.data();
        const char* const lineEnd = line.data() + line.size();
        auto [afterStart, startError] = std::from_chars(cursor, lineEnd, start, 16);
        if (startError != std::errc() || afterStart == lineEnd || *afterStart != '-')
            continue;
        auto [afterStop, stopError] = std::from_chars(afterStart + 1, lineEnd, stop, 16);
        if (stopError != std::errc() || address < start || address >= stop)
            continue;
        const std::size_t path = line.find('/', static_cast<std::size_t>(afterStop - line.data()));
        if (path == std::string_view::npos)
            return std::nullopt;
        std::string_view name = line.substr(path);
        // A file replaced since it was mapped: its old name means nothing.
        if (name.ends_with(" (deleted)"))
            return std::nullopt;
        return fs::path(name);
    }
    return std::nullopt;
}

std::optional<fs::path> StartupLocations::dataHomeFrom(std::string_view xdgDataHome, std::string_view home)
{
    return XdgBaseDirectory::resolve(xdgDataHome, home, fs::path(".local") / "share");
}

fs::path StartupLocations::applicationSupportDirectory()
{
    const std::optional<fs::path> dataHome
        = XdgBaseDirectory::forThisProcess("XDG_DATA_HOME", fs::path(".local") / "share");
    if (!dataHome)
        throw fs::filesystem_error("find the data folder", std::make_error_code(std::errc::no_such_file_or_directory));
    DurableFile::createFolders(*dataHome);
    return *dataHome;
}

fs::path StartupLocations::stateFile(const fs::path& applicationSupport)
{
    return applicationSupport / "app.velmora.mac" / "practice.json";
}

} // namespace velmora
