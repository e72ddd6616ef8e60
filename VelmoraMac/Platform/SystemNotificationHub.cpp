#include "VelmoraMac/Platform/SystemNotificationHub.h"

#include "VelmoraMac/Platform/PlatformToken.h"

#include <algorithm>
#include <utility>

namespace velmora {

SystemNotificationHub::SystemNotificationHub()
    : m_entries(std::make_shared<std::vector<Entry>>())
{
}

SystemNotificationHub::~SystemNotificationHub() = default;

std::unique_ptr<PlatformToken> SystemNotificationHub::addObserver(SystemNotification notification, Observer observer)
{
    const std::uint64_t id = m_nextID++;
    m_entries->push_back(Entry{id, notification, std::make_shared<Observer>(std::move(observer))});
    return std::make_unique<RemovalToken>([weak = std::weak_ptr<std::vector<Entry>>(m_entries), id] {
        if (const auto entries = weak.lock())
            std::erase_if(*entries, [id](const Entry& entry) { return entry.id == id; });
    });
}

void SystemNotificationHub::post(SystemNotification notification, Window* window)
{
    m_posted.push_back(notification);
    // A copy, so that an observer may add or remove observers while this
    // runs; the shared observers stay alive through their own removal.
    std::vector<std::shared_ptr<Observer>> observers;
    for (const Entry& entry : *m_entries) {
        if (entry.notification == notification && *entry.observer)
            observers.push_back(entry.observer);
    }
    for (const auto& observer : observers)
        (*observer)(window);
}

std::size_t SystemNotificationHub::observerCount(SystemNotification notification) const
{
    return static_cast<std::size_t>(std::ranges::count(*m_entries, notification, &Entry::notification));
}

} // namespace velmora
