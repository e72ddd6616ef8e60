#pragma once

#include <filesystem>
#include <optional>
#include <string_view>

namespace velmora {

// Where start-up finds its files on Linux. The content resource travels with
// the library file: the build and the install rules put "content.json" in
// the same folder as libVelmoraNative.so. The user's data lives in the XDG
// data home, which stands in for the user's Application Support folder.
class StartupLocations {
public:
    StartupLocations() = delete;

    // "content.json" in the folder of the file this library was loaded from;
    // none when the loader cannot tell that file or nothing is there.
    static std::optional<std::filesystem::path> contentResource();

    // The folder of the loaded file (library or executable) that holds
    // `address`, made absolute; none when the loader does not know it.
    static std::optional<std::filesystem::path> folderOfLoadedFile(const void* address);

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
