// GLib's decoder skips characters outside the alphabet instead of refusing
// them, so a damaged icon would turn into a different one rather than into
// none; hence a decoder of our own.

#include "Base64.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace velmora::Base64 {

namespace {

constexpr std::uint8_t notInAlphabet = 0xFF;

constexpr std::array<std::uint8_t, 256> decodingTable()
{
    std::array<std::uint8_t, 256> table{};
    table.fill(notInAlphabet);
    constexpr std::string_view alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    for (std::size_t index = 0; index < alphabet.size(); ++index)
        table.at(static_cast<unsigned char>(alphabet[index])) = static_cast<std::uint8_t>(index);
    return table;
}

constexpr std::array<std::uint8_t, 256> table = decodingTable();

} // namespace

std::optional<std::string> decoded(std::string_view text)
{
    constexpr std::size_t groupSize = 4;
    if (text.size() % groupSize != 0)
        return std::nullopt;
    std::size_t padding = 0;
    if (!text.empty() && text.back() == '=')
        padding = text[text.size() - 2] == '=' ? 2 : 1;

    std::string bytes;
    bytes.reserve(text.size() / groupSize * 3);
    const std::size_t digits = text.size() - padding;
    std::uint32_t bits = 0;
    unsigned bitCount = 0;
    for (std::size_t index = 0; index < digits; ++index) {
        const std::uint8_t value = table.at(static_cast<unsigned char>(text[index]));
        if (value == notInAlphabet)
            return std::nullopt;
        bits = (bits << 6U) | value;
        bitCount += 6;
        if (bitCount >= 8) {
            bitCount -= 8;
            bytes.push_back(static_cast<char>((bits >> bitCount) & 0xFFU));
        }
    }
    return bytes;
}

} // namespace velmora::Base64
