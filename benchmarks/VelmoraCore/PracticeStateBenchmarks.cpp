#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "RealisticPracticeState.h"
#include "VelmoraCore/PracticeState.h"
#include "VelmoraCore/UserCalendar.h"

namespace velmora {
namespace {

using bench::realisticPracticeState;
using bench::threeYearsOfDays;

// The evening after the last practice day, in a zone east of UTC, so that
// local and UTC dates are worked out separately.
Instant noticingTime()
{
    return bench::lastPracticeDay() + std::chrono::hours(24 + 21);
}

UserCalendar userCalendar()
{
    return UserCalendar::inTimeZone("Europe/Berlin");
}

// Each noticing copies the whole record, so its cost grows with the days of
// practice; the topics take turns so that every lotus is decayed and grown.
void noticeWithEveryTopicSelected(benchmark::State& state)
{
    const PracticeState practice = realisticPracticeState(state.range(0));
    const std::vector<std::string> topics(PracticeState::topicIDs().begin(), PracticeState::topicIDs().end());
    const UserCalendar calendar = userCalendar();
    const Instant now = noticingTime();
    std::size_t next = 0;
    for ([[maybe_unused]] auto _ : state) {
        benchmark::DoNotOptimize(practice.notice(topics[next], now, calendar));
        next = (next + 1) % topics.size();
    }
}
BENCHMARK(noticeWithEveryTopicSelected)->ArgName("days")->Arg(30)->Arg(threeYearsOfDays);

// What the pond snapshot asks for every topic on each refresh.
void growthMomentsOfEveryTopic(benchmark::State& state)
{
    const PracticeState practice = realisticPracticeState(threeYearsOfDays);
    const UserCalendar calendar = userCalendar();
    const Instant now = noticingTime();
    for ([[maybe_unused]] auto _ : state) {
        std::int64_t total = 0;
        for (const std::string& topicID : PracticeState::topicIDs())
            total += practice.growthMoments(topicID, now, calendar);
        benchmark::DoNotOptimize(total);
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(PracticeState::topicIDs().size()));
}
BENCHMARK(growthMomentsOfEveryTopic);

// The host asks for today's key once a second to notice a change of day.
void dayKeyInZone(benchmark::State& state)
{
    const UserCalendar calendar = userCalendar();
    Instant now = noticingTime();
    for ([[maybe_unused]] auto _ : state) {
        benchmark::DoNotOptimize(PracticeState::dayKey(now, calendar));
        now += std::chrono::seconds(1);
    }
}
BENCHMARK(dayKeyInZone);

void encodeLargeState(benchmark::State& state)
{
    const PracticeState practice = realisticPracticeState(state.range(0));
    const auto bytes = static_cast<std::int64_t>(practice.toJSON().size());
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(practice.toJSON());
    state.SetBytesProcessed(state.iterations() * bytes);
    state.counters["bytes"] = static_cast<double>(bytes);
}
BENCHMARK(encodeLargeState)->ArgName("days")->Arg(threeYearsOfDays);

void decodeLargeState(benchmark::State& state)
{
    const std::string text = realisticPracticeState(state.range(0)).toJSON();
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(PracticeState::fromJSON(text));
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
    state.counters["bytes"] = static_cast<double>(text.size());
}
BENCHMARK(decodeLargeState)->ArgName("days")->Arg(threeYearsOfDays);

// Dominated by checking every day key; items are the day keys checked.
void validateLargeState(benchmark::State& state)
{
    const PracticeState practice = realisticPracticeState(state.range(0));
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(&practice.validated());
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(practice.practiceDays.size()));
}
BENCHMARK(validateLargeState)->ArgName("days")->Arg(threeYearsOfDays);

} // namespace
} // namespace velmora
