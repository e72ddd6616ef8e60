// What the renderer waits for: the snapshot and its envelope for a user with
// every topic selected (icons included, from the shipped content), next to a
// plain copy of as many bytes, and one whole noticing through the
// coordinator, the durable write included.

#include <chrono>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "../VelmoraCore/RealisticPracticeState.h"
#include "../VelmoraCore/ScratchFolder.h"
#include "VelmoraCore/PracticeStore.h"
#include "VelmoraMac/ContentCatalog.h"
#include "VelmoraMac/EventEnvelope.h"
#include "VelmoraMac/LoginLaunchControlling.h"
#include "VelmoraMac/Platform/Headless/HeadlessSystemEnvironment.h"
#include "VelmoraMac/PracticeCoordinator.h"
#include "VelmoraMac/ReminderScheduling.h"

namespace velmora {
namespace {

// The reminders and the login item cost nothing here: only the
// coordinator, the store and the snapshot are measured.
class IdleReminders final : public ReminderScheduling {
public:
    [[nodiscard]] const OpenCallback& onOpen() const override { return m_onOpen; }
    void setOnOpen(OpenCallback callback) override { m_onOpen = std::move(callback); }
    [[nodiscard]] const PermissionDeniedCallback& onPermissionDenied() const override { return m_onPermissionDenied; }
    void setOnPermissionDenied(PermissionDeniedCallback callback) override
    {
        m_onPermissionDenied = std::move(callback);
    }
    void schedule(std::shared_ptr<const PracticeState> /*state*/, const std::string& /*title*/,
        const std::string& /*body*/) override
    {
    }
    void request(PermissionCompletion completion) override { completion(true); }

private:
    OpenCallback m_onOpen;
    PermissionDeniedCallback m_onPermissionDenied;
};

class IdleLoginLaunch final : public LoginLaunchControlling {
public:
    [[nodiscard]] bool enabled() const override { return false; }
    [[nodiscard]] bool requiresApproval() const override { return false; }
    void setEnabled(bool /*enable*/) override { }
};

// A long-standing user (three years of days, all seventeen topics) on
// the day after their last practice, with the shipped content.
class LoadedCoordinator {
public:
    LoadedCoordinator()
    {
        const std::filesystem::path url = m_folder / "practice.json";
        PracticeStore seed(url);
        seed.load();
        seed.update([](const PracticeState&) { return bench::realisticPracticeState(bench::threeYearsOfDays); });
        auto system = std::make_shared<HeadlessSystemEnvironment>(
            bench::lastPracticeDay() + std::chrono::hours(36), UserCalendar::utc());
        m_coordinator = std::make_unique<PracticeCoordinator>(
            std::make_shared<const ContentCatalog>(std::filesystem::path(VELMORA_CONTENT_RESOURCE)),
            std::make_unique<PracticeStore>(url), std::make_shared<IdleLoginLaunch>(),
            std::make_shared<IdleReminders>(), [] {}, system);
        m_coordinator->setOnSnapshot(
            [this](const PondSnapshot& snapshot) { m_envelope = EventEnvelope::wrap(snapshot); });
        m_coordinator->load();
    }

    PracticeCoordinator& coordinator() { return *m_coordinator; }
    const std::string& envelope() const { return m_envelope; }

private:
    bench::ScratchFolder m_folder;
    std::unique_ptr<PracticeCoordinator> m_coordinator;
    std::string m_envelope;
};

// `copies` allocations and copies of `source`, the floor a snapshot is
// compared with.
void copyPlainly(const std::string& source, std::int64_t copies)
{
    for (std::int64_t copy = 0; copy < copies; ++copy) {
        std::string target(source.size(), '\0');
        std::memcpy(target.data(), source.data(), source.size());
        benchmark::DoNotOptimize(target.data());
        benchmark::ClobberMemory();
    }
}

// The snapshot and its envelope, and as many plain copies of the envelope's
// bytes timed alongside, so that their ratio is read from one line:
// snapshot_us, copy_us and copies_per_snapshot.
void snapshotAndEnvelope(benchmark::State& state)
{
    using Clock = std::chrono::steady_clock;
    LoadedCoordinator loaded;
    std::size_t bytes = 0;
    const Clock::time_point start = Clock::now();
    for ([[maybe_unused]] auto _ : state) {
        std::string envelope = EventEnvelope::wrap(loaded.coordinator().snapshot());
        bytes = envelope.size();
        benchmark::DoNotOptimize(envelope.data());
    }
    const Clock::duration snapshots = Clock::now() - start;

    // After the loop, outside the benchmark's own timing.
    const Clock::time_point copyStart = Clock::now();
    copyPlainly(loaded.envelope(), state.iterations());
    const Clock::duration copies = Clock::now() - copyStart;

    const auto perIteration = [&state](Clock::duration total) {
        return std::chrono::duration<double, std::micro>(total).count() / static_cast<double>(state.iterations());
    };
    state.counters["envelope_bytes"] = static_cast<double>(bytes);
    state.counters["snapshot_us"] = perIteration(snapshots);
    state.counters["copy_us"] = perIteration(copies);
    state.counters["copies_per_snapshot"] = perIteration(snapshots) / perIteration(copies);
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(bytes));
}
BENCHMARK(snapshotAndEnvelope)->Unit(benchmark::kMicrosecond);

// The floor the snapshot is compared with: allocating and copying the
// envelope's bytes, nothing else.
void plainCopyOfAnEnvelope(benchmark::State& state)
{
    LoadedCoordinator loaded;
    const std::string& source = loaded.envelope();
    for ([[maybe_unused]] auto _ : state)
        copyPlainly(source, 1);
    state.counters["envelope_bytes"] = static_cast<double>(source.size());
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(source.size()));
}
BENCHMARK(plainCopyOfAnEnvelope)->Unit(benchmark::kMicrosecond);

// One noticing as the renderer causes it: the rule, validation, the
// durable write, and the refresh with a new snapshot and envelope.
void noticeThroughTheCoordinator(benchmark::State& state)
{
    LoadedCoordinator loaded;
    for ([[maybe_unused]] auto _ : state) {
        if (!loaded.coordinator().notice("phone"))
            state.SkipWithError("the noticing was not saved");
        benchmark::DoNotOptimize(loaded.envelope());
    }
}
BENCHMARK(noticeThroughTheCoordinator)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace
} // namespace velmora
