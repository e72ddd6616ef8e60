#include "HeadlessNotificationCenter.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace velmora {

HeadlessNotificationCenter::HeadlessNotificationCenter(Instant now)
    : m_now(now)
    , m_worker([this] { work(); })
{
}

HeadlessNotificationCenter::~HeadlessNotificationCenter()
{
    {
        const std::scoped_lock lock(m_mutex);
        m_stopping = true;
    }
    m_changed.notify_all();
    m_worker.join();
}

void HeadlessNotificationCenter::getAuthorizationStatus(StatusCompletion completion)
{
    {
        const std::scoped_lock lock(m_mutex);
        ++m_counts.statusQueries;
    }
    // Read when answering, as a real centre would, so that a test may change
    // the status while answers are held.
    answer([this, completion = std::move(completion)] {
        NotificationAuthorizationStatus status = NotificationAuthorizationStatus::notDetermined;
        {
            const std::scoped_lock lock(m_mutex);
            status = m_status;
        }
        if (completion)
            completion(status);
    });
}

void HeadlessNotificationCenter::requestAuthorization(AuthorizationCompletion completion)
{
    {
        const std::scoped_lock lock(m_mutex);
        ++m_counts.authorizationRequests;
    }
    answer([this, completion = std::move(completion)] {
        bool granted = false;
        {
            const std::scoped_lock lock(m_mutex);
            if (m_status == NotificationAuthorizationStatus::notDetermined)
                m_status = m_promptAnswer == PromptAnswer::grant ? NotificationAuthorizationStatus::authorized
                                                                 : NotificationAuthorizationStatus::denied;
            granted = m_status == NotificationAuthorizationStatus::authorized
                || m_status == NotificationAuthorizationStatus::provisional
                || m_status == NotificationAuthorizationStatus::ephemeral;
        }
        if (completion)
            completion(granted);
    });
}

void HeadlessNotificationCenter::removeAllDelivered()
{
    const std::scoped_lock lock(m_mutex);
    ++m_counts.deliveredRemovals;
    m_delivered.clear();
}

void HeadlessNotificationCenter::removeAllPending()
{
    const std::scoped_lock lock(m_mutex);
    ++m_counts.pendingRemovals;
    m_pending.clear();
}

void HeadlessNotificationCenter::add(NotificationRequest request, AddCompletion completion)
{
    const std::optional<Instant> firesAt = request.trigger.instant();
    std::optional<std::string> error;
    {
        const std::scoped_lock lock(m_mutex);
        ++m_counts.adds;
        if (const auto failure = m_addFailures.find(request.identifier); failure != m_addFailures.end()) {
            error = failure->second;
        } else if (!firesAt) {
            error = "the trigger of \"" + request.identifier + "\" names no time";
        } else {
            std::erase_if(
                m_pending, [&](const Pending& pending) { return pending.request.identifier == request.identifier; });
            m_pending.push_back({std::move(request), *firesAt > m_now ? firesAt : std::nullopt, m_nextOrder++});
        }
    }
    answer([completion = std::move(completion), error = std::move(error)] {
        if (completion)
            completion(error);
    });
}

void HeadlessNotificationCenter::setClickHandler(ClickHandler handler)
{
    ClickHandler previous;
    {
        std::unique_lock lock(m_mutex);
        previous = std::exchange(m_clickHandler, std::move(handler));
        // The centre's thread replacing the handler from inside a click
        // cannot wait for itself; that click is already under way.
        if (std::this_thread::get_id() != m_worker.get_id())
            m_changed.wait(lock, [this] { return !m_clicking; });
    }
}

void HeadlessNotificationCenter::setAuthorizationStatus(NotificationAuthorizationStatus status)
{
    const std::scoped_lock lock(m_mutex);
    m_status = status;
}

NotificationAuthorizationStatus HeadlessNotificationCenter::authorizationStatus() const
{
    const std::scoped_lock lock(m_mutex);
    return m_status;
}

void HeadlessNotificationCenter::setPromptAnswer(PromptAnswer answer)
{
    const std::scoped_lock lock(m_mutex);
    m_promptAnswer = answer;
}

void HeadlessNotificationCenter::setAddFailure(const std::string& identifier, std::string error)
{
    const std::scoped_lock lock(m_mutex);
    m_addFailures.insert_or_assign(identifier, std::move(error));
}

void HeadlessNotificationCenter::clearAddFailures()
{
    const std::scoped_lock lock(m_mutex);
    m_addFailures.clear();
}

Instant HeadlessNotificationCenter::now() const
{
    const std::scoped_lock lock(m_mutex);
    return m_now;
}

