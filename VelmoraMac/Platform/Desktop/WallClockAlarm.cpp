#include "WallClockAlarm.h"

#include <cerrno>
#include <cstdint>
#include <system_error>
#include <utility>

#include <sys/timerfd.h>
#include <unistd.h>

namespace velmora {

namespace {

// A source that is ready while the timer has something to read.
struct AlarmSource {
    GSource source;
    WallClockAlarm* owner;
    gpointer tag;
};

[[noreturn]] void throwSystemError(const char* operation)
{
    throw std::system_error(errno, std::generic_category(), operation);
}

timespec timespecOf(Instant when)
{
    using namespace std::chrono;
    const milliseconds sinceEpoch = when.time_since_epoch();
    auto seconds = duration_cast<std::chrono::seconds>(sinceEpoch);
    milliseconds rest = sinceEpoch - seconds;
    if (rest < milliseconds::zero()) {
        seconds -= std::chrono::seconds(1);
        rest += std::chrono::seconds(1);
    }
    // An expiry of zero would disarm: the epoch itself rings a nanosecond
    // later, which is as past as it.
    const auto nanoseconds = static_cast<long>(duration_cast<std::chrono::nanoseconds>(rest).count());
    if (seconds.count() <= 0 && nanoseconds == 0)
        return timespec{0, 1};
    return timespec{static_cast<time_t>(seconds.count()), nanoseconds};
}

} // namespace

WallClockAlarm::WallClockAlarm(GMainContext* context, Handler handler)
    : m_fd(::timerfd_create(CLOCK_REALTIME, TFD_NONBLOCK | TFD_CLOEXEC))
    , m_handler(std::move(handler))
{
    if (m_fd < 0)
        throwSystemError("timerfd_create");
    static GSourceFuncs functions
        = {nullptr, &WallClockAlarm::check, &WallClockAlarm::dispatch, nullptr, nullptr, nullptr};
    m_source = SourcePointer::adopt(g_source_new(&functions, sizeof(AlarmSource)));
    auto* source = reinterpret_cast<AlarmSource*>(m_source.get());
    source->owner = this;
    source->tag = g_source_add_unix_fd(m_source.get(), m_fd, G_IO_IN);
    g_source_set_name(m_source.get(), "velmora wall-clock alarm");
    g_source_attach(m_source.get(), context);
}

WallClockAlarm::~WallClockAlarm()
{
    g_source_destroy(m_source.get());
    ::close(m_fd);
}

void WallClockAlarm::arm(Instant when)
{
    itimerspec expiry{};
    expiry.it_value = timespecOf(when);
    if (::timerfd_settime(m_fd, TFD_TIMER_ABSTIME | TFD_TIMER_CANCEL_ON_SET, &expiry, nullptr) != 0)
        throwSystemError("timerfd_settime");
    m_armed = true;
}

void WallClockAlarm::disarm()
{
    const itimerspec stopped{};
    // Disarming an alarm of ours cannot fail; nothing is left to do if it
    // did.
    (void)::timerfd_settime(m_fd, 0, &stopped, nullptr);
    m_armed = false;
}

gboolean WallClockAlarm::check(GSource* source)
{
    const auto* alarm = reinterpret_cast<AlarmSource*>(source);
    return (g_source_query_unix_fd(source, alarm->tag) & G_IO_IN) != 0 ? TRUE : FALSE;
}

gboolean WallClockAlarm::dispatch(GSource* source, GSourceFunc /*callback*/, gpointer /*userData*/)
{
    reinterpret_cast<AlarmSource*>(source)->owner->ring();
    return G_SOURCE_CONTINUE;
}

void WallClockAlarm::ring()
{
    std::uint64_t expirations = 0;
    const ssize_t read = ::read(m_fd, &expirations, sizeof(expirations));
    Reason reason = Reason::due;
    if (read < 0) {
        if (errno != ECANCELED)
            return; // Woken for nothing (EAGAIN): the alarm is still set.
        reason = Reason::clockChanged;
        // The kernel leaves it set for the old reckoning.
        disarm();
    }
    m_armed = false;
    // A copy: the handler may arm again, or replace itself.
    const Handler handler = m_handler;
    if (handler)
        handler(reason);
}

} // namespace velmora
