#include "StartupLocations.h"

#include <string>
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
    fs::path resource = *folder / "content.json";
    std::error_code error;
    if (!fs::is_regular_file(resource, error))
        return std::nullopt;
    return resource;
}

std::optional<fs::path> StartupLocations::folderOfLoadedFile(const void* address)
{
    Dl_info info{};
    if (::dladdr(address, &info) == 0 || info.dli_fname == nullptr || *info.dli_fname == '\0')
        return std::nullopt;
    // A library opened by a relative path is known by that path; the
    // program is unlikely to have changed its folder since loading it.
    std::error_code error;
    const fs::path file = fs::absolute(info.dli_fname, error);
    if (error)
        return std::nullopt;
    return file.parent_path();
}

std::optional<fs::path> StartupLocations::dataHomeFrom(std::string_view xdgDataHome, std::string_view home)
{
    return XdgBaseDirectory::resolve(xdgDataHome, home, fs::path(".local") / "share");
}

fs::path StartupLocations::applicationSupportDirectory()
{
    const std::optional<fs::path> dataHome = XdgBaseDirectory::forThisProcess("XDG_DATA_HOME", fs::path(".local") / "share");
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
