#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "VelmoraMac/Platform/NotificationCenter.h"

namespace velmora {

// A notification centre in memory, with the knobs a test needs to play the
// user and the system: the permission, the clock that makes requests fire,
// failing adds and clicks.
//
// Changes apply during the call; answers and clicks come in call order on
// the centre's own thread, which a test can hold back and wait for. An
// exception escaping an answer or a click handler ends the process, as it
// would on a platform thread. Pending requests fire when the clock set here
// reaches their trigger; a trigger at or before the clock when it is added
// never fires, as a wall-clock trigger for a past minute never matches.
// A clicked notification leaves the delivered list. Thread-safe.
class HeadlessNotificationCenter final : public NotificationCenter {
public:
    // What the user answers when first asked for permission.
    enum class PromptAnswer : std::uint8_t {
        grant,
        deny,
    };

    // How often each operation was asked for, failed adds included.
    struct Counts {
        int statusQueries = 0;
        int authorizationRequests = 0;
        int deliveredRemovals = 0;
        int pendingRemovals = 0;
        int adds = 0;
        int completedClicks = 0;

        bool operator==(const Counts&) const = default;
    };

    // Permission not determined yet, a first request granted, nothing
    // pending, answers flowing.
    explicit HeadlessNotificationCenter(Instant now = Instant());
    HeadlessNotificationCenter(const HeadlessNotificationCenter&) = delete;
    HeadlessNotificationCenter& operator=(const HeadlessNotificationCenter&) = delete;
    HeadlessNotificationCenter(HeadlessNotificationCenter&&) = delete;
    HeadlessNotificationCenter& operator=(HeadlessNotificationCenter&&) = delete;
    // Delivers the answers still queued, held or not, then ends its thread.
    // Not from inside an answer.
    ~HeadlessNotificationCenter() override;

    void getAuthorizationStatus(StatusCompletion completion) override;
    // Settles a status that is not determined with the prompt answer; grants
    // when the status then allows posting (authorized, provisional or
    // ephemeral).
    void requestAuthorization(AuthorizationCompletion completion) override;
    void removeAllDelivered() override;
    void removeAllPending() override;
    // Fails, keeping nothing, for an identifier set to fail and for a
    // trigger that names no time.
    void add(NotificationRequest request, AddCompletion completion) override;
    void setClickHandler(ClickHandler handler) override;

    void setAuthorizationStatus(NotificationAuthorizationStatus status);
    [[nodiscard]] NotificationAuthorizationStatus authorizationStatus() const;
    void setPromptAnswer(PromptAnswer answer);

    // Adding a request with `identifier` fails with `error` until cleared.
    void setAddFailure(const std::string& identifier, std::string error);
    void clearAddFailures();

    [[nodiscard]] Instant now() const;
    // Moves the clock (either way); requests whose trigger it reaches fire,
    // in the order of their triggers.
    void setNow(Instant now);
    void advance(std::chrono::milliseconds duration);

    // In the order they were added.
    [[nodiscard]] std::vector<NotificationRequest> pendingRequests() const;
    // In the order they fired.
    [[nodiscard]] std::vector<NotificationRequest> deliveredRequests() const;
    [[nodiscard]] Counts counts() const;

    // The user clicks the delivered notification `identifier`; the click
    // handler hears of it on the centre's thread. Throws
    // std::invalid_argument when no such notification is delivered.
    void click(const std::string& identifier);

    // Answers and clicks wait until released.
    void holdAnswers();
    void releaseAnswers();
    // Blocks until every answer and click queued so far has been delivered
    // and its handler has returned. Throws std::logic_error when answers are
    // held back, and on the centre's own thread.
    void waitUntilIdle();

private:
    struct Pending {
        NotificationRequest request;
        // None for a trigger that will never come.
        std::optional<Instant> firesAt;
        std::uint64_t order = 0;
    };

    void answer(std::function<void()> answer);
    void deliverClick(const std::string& identifier);
    void deliverDueRequests();
    void work() noexcept;

    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<std::function<void()>> m_answers;
    bool m_held = false;
    bool m_stopping = false;
    bool m_answering = false;
    bool m_clicking = false;

    NotificationAuthorizationStatus m_status = NotificationAuthorizationStatus::notDetermined;
    PromptAnswer m_promptAnswer = PromptAnswer::grant;
    std::map<std::string, std::string, std::less<>> m_addFailures;
    Instant m_now;
    std::vector<Pending> m_pending;
    std::uint64_t m_nextOrder = 0;
    std::vector<NotificationRequest> m_delivered;
    Counts m_counts;
    ClickHandler m_clickHandler;

    // Last: it starts once everything above is ready.
    std::thread m_worker;
};

// Counts the requests to show the notification settings. Thread-safe.
class HeadlessNotificationSettingsOpener final : public NotificationSettingsOpener {
public:
    void openNotificationSettings() override { ++m_openings; }

    [[nodiscard]] int openings() const { return m_openings; }

private:
    std::atomic<int> m_openings{0};
};

} // namespace velmora
