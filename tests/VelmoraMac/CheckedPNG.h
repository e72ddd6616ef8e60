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

// The bytes of canonical base64 text, the form a strict decoder accepts:
// only the standard alphabet, padded, no line breaks. Throws
// std::runtime_error for anything else.
std::string decodedBase64(std::string_view text);

// Checks that `bytes` are a PNG image that can be drawn as a template image:
// the signature; chunks that fill the data exactly, each with a correct CRC;
// IHDR first, with a valid geometry and format, and IEND last; an alpha
// channel (colour type 4 or 6) or a tRNS chunk; consecutive IDAT chunks whose
// data inflates to exactly the size the header's geometry needs. Throws
// std::runtime_error naming the first problem.
CheckedPNG checkedPNG(std::string_view bytes);

} // namespace velmora::test
