#pragma once

#include <system_error>
#include <type_traits>

namespace velmora {

// Why a file was refused although the system could read it. Carried as a
// std::error_code inside std::filesystem::filesystem_error, like the
// system's own reasons, so callers handle every file failure alike.
enum class FileError : int {
    // A FIFO, a device, a socket or a folder: reading one may block
    // forever or never end.
    notRegularFile = 1,
};

const std::error_category& fileErrorCategory() noexcept;

// NOLINTNEXTLINE(readability-identifier-naming): the name std::error_code looks for
inline std::error_code make_error_code(FileError error) noexcept
{
    return {static_cast<int>(error), fileErrorCategory()};
}

} // namespace velmora

template <> struct std::is_error_code_enum<velmora::FileError> : std::true_type {
};
