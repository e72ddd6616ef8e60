#include "PondSnapshotWriter.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <string>

#include <nlohmann/json.hpp>

namespace velmora {

namespace {

// Inside a JSON string, encoded JSON text needs only its quotes and
// backslashes escaped: it holds no control characters, and the writer
// leaves every other byte, UTF-8 included, as it is.
void appendEscaped(std::string& escaped, std::string_view json)
{
    std::size_t start = 0;
    for (std::size_t found = json.find_first_of("\"\\"); found != std::string_view::npos;
         found = json.find_first_of("\"\\", start)) {
        escaped.append(json.substr(start, found - start));
        escaped.push_back('\\');
        escaped.push_back(json[found]);
        start = found + 1;
    }
    escaped.append(json.substr(start));
}

// Text the writer copies between quotes unchanged: printable ASCII other
// than the quote and the backslash.
bool isPlain(std::string_view value)
{
    return std::all_of(value.begin(), value.end(),
        [](char character) { return character >= ' ' && character <= '~' && character != '"' && character != '\\'; });
}

} // namespace

PondSnapshotWriter::PondSnapshotWriter(std::size_t bytes)
{
    m_snapshot.text.reserve(bytes);
    m_snapshot.escaped.reserve(bytes);
}

void PondSnapshotWriter::raw(std::string_view json)
{
    m_snapshot.text.append(json);
    appendEscaped(m_snapshot.escaped, json);
}

void PondSnapshotWriter::splice(const PondSnapshot& part)
{
    m_snapshot.text.append(part.text);
    m_snapshot.escaped.append(part.escaped);
}

void PondSnapshotWriter::string(std::string_view value)
{
    if (!isPlain(value)) {
        // Escapes, UTF-8 checks and all, exactly as the JSON library has them.
        raw(nlohmann::json(std::string(value)).dump());
        return;
    }
    m_snapshot.text.push_back('"');
    m_snapshot.text.append(value);
    m_snapshot.text.push_back('"');
    m_snapshot.escaped.append(R"(\")");
    m_snapshot.escaped.append(value);
    m_snapshot.escaped.append(R"(\")");
}

void PondSnapshotWriter::integer(std::int64_t value)
{
    std::array<char, std::numeric_limits<std::int64_t>::digits10 + 3> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
    const std::string_view text(digits.data(), static_cast<std::size_t>(end - digits.data()));
    m_snapshot.text.append(text);
    m_snapshot.escaped.append(text);
}

void PondSnapshotWriter::number(double value)
{
    // Whole numbers below 10^15 the library writes as the integer and ".0";
    // the rest, with its shortest round-trip digits and exponent form, it
    // writes itself.
    constexpr double plainLimit = 1e15;
    if (std::isfinite(value) && std::abs(value) < plainLimit && value == std::trunc(value)
        && !(value == 0 && std::signbit(value))) {
        integer(static_cast<std::int64_t>(value));
        raw(".0");
        return;
    }
    raw(nlohmann::json(value).dump());
}

void PondSnapshotWriter::boolean(bool value)
{
    raw(value ? "true" : "false");
}

PondSnapshot PondSnapshotWriter::part(std::string_view json)
{
    PondSnapshotWriter writer(json.size());
    writer.raw(json);
    return std::move(writer).finish();
}

} // namespace velmora
