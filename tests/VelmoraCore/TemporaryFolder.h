#pragma once

#include <filesystem>

namespace velmora::test {

// A fresh private folder under the system's temporary folder, removed with
// everything in it when the object goes away.
class TemporaryFolder {
public:
    TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    TemporaryFolder(TemporaryFolder&&) = delete;
    TemporaryFolder& operator=(TemporaryFolder&&) = delete;
    ~TemporaryFolder();

    [[nodiscard]] const std::filesystem::path& path() const { return m_path; }
    [[nodiscard]] std::filesystem::path operator/(const std::filesystem::path& relative) const
    {
        return m_path / relative;
    }

private:
    std::filesystem::path m_path;
};

} // namespace velmora::test
