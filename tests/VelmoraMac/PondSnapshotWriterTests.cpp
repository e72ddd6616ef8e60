#include <cmath>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "VelmoraMac/EventEnvelope.h"
#include "VelmoraMac/PondSnapshotWriter.h"

namespace velmora {
namespace {

using nlohmann::json;

// Each value written alone is what the JSON library writes for it, and its
// escaped form makes the same envelope as the library's.
void expectAsTheLibraryWrites(const PondSnapshot& written, const json& value)
{
    const std::string expected = value.dump();
    EXPECT_EQ(written.text, expected);
    EXPECT_EQ(EventEnvelope::wrap(written), EventEnvelope::wrap(expected).value_or("refused"));
}

TEST(PondSnapshotWriterTest, Values_AreWrittenAsTheJSONLibraryWritesThem)
{
    const std::vector<std::string> strings = {
        "",
        "plain ASCII ~ / {}",
        "\"quoted\"",
        "back\\slash",
        "\b\f\n\r\t",
        std::string("\0\x01\x1F", 3),
        "\x7F",
        "Телефон",
        "फ़ोन",
        "🪷",
        R"(\u0041)",
    };
    for (const std::string& value : strings) {
        SCOPED_TRACE(json(value).dump());
        PondSnapshotWriter writer;
        writer.string(value);
        expectAsTheLibraryWrites(std::move(writer).finish(), value);
    }

    const std::vector<std::int64_t> integers
        = {0, 7, -7, std::numeric_limits<std::int64_t>::max(), std::numeric_limits<std::int64_t>::min()};
    for (const std::int64_t value : integers) {
        SCOPED_TRACE(value);
        PondSnapshotWriter writer;
        writer.integer(value);
        expectAsTheLibraryWrites(std::move(writer).finish(), value);
    }

    const std::vector<double> numbers = {
        1.0,
        0.0,
        -0.0,
        -3.0,
        0.5,
        1.0 / 3.0,
        999999999999999.0,
        1e15,
        1e20,
        -1e300,
        5e-324,
        std::numeric_limits<double>::infinity(),
        std::numeric_limits<double>::quiet_NaN(),
    };
    for (const double value : numbers) {
        SCOPED_TRACE(value);
        PondSnapshotWriter writer;
        writer.number(value);
        expectAsTheLibraryWrites(std::move(writer).finish(), value);
    }

    for (const bool value : {false, true}) {
        PondSnapshotWriter writer;
        writer.boolean(value);
        expectAsTheLibraryWrites(std::move(writer).finish(), value);
    }
}

TEST(PondSnapshotWriterTest, PartsAndValues_SpliceIntoOneDocument)
{
    const PondSnapshot part = PondSnapshotWriter::part(R"({"icon":"a\"b\\c"})");
    PondSnapshotWriter writer;
    writer.raw(R"({"list":[)");
    writer.splice(part);
    writer.raw(",");
    writer.splice(part);
    writer.raw(R"(],"name":)");
    writer.string("Алкоголь \"1\"");
    writer.raw("}");
    const json expected = json::parse(R"({"list":[{"icon":"a\"b\\c"},{"icon":"a\"b\\c"}],"name":"Алкоголь \"1\""})");
    const PondSnapshot written = std::move(writer).finish();
    expectAsTheLibraryWrites(written, expected);
    EXPECT_EQ(json::parse(json::parse(EventEnvelope::wrap(written))["payload"].get<std::string>()), expected);
}

// Arbitrary text goes into an envelope only when it is UTF-8, rather than
// half-escaped.
TEST(PondSnapshotWriterTest, TextThatIsNotUTF8_IsRefusedAsByTheJSONLibrary)
{
    PondSnapshotWriter writer;
    EXPECT_THROW(writer.string("caf\xC3"), json::type_error);
    EXPECT_EQ(EventEnvelope::wrap("caf\xC3"), std::nullopt);
}

} // namespace
} // namespace velmora