void HeadlessNotificationCenter::setNow(Instant now)
{
    const std::scoped_lock lock(m_mutex);
    m_now = now;
    deliverDueRequests();
}

void HeadlessNotificationCenter::advance(std::chrono::milliseconds duration)
{
    const std::scoped_lock lock(m_mutex);
    m_now += duration;
    deliverDueRequests();
}

std::vector<NotificationRequest> HeadlessNotificationCenter::pendingRequests() const
{
    const std::scoped_lock lock(m_mutex);
    std::vector<NotificationRequest> requests;
    requests.reserve(m_pending.size());
    for (const Pending& pending : m_pending)
        requests.push_back(pending.request);
    return requests;
}

std::vector<NotificationRequest> HeadlessNotificationCenter::deliveredRequests() const
{
    const std::scoped_lock lock(m_mutex);
    return m_delivered;
}

HeadlessNotificationCenter::Counts HeadlessNotificationCenter::counts() const
{
    const std::scoped_lock lock(m_mutex);
    return m_counts;
}

void HeadlessNotificationCenter::click(const std::string& identifier)
{
    {
        const std::scoped_lock lock(m_mutex);
        const auto clicked = std::find_if(m_delivered.begin(), m_delivered.end(),
            [&](const NotificationRequest& request) { return request.identifier == identifier; });
        if (clicked == m_delivered.end())
            throw std::invalid_argument("no delivered notification \"" + identifier + "\" to click");
        m_delivered.erase(clicked);
    }
    answer([this, identifier] { deliverClick(identifier); });
}

void HeadlessNotificationCenter::holdAnswers()
{
    const std::scoped_lock lock(m_mutex);
    m_held = true;
}

void HeadlessNotificationCenter::releaseAnswers()
{
    {
        const std::scoped_lock lock(m_mutex);
        m_held = false;
    }
    m_changed.notify_all();
}

void HeadlessNotificationCenter::waitUntilIdle()
{
    std::unique_lock lock(m_mutex);
    if (std::this_thread::get_id() == m_worker.get_id())
        throw std::logic_error("the notification centre's thread cannot wait for itself");
    if (m_held && !m_answers.empty())
        throw std::logic_error("the notification centre's answers are held back");
    m_changed.wait(lock, [this] { return m_answers.empty() && !m_answering; });
}

void HeadlessNotificationCenter::answer(std::function<void()> answer)
{
    {
        const std::scoped_lock lock(m_mutex);
        m_answers.push_back(std::move(answer));
    }
    m_changed.notify_all();
}

void HeadlessNotificationCenter::deliverClick(const std::string& identifier)
{
    ClickHandler handler;
    {
        const std::scoped_lock lock(m_mutex);
        handler = m_clickHandler;
        m_clicking = true;
    }
    const std::function<void()> complete = [this] {
        const std::scoped_lock lock(m_mutex);
        ++m_counts.completedClicks;
    };
    if (handler)
        handler(identifier, complete);
    else
        complete();
    // The handler's copy goes before the click counts as over, so that
    // setClickHandler() can promise nothing of the old handler is left.
    handler = nullptr;
    {
        const std::scoped_lock lock(m_mutex);
        m_clicking = false;
    }
    m_changed.notify_all();
}

void HeadlessNotificationCenter::deliverDueRequests()
{
    std::vector<Pending> due;
    std::vector<Pending> waiting;
    for (Pending& pending : m_pending)
        (pending.firesAt && *pending.firesAt <= m_now ? due : waiting).push_back(std::move(pending));
    m_pending = std::move(waiting);
    std::sort(due.begin(), due.end(), [](const Pending& a, const Pending& b) {
        return *a.firesAt != *b.firesAt ? *a.firesAt < *b.firesAt : a.order < b.order;
    });
    for (Pending& fired : due) {
        std::erase_if(m_delivered,
            [&](const NotificationRequest& delivered) { return delivered.identifier == fired.request.identifier; });
        m_delivered.push_back(std::move(fired.request));
    }
}

void HeadlessNotificationCenter::work() noexcept
{
    std::unique_lock lock(m_mutex);
    for (;;) {
        m_changed.wait(lock, [this] { return m_stopping || (!m_held && !m_answers.empty()); });
        if (m_answers.empty())
            return;
        std::function<void()> next = std::move(m_answers.front());
        m_answers.pop_front();
        m_answering = true;
        lock.unlock();
        next();
        next = nullptr;
        lock.lock();
        m_answering = false;
        m_changed.notify_all();
    }
}

} // namespace velmora
