#pragma once

#include <memory>
#include <utility>

namespace velmora {

// The handle of a repeating timer on the main thread (MainThread). The timer
// lives exactly as long as the handle: once the handle is destroyed,
// cancelled or assigned over, the tick never runs again and is not running
// on any other thread, so a tick may safely use whatever outlives its
// handle. A tick may destroy its own handle.
class RepeatingTimer {
public:
    // What an implementation hands over. Destroying it stops the timer, with
    // the guarantee above; it may be destroyed on any thread.
    class Registration {
    public:
        Registration() = default;
        Registration(const Registration&) = delete;
        Registration& operator=(const Registration&) = delete;
        Registration(Registration&&) = delete;
        Registration& operator=(Registration&&) = delete;
        virtual ~Registration() = default;
    };

    // A handle without a timer.
    RepeatingTimer() = default;
    explicit RepeatingTimer(std::unique_ptr<Registration> registration)
        : m_registration(std::move(registration))
    {
    }

    void cancel() { m_registration.reset(); }
    [[nodiscard]] bool isActive() const { return m_registration != nullptr; }

private:
    std::unique_ptr<Registration> m_registration;
};

} // namespace velmora
