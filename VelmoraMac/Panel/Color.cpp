#include "Color.h"

#include <cstdint>
#include <limits>
#include <optional>

namespace velmora {

namespace {

std::optional<int> hexDigit(char character)
{
    if (character >= '0' && character <= '9')
        return character - '0';
    if (character >= 'a' && character <= 'f')
        return character - 'a' + 10;
    if (character >= 'A' && character <= 'F')
        return character - 'A' + 10;
    return std::nullopt;
}

// An unsigned parse: a minus sign is not a digit, so "-1" fails rather than
// wrapping round to white. Leading zeros never overflow.
std::optional<std::uint32_t> parsedUnsigned(std::string_view text)
{
    if (!text.empty() && text.front() == '+')
        text.remove_prefix(1);
    if (text.empty())
        return std::nullopt;
    std::uint32_t value = 0;
    for (const char character : text) {
        const std::optional<int> digit = hexDigit(character);
        if (!digit || value > (std::numeric_limits<std::uint32_t>::max() >> 4U))
            return std::nullopt;
        value = (value << 4U) | static_cast<std::uint32_t>(*digit);
    }
    return value;
}

double component(std::uint32_t value, unsigned shift)
{
    return static_cast<double>((value >> shift) & 0xFFU) / 255.0;
}

} // namespace

Color Color::mobileHex(std::string_view text)
{
    const auto first = text.find_first_not_of('#');
    text = first == std::string_view::npos ? std::string_view()
                                           : text.substr(first, text.find_last_not_of('#') - first + 1);
    const std::uint32_t value = parsedUnsigned(text).value_or(0);
    return Color{component(value, 16), component(value, 8), component(value, 0), 1};
}

} // namespace velmora
