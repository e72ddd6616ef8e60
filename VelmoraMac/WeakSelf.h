#pragma once

#include <memory>

namespace velmora {

// Lets callbacks refer to their owner weakly without the owner being held by
// a shared_ptr: the owner keeps a WeakSelf member, callbacks capture weak(),
// and once the owner is destroyed lock() answers null. Meant for objects that
// live and die on the main thread, whose callbacks are also run there.
template <typename Owner> class WeakSelf {
public:
    using Weak = std::weak_ptr<Owner*>;

    explicit WeakSelf(Owner* owner)
        : m_anchor(std::make_shared<Owner*>(owner))
    {
    }
    WeakSelf(const WeakSelf&) = delete;
    WeakSelf& operator=(const WeakSelf&) = delete;
    WeakSelf(WeakSelf&&) = delete;
    WeakSelf& operator=(WeakSelf&&) = delete;
    ~WeakSelf() = default;

    [[nodiscard]] Weak weak() const { return m_anchor; }

    // The owner, or null once it is gone.
    static Owner* lock(const Weak& weak)
    {
        const auto anchor = weak.lock();
        return anchor ? *anchor : nullptr;
    }

private:
    std::shared_ptr<Owner*> m_anchor;
};

} // namespace velmora
