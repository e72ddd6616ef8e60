#pragma once

#include <cstdint>
#include <functional>

#include <glib.h>

#include "VelmoraCore/Instant.h"
#include "VelmoraMac/Platform/GLibPointer.h"

namespace velmora {

// Rings once at a wall-clock instant, on the thread iterating a GLib
// context: what a reminder waiting for its minute needs. GLib's own
// timeouts follow a monotonic clock that stands still while the machine
// sleeps, so a timeout set for 20:00 before a suspend would ring late; this
// is a timerfd on the real-time clock with an absolute expiry, which the
// kernel fires at the right wall-clock time after a resume and also
// interrupts when the clock is set, so that the owner can work out its
// instants again (a corrected clock, or a new time zone that moves the
// minute the user chose).
// Main thread only: the thread iterating the context.
class WallClockAlarm {
public:
    enum class Reason : std::uint8_t {
        // The instant has come; the alarm is disarmed.
        due,
        // The system clock was set while armed; the alarm is disarmed and
        // the owner arms it anew.
        clockChanged,
    };
    using Handler = std::function<void(Reason reason)>;

    // Attaches to `context`. Throws std::system_error when the kernel
    // gives no timer.
    WallClockAlarm(GMainContext* context, Handler handler);
    WallClockAlarm(const WallClockAlarm&) = delete;
    WallClockAlarm& operator=(const WallClockAlarm&) = delete;
    WallClockAlarm(WallClockAlarm&&) = delete;
    WallClockAlarm& operator=(WallClockAlarm&&) = delete;
    // Detaches: the handler is not called again.
    ~WallClockAlarm();

    // Rings at `when`, replacing any instant set before; an instant already
    // past rings on the next iteration. Throws std::system_error when the
    // kernel refuses.
    void arm(Instant when);
    void disarm();
    [[nodiscard]] bool armed() const { return m_armed; }

private:
    using SourcePointer = GLibPointer<GSource, g_source_ref, g_source_unref>;

    static gboolean check(GSource* source);
    static gboolean dispatch(GSource* source, GSourceFunc callback, gpointer userData);
    void ring();

    int m_fd = -1;
    SourcePointer m_source;
    Handler m_handler;
    bool m_armed = false;
};

} // namespace velmora
