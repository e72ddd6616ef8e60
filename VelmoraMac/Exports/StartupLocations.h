#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string_view>

namespace velmora {

// Where start-up finds its files on Linux. The content resource travels with
// the library's real file: the build and the install rules put
// "velmora/content.json" beside libVelmoraNative.so.<version>, in a folder
// of its own, and the library finds it there whatever path it was loaded
// by (a symbolic link in another folder, a relative LD_LIBRARY_PATH). The
// user's data lives in the XDG data home, which stands in for the user's
// Application Support folder.
class StartupLocations {
public:
    StartupLocations() = delete;

    // The folder beside the library that holds its resources.
    static constexpr const char* resourceFolder = "velmora";

    // "velmora/content.json" in the folder of the real file this library
    // was loaded from; none when that file cannot be told or no regular
    // file is there.
    static std::optional<std::filesystem::path> contentResource();

    // The folder of the real file (library or executable) loaded at
    // `address`: the file the kernel mapped, so every symbolic link on the
    // way resolved and the path absolute whatever the current folder has
    // become since; none when neither the kernel nor the loader tells.
    static std::optional<std::filesystem::path> folderOfLoadedFile(const void* address);

    // The file mapped at `address` as `maps` (the text of /proc/self/maps)
    // names it; none when no file is mapped there.
    static std::optional<std::filesystem::path> mappedFile(std::string_view maps, std::uintptr_t address);

    // The XDG data home: `xdgDataHome` when it is an absolute path, else
    // ".local/share" in `home` when that is absolute. Relative values are
    // ignored, as the XDG base directory rules ask, because they would
    // depend on whatever the current folder happens to be.
    static std::optional<std::filesystem::path> dataHomeFrom(std::string_view xdgDataHome, std::string_view home);

    // The process's data home from XDG_DATA_HOME and HOME (or the password
    // database when HOME is unusable), created with mode 0700 when missing.
    // Throws std::filesystem::filesystem_error when it cannot be found or
    // created, or something that is not a folder is in the way.
    static std::filesystem::path applicationSupportDirectory();

    // "app.velmora.mac/practice.json" inside `applicationSupport`.
    static std::filesystem::path stateFile(const std::filesystem::path& applicationSupport);
};

} // namespace velmora
