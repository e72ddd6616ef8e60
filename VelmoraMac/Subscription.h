#pragma once

#include <functional>
#include <utility>

namespace velmora {

// Ends an observation when it goes away, so that no observer outlives what it
// observes or is called after its owner is gone.
class Subscription {
public:
    Subscription() = default;
    explicit Subscription(std::function<void()> cancel)
        : m_cancel(std::move(cancel))
    {
    }
    Subscription(const Subscription&) = delete;
    Subscription& operator=(const Subscription&) = delete;
    Subscription(Subscription&& other) noexcept
        : m_cancel(std::exchange(other.m_cancel, nullptr))
    {
    }
    Subscription& operator=(Subscription&& other) noexcept
    {
        if (this != &other) {
            cancel();
            m_cancel = std::exchange(other.m_cancel, nullptr);
        }
        return *this;
    }
    ~Subscription() { cancel(); }

    void cancel()
    {
        if (auto cancelling = std::exchange(m_cancel, nullptr))
            cancelling();
    }

private:
    std::function<void()> m_cancel;
};

} // namespace velmora
