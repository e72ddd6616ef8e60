#include <cstdint>
#include <exception>
#include <filesystem>
#include <optional>
#include <string>

#include <benchmark/benchmark.h>

#include "VelmoraCore/DurableFile.h"
#include "VelmoraMac/ContentCatalog.h"

namespace velmora {
namespace {

constexpr const char* shippedContent = VELMORA_CONTENT_RESOURCE;

// Google Benchmark has no way to report a thrown error; this turns one into
// a skipped benchmark with the error's text instead of an aborted program.
template <typename Body> void skippingOnError(benchmark::State& state, Body&& body)
{
    try {
        body();
    } catch (const std::exception& error) {
        state.SkipWithError(error.what());
    }
}

// Start-up: read, decode and validate the shipped content file and resolve
// its lookups. Read once, before the first frame.
void contentCatalogLoad(benchmark::State& state)
{
    skippingOnError(state, [&state] {
        for (auto _ : state)
            benchmark::DoNotOptimize(ContentCatalog(shippedContent));
        state.SetBytesProcessed(
            state.iterations() * static_cast<std::int64_t>(std::filesystem::file_size(shippedContent)));
    });
}
BENCHMARK(contentCatalogLoad)->Unit(benchmark::kMillisecond)->UseRealTime();

// The same without the file system: the share of decoding and validation.
void contentCatalogFromJSON(benchmark::State& state)
{
    skippingOnError(state, [&state] {
        const std::string bytes = DurableFile::read(shippedContent);
        for (auto _ : state)
            benchmark::DoNotOptimize(ContentCatalog::fromJSON(bytes));
        state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(bytes.size()));
    });
}
BENCHMARK(contentCatalogFromJSON)->Unit(benchmark::kMillisecond)->UseRealTime();

// Lookups that every snapshot makes: a plain text, a text with "{count}" and
// one for a language that falls back to English.
void contentCatalogText(
    benchmark::State& state, const char* key, const char* language, std::optional<std::int64_t> count)
{
    skippingOnError(state, [&] {
        const ContentCatalog catalog(shippedContent);
        for (auto _ : state)
            benchmark::DoNotOptimize(catalog.text(key, language, count));
    });
}
BENCHMARK_CAPTURE(contentCatalogText, plain, "notice", "fr", std::nullopt);
BENCHMARK_CAPTURE(contentCatalogText, longPlain, "hintBody", "fr", std::nullopt);
BENCHMARK_CAPTURE(contentCatalogText, count, "days", "fr", 1234);
BENCHMARK_CAPTURE(contentCatalogText, builtIn, "quitApp", "fr", std::nullopt);
BENCHMARK_CAPTURE(contentCatalogText, englishFallback, "days", "de", 1234);

} // namespace
} // namespace velmora
