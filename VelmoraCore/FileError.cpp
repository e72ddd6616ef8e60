#include "FileError.h"

#include <string>

namespace velmora {

namespace {

class FileErrorCategory final : public std::error_category {
public:
    [[nodiscard]] const char* name() const noexcept override { return "velmora.file"; }

    [[nodiscard]] std::string message(int condition) const override
    {
        switch (static_cast<FileError>(condition)) {
        case FileError::notRegularFile:
            return "not a regular file";
        }
        return "unknown file error";
    }
};

} // namespace

const std::error_category& fileErrorCategory() noexcept
{
    static const FileErrorCategory category;
    return category;
}

} // namespace velmora
