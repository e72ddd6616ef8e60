#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace velmora::Base64 {

// The bytes of standard base64 text, or none unless the text is strictly
// that: only the standard alphabet, a length that is a multiple of four, and
// "=" only as the padding of the last group. No line breaks or spaces are
// skipped, because an icon that decodes here must decode anywhere the content
// is used.
std::optional<std::string> decoded(std::string_view text);

} // namespace velmora::Base64
