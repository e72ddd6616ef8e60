#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <utility>

#include "Subscription.h"

namespace velmora {

// A value whose observers hear of every assignment just before it happens,
// with the value to come, so that a view can redraw from the model. Every
// assignment notifies, even one that keeps the value, as the views expect
// from their toolkits.
//
// The value is held as an immutable shared instance, so a large one (the
// practice state) can be handed on and kept by others without a copy.
//
// Main thread only. An observer may cancel subscriptions (its own included)
// or subscribe others while it is being called; those take effect from the
// next assignment.
template <typename Value> class Published {
public:
    using Observer = std::function<void(const Value& upcoming)>;

    explicit Published(Value initial)
        : m_value(std::make_shared<const Value>(std::move(initial)))
    {
    }
    Published(const Published&) = delete;
    Published& operator=(const Published&) = delete;
    Published(Published&&) = delete;
    Published& operator=(Published&&) = delete;
    ~Published() = default;

    [[nodiscard]] const Value& get() const { return *m_value; }
    // The value itself, to keep beyond the next assignment without a copy.
    [[nodiscard]] const std::shared_ptr<const Value>& shared() const { return m_value; }

    void set(Value upcoming) { set(std::make_shared<const Value>(std::move(upcoming))); }

    // `upcoming` must not be null.
    void set(std::shared_ptr<const Value> upcoming)
    {
        // A copy, so that observers may subscribe and cancel while notified.
        const auto observers = *m_observers;
        for (const auto& [identifier, observer] : observers)
            observer(*upcoming);
        m_value = std::move(upcoming);
    }

    // The subscription may outlive this object: cancelling it then does nothing.
    [[nodiscard]] Subscription observe(Observer observer) const
    {
        const std::uint64_t identifier = m_nextIdentifier++;
        m_observers->emplace(identifier, std::move(observer));
        return Subscription([weakObservers = std::weak_ptr<ObserverMap>(m_observers), identifier] {
            if (const auto observers = weakObservers.lock())
                observers->erase(identifier);
        });
    }

private:
    using ObserverMap = std::map<std::uint64_t, Observer>;

    std::shared_ptr<const Value> m_value;
    // Observing is not a change of the value, hence mutable.
    mutable std::shared_ptr<ObserverMap> m_observers = std::make_shared<ObserverMap>();
    mutable std::uint64_t m_nextIdentifier = 0;
};

} // namespace velmora
