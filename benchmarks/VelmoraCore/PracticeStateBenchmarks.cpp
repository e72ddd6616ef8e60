#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <nlohmann/json.hpp>

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
BENCHMARK(noticeWithEveryTopicSelected)->ArgName("days")->Arg(30)->Arg(threeYearsOfDays)->Arg(20000);

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

// Records of a month, three years, ten years, a lifetime of daily practice,
// and far more than anyone practises: the cost of a save and of a noticing
// must stay proportional to the days, with a small factor.
void withPracticeDays(benchmark::internal::Benchmark* benchmark)
{
    benchmark->ArgName("days");
    for (const std::int64_t days :
        {std::int64_t{30}, threeYearsOfDays, std::int64_t{3650}, std::int64_t{20000}, std::int64_t{1000000}})
        benchmark->Arg(days);
}

void setPerDay(benchmark::State& state, const PracticeState& practice)
{
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(practice.practiceDays.size()));
}

void encodeState(benchmark::State& state)
{
    const PracticeState practice = realisticPracticeState(state.range(0));
    const auto bytes = static_cast<std::int64_t>(practice.toJSON().size());
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(practice.toJSON());
    state.SetBytesProcessed(state.iterations() * bytes);
    state.counters["bytes"] = static_cast<double>(bytes);
}
BENCHMARK(encodeState)->Apply(withPracticeDays);

void decodeState(benchmark::State& state)
{
    const std::string text = realisticPracticeState(state.range(0)).toJSON();
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(PracticeState::fromJSON(text));
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
    state.counters["bytes"] = static_cast<double>(text.size());
}
BENCHMARK(decodeState)->Apply(withPracticeDays);

// A file written by hand or by another tool may list its days newest first;
// decoding must not turn quadratic on it.
void decodeStateWithDaysNewestFirst(benchmark::State& state)
{
    const PracticeState practice = realisticPracticeState(state.range(0));
    nlohmann::ordered_json document = nlohmann::ordered_json::parse(practice.toJSON());
    std::vector<std::string> days(practice.practiceDays.rbegin(), practice.practiceDays.rend());
    document["practiceDays"] = days;
    const std::string text = document.dump();
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(PracticeState::fromJSON(text));
    setPerDay(state, practice);
}
BENCHMARK(decodeStateWithDaysNewestFirst)->ArgName("days")->Arg(20000)->Arg(1000000);

// Dominated by checking every day key; items are the day keys checked.
void validateState(benchmark::State& state)
{
    const PracticeState practice = realisticPracticeState(state.range(0));
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(&practice.validated());
    setPerDay(state, practice);
}
BENCHMARK(validateState)->Apply(withPracticeDays);

// Every change starts from a copy of the record.
void copyState(benchmark::State& state)
{
    const PracticeState practice = realisticPracticeState(state.range(0));
    for ([[maybe_unused]] auto _ : state) {
        PracticeState copy = practice;
        benchmark::DoNotOptimize(copy);
    }
    setPerDay(state, practice);
}
BENCHMARK(copyState)->Apply(withPracticeDays);

} // namespace
} // namespace velmora
