#include "PondSound.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <numbers>
#include <utility>
#include <vector>

#include <pulse/error.h>
#include <pulse/simple.h>

namespace pond {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::uint32_t rate = 48'000;
// Ten milliseconds a block, fifty queued at the server: short enough that
// a bell follows its noticing at once, long enough to ride out a busy
// moment of the machine.
constexpr std::size_t blockFrames = rate / 100;
constexpr std::uint32_t queuedFrames = rate / 20;
constexpr double fadeInSeconds = 1.6;
constexpr double fadeOutSeconds = 1.0;
// After a failed connection, how long the pond stays silent before it
// quietly looks for a sound server again.
constexpr auto retryPause = std::chrono::seconds(30);
constexpr double tau = 2 * std::numbers::pi;

// A cheap, good-enough source of white noise in -1...1.
class Noise {
public:
    float next()
    {
        m_state ^= m_state << 13U;
        m_state ^= m_state >> 7U;
        m_state ^= m_state << 17U;
        return static_cast<float>(static_cast<double>(m_state >> 11U) * 0x1.0p-52 - 1.0);
    }
    // Uniform in 0...1.
    double uniform() { return 0.5 * (static_cast<double>(next()) + 1); }

private:
    std::uint64_t m_state = 0x9E3779B97F4A7C15ULL;
};

// Water over stones: a low, brown rumble, a band of hiss whose pitch and
// loudness wander slowly, and now and then a small bubble, a sine that
// rises as it fades. Quiet: about -36 dBFS.
class Brook {
public:
    float next()
    {
        const float white = m_noise.next();
        m_brown += (white - m_brown) * 0.02F;

        // The hiss's band drifts between about 0.7 and 2.2 kHz.
        m_drift += (m_noise.next() * 0.5F - m_drift) * 0.00004F;
        const double centre = 1400 + 750 * std::tanh(4 * static_cast<double>(m_drift));
        const auto f = static_cast<float>(2 * std::sin(std::numbers::pi * centre / rate));
        m_low += f * m_band;
        const float high = white - m_low - 0.9F * m_band;
        m_band += f * high;
        m_swell += (m_noise.next() * 0.5F + 0.5F - m_swell) * 0.00003F;

        float bubbles = 0;
        if (m_noise.uniform() < 5.0 / rate)
            strike();
        for (Bubble& bubble : m_bubbles) {
            if (bubble.amplitude < 1e-4)
                continue;
            bubble.phase += tau * bubble.frequency / rate;
            bubble.frequency *= bubble.rise;
            bubble.amplitude *= bubble.decay;
            bubbles += static_cast<float>(bubble.amplitude * std::sin(bubble.phase));
        }
        return 0.05F * m_brown + 0.010F * (0.5F + m_swell) * m_band + bubbles;
    }

private:
    struct Bubble {
        double phase = 0;
        double frequency = 0;
        double rise = 1;
        double amplitude = 0;
        double decay = 1;
    };

    void strike()
    {
        Bubble& bubble = m_bubbles[m_nextBubble++ % m_bubbles.size()];
        bubble.phase = 0;
        bubble.frequency = 500 + 900 * m_noise.uniform();
        bubble.rise = 1 + 0.000025 * (1 + m_noise.uniform());
        // Starting at a zero of the sine, and soft, it does not click.
        bubble.amplitude = 0.004 + 0.006 * m_noise.uniform();
        bubble.decay = std::exp(-1 / ((0.02 + 0.04 * m_noise.uniform()) * rate));
    }

    Noise m_noise;
    float m_brown = 0;
    float m_drift = 0;
    float m_low = 0;
    float m_band = 0;
    float m_swell = 0.5F;
    std::array<Bubble, 4> m_bubbles{};
    std::size_t m_nextBubble = 0;
};

// A small bowl bell: a handful of inharmonic partials, each dying away at
// its own pace, the low hum last. The strike rises over a few
// milliseconds, as a soft mallet does, so it never clicks.
class Bell {
public:
    static constexpr double fundamental = 587.3; // D5
    static constexpr std::size_t ringFrames = 7 * rate; // seven seconds

    [[nodiscard]] bool ringing() const { return m_age < ringFrames; }

