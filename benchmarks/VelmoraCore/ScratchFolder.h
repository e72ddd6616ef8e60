#pragma once

#include <filesystem>

namespace velmora::bench {

// A fresh private folder under the system's temporary folder ($TMPDIR or
// /tmp), removed with everything in it when the object goes away.
class ScratchFolder {
public:
    ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;
    ScratchFolder(ScratchFolder&&) = delete;
    ScratchFolder& operator=(ScratchFolder&&) = delete;
    ~ScratchFolder();

    [[nodiscard]] std::filesystem::path operator/(const std::filesystem::path& relative) const
    {
        return m_path / relative;
    }

private:
    std::filesystem::path m_path;
};

} // namespace velmora::bench
