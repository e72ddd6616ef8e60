#pragma once

#include <filesystem>
#include <optional>
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
    static std::optional<std::filesystem::path> resolve(std::string_view value, std::string_view home, const std::filesystem::path& fallback);
};

} // namespace velmora
