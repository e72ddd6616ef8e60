#pragma once

#include <filesystem>

namespace pond {

// A practice to look at: a user who has finished onboarding with all
// seventeen topics selected, their lotuses at every stage from bud to full
// bloom, and a few days of practice. No lotus carries a last day, so none
// wilts however long the demo sits unused.
class PondDemoState {
public:
    // Writes it as the state file under `dataHome` (what $XDG_DATA_HOME
    // would be), making the folders. Never replaces a practice that is
    // there already: throws std::filesystem::filesystem_error with
    // std::errc::file_exists then, and on any failure to write.
    static std::filesystem::path write(const std::filesystem::path& dataHome);
};

} // namespace pond
