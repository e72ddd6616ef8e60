// The pond's sounds as a person would hear them: played through the test
// desktop's sound server (scripts/with-desktop.sh starts one whose sink
// plays into nothing) and recorded from that sink's monitor, then judged by
// their loudness in windows of five milliseconds. Skipped without a sound
// server.

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <pulse/simple.h>

#include "PondFrame.h"
#include "PondSound.h"
#include "VelmoraLibrary.h"

namespace pond {
namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

constexpr std::uint32_t rate = 48'000;
constexpr std::size_t windowFrames = rate / 200;
// The monitor of a sink that plays nothing reads exact zeros; anything
// this loud is a sound.
constexpr double silence = 1e-4;
// What a person would call quiet: the water's loudness in the steady state
// and the bell's peak stay well below full scale.
constexpr double quietLoudness = 0.05;
constexpr double quietPeak = 0.3;

// The loudness of one window of the recording, and when its last sample
// reached the recorder.
struct Window {
    Clock::time_point end;
    double loudness = 0; // root mean square
    double peak = 0;
};

// Records the default sink's monitor on a thread of its own for as long as
// it lives.
class Recorder {
public:
    Recorder()
    {
        const pa_sample_spec spec{PA_SAMPLE_FLOAT32LE, rate, 1};
        const pa_buffer_attr attributes{
            static_cast<std::uint32_t>(-1), 0, 0, 0, static_cast<std::uint32_t>(windowFrames * sizeof(float))};
        m_stream = pa_simple_new(nullptr, "PondTests", PA_STREAM_RECORD, "@DEFAULT_MONITOR@", "what the pond played",
            &spec, nullptr, &attributes, nullptr);
        if (m_stream != nullptr)
            m_thread = std::thread([this] { record(); });
    }
    Recorder(const Recorder&) = delete;
    Recorder& operator=(const Recorder&) = delete;
    Recorder(Recorder&&) = delete;
    Recorder& operator=(Recorder&&) = delete;
    ~Recorder()
    {
        m_stop = true;
        if (m_thread.joinable())
            m_thread.join();
        if (m_stream != nullptr)
            pa_simple_free(m_stream);
    }

    [[nodiscard]] bool connected() const { return m_stream != nullptr; }

    [[nodiscard]] std::vector<Window> windows() const
    {
        const std::scoped_lock lock(m_mutex);
        return m_windows;
    }
    // The windows heard after `since`.
    [[nodiscard]] std::vector<Window> after(Clock::time_point since) const
    {
        std::vector<Window> all = windows();
        std::erase_if(all, [since](const Window& window) { return window.end <= since; });
        return all;
    }

private:
    void record()
    {
        std::vector<float> samples(windowFrames);
        while (!m_stop) {
            if (pa_simple_read(m_stream, samples.data(), samples.size() * sizeof(float), nullptr) < 0)
                return;
            Window window{Clock::now(), 0, 0};
            double sum = 0;
            for (const float sample : samples) {
                sum += static_cast<double>(sample) * sample;
                window.peak = std::max(window.peak, static_cast<double>(std::abs(sample)));
            }
            window.loudness = std::sqrt(sum / static_cast<double>(samples.size()));
            const std::scoped_lock lock(m_mutex);
            m_windows.push_back(window);
        }
    }

