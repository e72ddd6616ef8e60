#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace velmora::test {

// A PNG image that passed checkedPNG(), by its geometry.
struct CheckedPNG {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
};

// The bytes of canonical base64 text: only the standard alphabet, padded,
// no line breaks. Throws std::runtime_error for anything else.
std::string decodedBase64(std::string_view text);

// Checks with the toolkit's own PNG reader that `bytes` are a whole PNG
// image with an alpha channel, as a template image needs. Throws
// std::runtime_error naming the problem.
CheckedPNG checkedPNG(std::string_view bytes);

} // namespace velmora::test
