#include "PondColor.h"

#include <charconv>
#include <cstdint>

namespace pond {

PondColor PondColor::parse(std::string_view text, PondColor fallback)
{
    while (!text.empty() && text.front() == '#')
        text.remove_prefix(1);
    while (!text.empty() && text.back() == '#')
        text.remove_suffix(1);
    if (!text.empty() && text.front() == '+')
        text.remove_prefix(1);
    std::uint32_t value = 0;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value, 16);
    if (text.empty() || error != std::errc() || stop != end)
        return fallback;
    return fromBytes((value >> 16U) & 0xFFU, (value >> 8U) & 0xFFU, value & 0xFFU);
}

PondColor PondColor::mixed(PondColor other, double amount) const
{
    return {
        red + (other.red - red) * amount, green + (other.green - green) * amount, blue + (other.blue - blue) * amount};
}

} // namespace pond
