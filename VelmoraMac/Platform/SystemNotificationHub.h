#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "VelmoraMac/Platform/SystemNotifications.h"

namespace velmora {

// The observers of system notifications, kept in one place: post() tells
// them at once, on the calling thread (the main thread, as a real centre's
// main queue would). Each platform's services post here for the changes they
// see or make; a headless test posts the ones that come from outside (sleep,
// wake, time zone). Main thread only.
class SystemNotificationHub final : public SystemNotifications {
public:
    SystemNotificationHub();
    SystemNotificationHub(const SystemNotificationHub&) = delete;
    SystemNotificationHub& operator=(const SystemNotificationHub&) = delete;
    SystemNotificationHub(SystemNotificationHub&&) = delete;
    SystemNotificationHub& operator=(SystemNotificationHub&&) = delete;
    ~SystemNotificationHub() override;

    std::unique_ptr<PlatformToken> addObserver(SystemNotification notification, Observer observer) override;

    // Calls the observers of `notification` in the order they were added.
    // Observers added or removed meanwhile count from the next post.
    void post(SystemNotification notification, Window* window = nullptr);

    // The observers of `notification` still installed.
    [[nodiscard]] std::size_t observerCount(SystemNotification notification) const;
    // Every notification posted, in order.
    [[nodiscard]] const std::vector<SystemNotification>& posted() const { return m_posted; }

private:
    struct Entry {
        std::uint64_t id = 0;
        SystemNotification notification{};
        std::shared_ptr<Observer> observer;
    };

    // Shared with the tokens, which may outlive the centre.
    std::shared_ptr<std::vector<Entry>> m_entries;
    std::uint64_t m_nextID = 1;
    std::vector<SystemNotification> m_posted;
};

} // namespace velmora