    pa_simple* m_stream = nullptr;
    std::thread m_thread;
    std::atomic<bool> m_stop{false};
    mutable std::mutex m_mutex;
    std::vector<Window> m_windows;
};

// Calls `step` until `condition` holds or `limit` has passed; whether it
// held.
bool waitUntil(
    const std::function<bool()>& condition, std::chrono::milliseconds limit,
    const std::function<void()>& step = [] { std::this_thread::sleep_for(5ms); })
{
    const auto deadline = Clock::now() + limit;
    while (!condition()) {
        if (Clock::now() > deadline)
            return false;
        step();
    }
    return true;
}

// The first of `windows` at least `loudness` loud, if any.
std::optional<Window> firstLouder(const std::vector<Window>& windows, double loudness)
{
    const auto found = std::find_if(
        windows.begin(), windows.end(), [loudness](const Window& window) { return window.loudness > loudness; });
    return found == windows.end() ? std::nullopt : std::optional<Window>(*found);
}

double loudestOf(const std::vector<Window>& windows)
{
    double loudest = 0;
    for (const Window& window : windows)
        loudest = std::max(loudest, window.loudness);
    return loudest;
}

// The loudness over the `count` windows from `first` on, as one.
double loudnessOver(const std::vector<Window>& windows, std::size_t first, std::size_t count)
{
    double sum = 0;
    std::size_t used = 0;
    for (std::size_t i = first; i < windows.size() && used < count; ++i, ++used)
        sum += windows[i].loudness * windows[i].loudness;
    return used == 0 ? 0 : std::sqrt(sum / static_cast<double>(used));
}

class PondSoundTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        if (!m_recorder.connected())
            GTEST_SKIP() << "no sound server to record from";
        // Heard silence first: the recording runs and the sink is quiet.
        ASSERT_TRUE(waitUntil([&] { return m_recorder.windows().size() >= 20; }, 5s));
        ASSERT_LT(loudestOf(m_recorder.windows()), silence);
    }

    Recorder m_recorder;
};

TEST_F(PondSoundTest, WaterFadesInWhileWanted_AndAwayWhenNot_ThenItsStreamCloses)
{
    PondSound sound("PondTests");
    EXPECT_FALSE(sound.playing());
    const auto on = Clock::now();
    sound.setWater(PondSound::Water::on);
    // Heard, and then steady: the fade has ended two seconds in.
    ASSERT_TRUE(waitUntil([&] { return firstLouder(m_recorder.after(on), silence).has_value(); }, 3s));
    ASSERT_TRUE(waitUntil([&] { return m_recorder.after(on + 2500ms).size() >= 100; }, 6s));
    const std::vector<Window> heard = m_recorder.after(on);
    const auto start = static_cast<std::size_t>(std::find_if(heard.begin(), heard.end(), [](const Window& window) {
        return window.loudness > silence;
    }) - heard.begin());
    const double steady = loudnessOver(m_recorder.after(on + 2500ms), 0, 100);
    EXPECT_GT(steady, 0.003) << "the water is too faint to hear";
    EXPECT_LT(steady, quietLoudness) << "the water is not quiet";
    // Fading in: its first tenth of a second is far softer than the rest.
    EXPECT_LT(loudnessOver(heard, start, 20), steady / 3);
    // Continuous: no window of the steady water falls silent.
    for (const Window& window : m_recorder.after(on + 2500ms))
        EXPECT_GT(window.loudness, steady / 10);

    const auto off = Clock::now();
    sound.setWater(PondSound::Water::off);
    ASSERT_TRUE(waitUntil(
        [&] {
            const std::vector<Window> after = m_recorder.after(off);
            return after.size() >= 20 && loudnessOver(after, after.size() - 20, 20) < silence;
        },
        4s));
    // Fading out: still heard a little after being told, over in about a
    // second.
    const std::vector<Window> fading = m_recorder.after(off + 150ms);
    EXPECT_GT(loudnessOver(fading, 0, 20), steady / 10);
    EXPECT_TRUE(waitUntil([&] { return !sound.playing(); }, 2s)) << "the stream stays open with nothing to play";

    // Wanted again: a new stream, heard again.
    const auto again = Clock::now();
    sound.setWater(PondSound::Water::on);
    EXPECT_TRUE(waitUntil([&] { return firstLouder(m_recorder.after(again), steady / 10).has_value(); }, 3s));
}

