#include "TemporaryFolder.h"

#include <cstdlib>
#include <stdexcept>
#include <string>
#include <system_error>

namespace velmora::test {

TemporaryFolder::TemporaryFolder()
{
    std::string pattern = (std::filesystem::temp_directory_path() / "velmora-test-XXXXXX").string();
    if (::mkdtemp(pattern.data()) == nullptr)
        throw std::system_error(errno, std::system_category(), "mkdtemp");
    m_path = pattern;
}

TemporaryFolder::~TemporaryFolder()
{
    std::error_code ignored; // A leftover in the temporary folder must not fail a test that passed.
    std::filesystem::remove_all(m_path, ignored);
}

} // namespace velmora::test
