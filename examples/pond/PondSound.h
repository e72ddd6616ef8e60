#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

namespace pond {

// The pond's sounds, made here and played through the desktop's sound
// server: a soft, continuous water while wanted, and a short bell.
//
// Nothing runs while nothing plays: the first sound opens a stream and a
// thread that feeds it; once the water has faded out and the last bell has
// rung out, the thread closes the stream and ends. Without a sound server
// the pond stays silent and says so once on standard error; it tries again
// now and then, quietly, in case one starts later.
//
// Any thread may call; the calls never wait for the sound server.
class PondSound {
public:
    enum class Water : int { off = 0, on = 1 };

    // `client` is the name the sound server shows for the stream.
    explicit PondSound(std::string client = "Pond");
    PondSound(const PondSound&) = delete;
    PondSound& operator=(const PondSound&) = delete;
    PondSound(PondSound&&) = delete;
    PondSound& operator=(PondSound&&) = delete;
    // Stops at once, without a fade.
    ~PondSound();

    // Fades the water in or out.
    void setWater(Water water);
    // Strikes the bell once; strikes close together each ring.
    void ringBell();

    // Whether a stream is open and its thread runs.
    [[nodiscard]] bool playing() const;

private:
    void startLocked();
    void run();

    std::string m_client;
    mutable std::mutex m_mutex;
    std::thread m_thread;
    bool m_running = false;
    bool m_quit = false;
    Water m_water = Water::off;
    int m_strikes = 0;
    bool m_warned = false;
    std::chrono::steady_clock::time_point m_retryAfter{};
};

} // namespace pond
