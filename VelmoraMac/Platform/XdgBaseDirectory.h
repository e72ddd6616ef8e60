#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace velmora {

// The XDG base-directory rules, as far as the library needs them (its data
// home, and the configuration home that holds the autostart folder).
class XdgBaseDirectory {
public:
    XdgBaseDirectory() = delete;

    // The value of an environment variable; empty when it is not set.
    static std::string_view environmentVariable(const char* name);

    // `value` (such as $XDG_CONFIG_HOME) when it is an absolute path, else
    // `fallback` (such as ".config") inside `home` when that is absolute.
    // Relative values are ignored, as the rules ask, because they would
    // depend on whatever the current folder happens to be.
    static std::optional<std::filesystem::path> resolve(
        std::string_view value, std::string_view home, const std::filesystem::path& fallback);

    // The folder the environment variable `variable` names for this
    // process, by resolve() with $HOME; when that gives none, with the home
    // folder the password database gives this user instead, since some
    // service managers start processes without HOME. None when neither
    // gives an absolute folder.
    static std::optional<std::filesystem::path> forThisProcess(
        const char* variable, const std::filesystem::path& fallback);

    // This user's home folder in the password database; empty when the
    // database has no entry for the user.
    static std::string passwordDatabaseHome();
};

} // namespace velmora
