#include "ScratchFolder.h"

#include <cerrno>
#include <cstdlib>
#include <string>
#include <system_error>

namespace velmora::bench {

ScratchFolder::ScratchFolder()
{
    std::string pattern = (std::filesystem::temp_directory_path() / "velmora-bench-XXXXXX").string();
    if (::mkdtemp(pattern.data()) == nullptr)
        throw std::system_error(errno, std::system_category(), "mkdtemp");
    m_path = pattern;
}

ScratchFolder::~ScratchFolder()
{
    std::error_code ignored; // Figures already printed are worth more than a tidy temporary folder.
    std::filesystem::remove_all(m_path, ignored);
}

} // namespace velmora::bench
