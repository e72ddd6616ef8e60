#include "CheckedPNG.h"

#include <algorithm>
#include <array>
#include <initializer_list>
#include <memory>
#include <stdexcept>
#include <vector>

#include <gio/gio.h>
#include <glib.h>

namespace velmora::test {

namespace {

constexpr std::string_view signature = "\x89PNG\r\n\x1a\n";
// Far beyond any icon, and small enough that no size computation overflows.
constexpr std::uint32_t largestSide = 16384;

[[noreturn]] void fail(const std::string& problem)
{
    throw std::runtime_error(problem);
}

std::uint32_t bigEndian32(std::string_view bytes, std::size_t offset)
{
    std::uint32_t value = 0;
    for (std::size_t index = 0; index < 4; ++index)
        value = (value << 8U) | static_cast<unsigned char>(bytes[offset + index]);
    return value;
}

// The CRC-32 of PNG chunks (and of zlib), which GLib does not offer.
std::uint32_t crc32(std::string_view bytes)
{
    std::uint32_t crc = 0xFFFFFFFFU;
    for (const char byte : bytes) {
        crc ^= static_cast<unsigned char>(byte);
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc & 1U) != 0 ? (crc >> 1U) ^ 0xEDB88320U : crc >> 1U;
    }
    return crc ^ 0xFFFFFFFFU;
}

struct Chunk {
    std::string type;
    std::string_view data;
};

std::vector<Chunk> chunksOf(std::string_view bytes)
{
    if (!bytes.starts_with(signature))
        fail("no PNG signature");
    std::vector<Chunk> chunks;
    std::size_t offset = signature.size();
    while (offset < bytes.size()) {
        if (bytes.size() - offset < 12)
            fail("truncated chunk header at byte " + std::to_string(offset));
        const std::uint32_t length = bigEndian32(bytes, offset);
        if (length > 0x7FFFFFFFU || bytes.size() - offset - 12 < length)
            fail("chunk at byte " + std::to_string(offset) + " runs past the end");
        const std::string_view typeAndData = bytes.substr(offset + 4, 4 + std::size_t{length});
        const std::string type(typeAndData.substr(0, 4));
        for (const char letter : type) {
            if (!g_ascii_isalpha(letter))
                fail("chunk type with a byte that is no letter at byte " + std::to_string(offset));
        }
        if (crc32(typeAndData) != bigEndian32(bytes, offset + 8 + length))
            fail("wrong CRC in chunk " + type);
        chunks.push_back({type, typeAndData.substr(4)});
        offset += 12 + std::size_t{length};
    }
    return chunks;
}

std::uint64_t channelsOf(unsigned colourType, unsigned bitDepth)
{
    auto depthIsOneOf = [bitDepth](std::initializer_list<unsigned> depths) { return std::ranges::find(depths, bitDepth) != depths.end(); };
    switch (colourType) {
    case 0:
        if (depthIsOneOf({1, 2, 4, 8, 16}))
            return 1;
        break;
    case 2:
        if (depthIsOneOf({8, 16}))
            return 3;
        break;
    case 3:
        if (depthIsOneOf({1, 2, 4, 8}))
            return 1;
        break;
    case 4:
        if (depthIsOneOf({8, 16}))
            return 2;
        break;
    case 6:
        if (depthIsOneOf({8, 16}))
            return 4;
        break;
    default:
        break;
    }
    fail("invalid colour type " + std::to_string(colourType) + " with bit depth " + std::to_string(bitDepth));
}

// Bytes of filtered scanlines, with their filter-type bytes, that an image
// of this geometry needs.
std::uint64_t scanlineBytes(std::uint64_t width, std::uint64_t height, std::uint64_t bitsPerPixel, bool interlaced)
{
    auto passBytes = [bitsPerPixel](std::uint64_t passWidth, std::uint64_t passHeight) -> std::uint64_t {
        if (passWidth == 0 || passHeight == 0)
            return 0;
        return passHeight * (1 + ((passWidth * bitsPerPixel) + 7) / 8);
    };
    if (!interlaced)
        return passBytes(width, height);
    struct Pass {
        std::uint64_t x, y, stepX, stepY;
    };
    constexpr std::array<Pass, 7> adam7{{{0, 0, 8, 8}, {4, 0, 8, 8}, {0, 4, 4, 8}, {2, 0, 4, 4}, {0, 2, 2, 4}, {1, 0, 2, 2}, {0, 1, 1, 2}}};
    std::uint64_t total = 0;
    for (const Pass& pass : adam7) {
        const std::uint64_t passWidth = width > pass.x ? (width - pass.x + pass.stepX - 1) / pass.stepX : 0;
        const std::uint64_t passHeight = height > pass.y ? (height - pass.y + pass.stepY - 1) / pass.stepY : 0;
        total += passBytes(passWidth, passHeight);
    }
    return total;
}

std::uint64_t inflatedSize(std::string_view compressed)
{
    const std::unique_ptr<GZlibDecompressor, decltype(&g_object_unref)> decompressor(
        g_zlib_decompressor_new(G_ZLIB_COMPRESSOR_FORMAT_ZLIB), &g_object_unref);
    // Only the size matters, so the output goes through one small buffer.
    std::array<char, std::size_t{64} * 1024> output{};
    std::uint64_t produced = 0;
    for (;;) {
        gsize read = 0;
        gsize written = 0;
        GError* error = nullptr;
        const GConverterResult result = g_converter_convert(reinterpret_cast<GConverter*>(decompressor.get()),
            compressed.data(), compressed.size(), output.data(), output.size(), G_CONVERTER_INPUT_AT_END, &read, &written, &error);
        if (result == G_CONVERTER_ERROR) {
            const std::string message = error->message;
            g_error_free(error);
            fail("IDAT data does not inflate: " + message);
        }
        compressed.remove_prefix(read);
        produced += written;
        if (result == G_CONVERTER_FINISHED)
            break;
        if (read == 0 && written == 0)
            fail("IDAT data stops before the end of its compressed stream");
    }
    if (!compressed.empty())
        fail("bytes after the compressed stream in IDAT");
    return produced;
}

} // namespace

