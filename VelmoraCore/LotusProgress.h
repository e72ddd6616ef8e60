#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>

namespace velmora {

// How far one topic's lotus has grown. A plain value; the rules that change it
// live with PracticeState.
struct LotusProgress {
    // Upper limit of the growth counter: a lotus at 14 is fully grown.
    static constexpr std::int64_t fullGrowth = 14;

    LotusProgress() = default;
    explicit LotusProgress(std::int64_t initialMoments, std::optional<std::string> initialLastDay = std::nullopt,
        std::optional<std::int64_t> initialGrowthMoments = std::nullopt)
        : moments(initialMoments)
        , lastDay(std::move(initialLastDay))
        , growthMoments(initialGrowthMoments)
    {
    }

    // Every moment ever noticed for the topic; never decays.
    std::int64_t moments = 0;
    // Day key of the last noticing.
    std::optional<std::string> lastDay;
    // Growth counter, 0 to fullGrowth. Older records lack it; `moments`
    // stands in for it then.
    std::optional<std::int64_t> growthMoments;

    // The stored growth counter (or `moments`), limited to 0...fullGrowth,
    // as a fraction from 0.0 to 1.0. No decay is applied here.
    [[nodiscard]] double growth() const;

    // The stored counter limited to 0...fullGrowth, before any decay.
    [[nodiscard]] std::int64_t baseGrowthMoments() const;

    bool operator==(const LotusProgress&) const = default;
};

} // namespace velmora