    float next()
    {
        if (!ringing())
            return 0;
        const double seconds = static_cast<double>(m_age++) / rate;
        const double attack = seconds < 0.004 ? 0.5 - 0.5 * std::cos(std::numbers::pi * seconds / 0.004) : 1;
        double sum = 0;
        for (std::size_t i = 0; i < partials.size(); ++i) {
            const Partial& partial = partials[i];
            sum += partial.amplitude * std::exp(-seconds / partial.decay) * std::sin(m_phase[i]);
            m_phase[i] = std::fmod(m_phase[i] + tau * fundamental * partial.ratio / rate, tau);
        }
        return static_cast<float>(0.045 * attack * sum);
    }

private:
    struct Partial {
        double ratio;
        double amplitude;
        double decay; // seconds to fall to 1/e
    };
    static constexpr std::array<Partial, 8> partials = {{
        {0.5, 0.35, 1.3},
        {1.0, 1.0, 1.0},
        {1.19, 0.45, 0.8},
        {1.5, 0.28, 0.6},
        {2.0, 0.32, 0.5},
        {2.52, 0.16, 0.35},
        {2.98, 0.12, 0.3},
        {4.07, 0.06, 0.2},
    }};

    std::size_t m_age = 0;
    std::array<double, partials.size()> m_phase{};
};

} // namespace

PondSound::PondSound(std::string client)
    : m_client(std::move(client))
{
}

PondSound::~PondSound()
{
    {
        const std::scoped_lock lock(m_mutex);
        m_quit = true;
    }
    if (m_thread.joinable())
        m_thread.join();
}

void PondSound::setWater(Water water)
{
    const std::scoped_lock lock(m_mutex);
    if (m_water == water)
        return;
    m_water = water;
    if (water == Water::on)
        startLocked();
}

void PondSound::ringBell()
{
    const std::scoped_lock lock(m_mutex);
    ++m_strikes;
    startLocked();
}

bool PondSound::playing() const
{
    const std::scoped_lock lock(m_mutex);
    return m_running;
}

void PondSound::startLocked()
{
    if (m_running || m_quit || Clock::now() < m_retryAfter)
        return;
    // A thread that has decided to end touches nothing shared any more; it
    // only closes its stream.
    if (m_thread.joinable())
        m_thread.join();
    m_running = true;
    m_thread = std::thread(&PondSound::run, this);
}

void PondSound::run()
{
    const pa_sample_spec spec{PA_SAMPLE_FLOAT32LE, rate, 1};
    constexpr std::uint32_t frameBytes = sizeof(float);
    const pa_buffer_attr attributes{static_cast<std::uint32_t>(-1), queuedFrames * frameBytes,
        static_cast<std::uint32_t>(-1), blockFrames * frameBytes, static_cast<std::uint32_t>(-1)};
    int error = 0;
    pa_simple* stream = pa_simple_new(
        nullptr, m_client.c_str(), PA_STREAM_PLAYBACK, nullptr, "Water and bell", &spec, nullptr, &attributes, &error);
    if (stream == nullptr) {
        const std::scoped_lock lock(m_mutex);
        if (!m_warned)
            std::fprintf(stderr, "pond: no sound server (%s); the pond stays silent\n", pa_strerror(error));
        m_warned = true;
        m_retryAfter = Clock::now() + retryPause;
        m_strikes = 0;
        m_running = false;
        return;
    }

    Brook brook;
    std::vector<Bell> bells;
    double gain = 0; // 0...1, shaped below
    std::array<float, blockFrames> block{};
    for (;;) {
        Water wanted = Water::off;
        {
            const std::scoped_lock lock(m_mutex);
            for (; m_strikes > 0; --m_strikes)
                bells.emplace_back();
            std::erase_if(bells, [](const Bell& bell) { return !bell.ringing(); });
            wanted = m_water;
            if (m_quit || (wanted == Water::off && gain <= 0 && bells.empty())) {
                m_running = false;
                break;
            }
        }
        const double step = wanted == Water::on ? 1 / (fadeInSeconds * rate) : -1 / (fadeOutSeconds * rate);
        for (float& sample : block) {
            gain = std::clamp(gain + step, 0.0, 1.0);
            // Smooth at both ends of the fade: no corner for the ear to hear.
            const double shaped = gain * gain * (3 - 2 * gain);
            float mixed = shaped > 0 ? static_cast<float>(shaped) * brook.next() : 0;
            for (Bell& bell : bells)
                mixed += bell.next();
            sample = mixed;
        }
        if (pa_simple_write(stream, block.data(), sizeof block, &error) < 0) {
            const std::scoped_lock lock(m_mutex);
            std::fprintf(stderr, "pond: the sound server went away (%s); the pond stays silent\n", pa_strerror(error));
            m_warned = true;
            m_retryAfter = Clock::now() + retryPause;
            m_running = false;
            break;
        }
    }
    // What is still queued is the end of a fade or a bell's last breath,
    // below hearing: it need not be waited for.
    pa_simple_free(stream);
}

} // namespace pond
