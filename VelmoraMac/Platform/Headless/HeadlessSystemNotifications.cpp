#include "HeadlessSystemNotifications.h"

#include <algorithm>
#include <utility>

namespace velmora {

class HeadlessSystemNotifications::Token final : public PlatformToken {
public:
    Token(std::weak_ptr<std::vector<Entry>> entries, std::uint64_t id)
        : m_entries(std::move(entries))
        , m_id(id)
    {
    }
    Token(const Token&) = delete;
    Token& operator=(const Token&) = delete;
    Token(Token&&) = delete;
    Token& operator=(Token&&) = delete;
    ~Token() override
    {
        if (const auto entries = m_entries.lock())
            std::erase_if(*entries, [this](const Entry& entry) { return entry.id == m_id; });
    }

private:
    std::weak_ptr<std::vector<Entry>> m_entries;
    std::uint64_t m_id;
};

HeadlessSystemNotifications::HeadlessSystemNotifications()
    : m_entries(std::make_shared<std::vector<Entry>>())
{
}

HeadlessSystemNotifications::~HeadlessSystemNotifications() = default;

std::unique_ptr<PlatformToken> HeadlessSystemNotifications::addObserver(SystemNotification notification, Observer observer)
{
    const std::uint64_t id = m_nextID++;
    m_entries->push_back(Entry{id, notification, std::make_shared<Observer>(std::move(observer))});
    return std::make_unique<Token>(m_entries, id);
}

void HeadlessSystemNotifications::post(SystemNotification notification, Window* window)
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

std::size_t HeadlessSystemNotifications::observerCount(SystemNotification notification) const
{
    return static_cast<std::size_t>(std::ranges::count(*m_entries, notification, &Entry::notification));
}

} // namespace velmora
