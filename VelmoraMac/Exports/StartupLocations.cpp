#include "StartupLocations.h"

#include <cerrno>
#include <string>
#include <system_error>
#include <vector>

#include <dlfcn.h>
#include <pwd.h>
#include <unistd.h>

#include "VelmoraCore/DurableFile.h"
#include "VelmoraMac/Platform/XdgBaseDirectory.h"

namespace velmora {

namespace fs = std::filesystem;

namespace {

// The home folder the password database gives for this user, for processes
// started without HOME (some service managers do that).
std::string passwordDatabaseHome()
{
    long suggested = ::sysconf(_SC_GETPW_R_SIZE_MAX);
    std::vector<char> buffer(suggested > 0 ? static_cast<std::size_t>(suggested) : 4096U);
    passwd entry{};
    passwd* found = nullptr;
    while (::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &found) == ERANGE)
        buffer.resize(buffer.size() * 2);
    if (found == nullptr || found->pw_dir == nullptr)
        return {};
    return found->pw_dir;
}

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
    std::optional<fs::path> dataHome = dataHomeFrom(XdgBaseDirectory::environmentVariable("XDG_DATA_HOME"), XdgBaseDirectory::environmentVariable("HOME"));
    if (!dataHome)
        dataHome = dataHomeFrom({}, passwordDatabaseHome());
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