std::string decodedBase64(std::string_view text)
{
    if (text.empty())
        fail("empty base64 text");
    const std::string terminated(text);
    gsize length = 0;
    const std::unique_ptr<guchar, decltype(&g_free)> decoded(g_base64_decode(terminated.c_str(), &length), &g_free);
    // GLib's decoder skips what is not base64; encoding the result again
    // gives the input back only when there was nothing to skip.
    const std::unique_ptr<gchar, decltype(&g_free)> encoded(g_base64_encode(decoded.get(), length), &g_free);
    if (terminated != encoded.get())
        fail("not canonical base64");
    return {reinterpret_cast<const char*>(decoded.get()), length};
}

CheckedPNG checkedPNG(std::string_view bytes)
{
    const std::vector<Chunk> chunks = chunksOf(bytes);
    if (chunks.empty() || chunks.front().type != "IHDR" || chunks.front().data.size() != 13)
        fail("IHDR is not the first chunk");
    if (chunks.back().type != "IEND" || !chunks.back().data.empty())
        fail("IEND is not the last chunk");

    const std::string_view header = chunks.front().data;
    const CheckedPNG image{bigEndian32(header, 0), bigEndian32(header, 4)};
    const auto bitDepth = static_cast<unsigned char>(header[8]);
    const auto colourType = static_cast<unsigned char>(header[9]);
    const auto interlace = static_cast<unsigned char>(header[12]);
    if (image.width == 0 || image.height == 0 || image.width > largestSide || image.height > largestSide)
        fail("implausible size " + std::to_string(image.width) + " × " + std::to_string(image.height));
    const std::uint64_t channels = channelsOf(colourType, bitDepth);
    if (header[10] != 0 || header[11] != 0 || interlace > 1)
        fail("unknown compression, filter or interlace method");

    std::string compressed;
    bool transparency = false;
    bool palette = false;
    bool idatEnded = false;
    for (std::size_t index = 1; index + 1 < chunks.size(); ++index) {
        const Chunk& chunk = chunks[index];
        if (chunk.type == "IHDR" || chunk.type == "IEND")
            fail("a second " + chunk.type);
        if (chunk.type == "IDAT") {
            if (idatEnded)
                fail("IDAT chunks are not consecutive");
            compressed += chunk.data;
            if (chunks[index + 1].type != "IDAT")
                idatEnded = true;
        }
        transparency = transparency || chunk.type == "tRNS";
        palette = palette || chunk.type == "PLTE";
    }
    if (!idatEnded)
        fail("no IDAT chunk");
    if (colourType == 3 && !palette)
        fail("indexed colour without PLTE");
    if (colourType != 4 && colourType != 6 && !transparency)
        fail("no alpha channel and no tRNS chunk (colour type " + std::to_string(colourType) + ")");

    const std::uint64_t expected = scanlineBytes(image.width, image.height, channels * bitDepth, interlace == 1);
    const std::uint64_t actual = inflatedSize(compressed);
    if (actual != expected)
        fail("IDAT inflates to " + std::to_string(actual) + " bytes, the geometry needs " + std::to_string(expected));
    return image;
}

} // namespace velmora::test