// The library's practice, written before it starts: three topics chosen,
// the bell on and the water off, so that only a bell can be heard.
void seedPractice(const fs::path& dataHome)
{
    fs::create_directories(dataHome / "app.velmora.mac");
    const nlohmann::json state
        = {{"version", 1}, {"onboarded", true}, {"selected", {"doomscrolling", "phone", "smoking"}},
            {"lotuses", {{"smoking", {{"moments", 4}}}}}, {"practiceDays", nlohmann::json::array()},
            {"language", "system"}, {"hintSeen", true}, {"reminderEnabled", false}, {"reminderHour", 20},
            {"reminderMinute", 0}, {"waterSoundEnabled", false}, {"bellSoundEnabled", true}};
    std::ofstream(dataHome / "app.velmora.mac" / "practice.json") << state.dump();
}

TEST_F(PondSoundTest, RingsTheBellSoonAfterASavedNoticing_AndNotForARefusedOne)
{
    std::string pattern = (fs::temp_directory_path() / "pond-sound-XXXXXX").string();
    ASSERT_NE(mkdtemp(pattern.data()), nullptr);
    const fs::path dataHome = pattern;
    seedPractice(dataHome);
    // Read by the library's start, below; no other thread reads the
    // environment yet.
    setenv("XDG_DATA_HOME", dataHome.c_str(), 1); // NOLINT(concurrency-mt-unsafe)
    const VelmoraLibrary library(POND_VELMORA_LIBRARY);
    library.start();
    PondSound sound("PondTests");
    PondFrame frame(library, 1);
    frame.setSound(&sound);
    double seconds = 1;
    const auto advance = [&] {
        seconds += 1.0 / 60;
        frame.advance(seconds, {780, 640});
        std::this_thread::sleep_for(2ms);
    };
    ASSERT_TRUE(waitUntil([&] { return frame.snapshot().has_value(); }, 10s, advance));
    const std::size_t smoking
        = static_cast<std::size_t>(std::find_if(frame.snapshot()->topics.begin(), frame.snapshot()->topics.end(),
                                       [](const PondTopic& topic) { return topic.id == "smoking"; })
            - frame.snapshot()->topics.begin());
    ASSERT_LT(smoking, frame.snapshot()->topics.size());

    // A topic that is not chosen: the library refuses it and sends
    // nothing; half a second of frames later nothing was heard.
    const std::size_t read = frame.snapshotsRead();
    library.notice("alcohol");
    const auto refused = Clock::now();
    ASSERT_TRUE(waitUntil([&] { return m_recorder.after(refused + 500ms).size() >= 1; }, 5s, advance));
    EXPECT_EQ(frame.snapshotsRead(), read);
    EXPECT_LT(loudestOf(m_recorder.after(refused)), silence) << "a refused noticing rang";
    EXPECT_FALSE(sound.playing());

    // A chosen one: saved when the call returns, and rung within 150 ms.
    frame.select(smoking);
    frame.activate();
    const auto saved = Clock::now();
    ASSERT_TRUE(waitUntil([&] { return firstLouder(m_recorder.after(saved), silence).has_value(); }, 3s, advance))
        << "no bell";
    const Window onset = *firstLouder(m_recorder.after(saved), silence);
    EXPECT_LT(onset.end - saved, 150ms);
    EXPECT_EQ(frame.snapshot()->topics[smoking].moments, 5);
    // One soft strike: quiet at its peak, then dying away.
    ASSERT_TRUE(waitUntil([&] { return m_recorder.after(onset.end + 1500ms).size() >= 1; }, 5s, advance));
    const std::vector<Window> bell = m_recorder.after(saved);
    double peak = 0;
    for (const Window& window : bell)
        peak = std::max(peak, window.peak);
    EXPECT_LT(peak, quietPeak);
    EXPECT_LT(loudestOf(m_recorder.after(onset.end + 1400ms)), loudestOf(bell) / 3);
    fs::remove_all(dataHome);
}

} // namespace
} // namespace pond
