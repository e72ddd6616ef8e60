#include "ReminderScheduler.h"

#include "VelmoraMac/Platform/MainThread.h"
#include "VelmoraMac/Platform/NotificationRequest.h"

namespace velmora {

ReminderScheduler::ReminderScheduler(std::shared_ptr<NotificationCenter> center, std::shared_ptr<MainThread> mainThread,
    std::shared_ptr<SystemEnvironment> system)
    : m_center(std::move(center))
    , m_mainThread(std::move(mainThread))
    , m_system(std::move(system))
{
}

ReminderScheduler::~ReminderScheduler()
{
    // Once this returns no click handler of ours runs any more.
    m_center->setClickHandler(nullptr);
}

void ReminderScheduler::hop(const std::shared_ptr<MainThread>& mainThread, MainThread::Task task)
{
    try {
        mainThread->submitAsync(std::move(task));
    } catch (const MainThreadStopped&) {
        // The process is shutting down; nobody is left to act on the answer.
    }
}

void ReminderScheduler::becomeClickHandler()
{
    m_center->setClickHandler([weak = m_weakSelf.weak(), mainThread = m_mainThread](
                                  const std::string& /*identifier*/, const std::function<void()>& complete) {
        // Any click on one of our notifications opens the pond; the platform
        // is told at once, without waiting for the pond.
        hop(mainThread, [weak] {
            ReminderScheduler* self = WeakSelf<ReminderScheduler>::lock(weak);
            if (self != nullptr && self->m_onOpen)
                self->m_onOpen();
        });
        complete();
    });
}

void ReminderScheduler::schedule(
    std::shared_ptr<const PracticeState> state, const std::string& title, const std::string& body)
{
    const std::int64_t expectedGeneration = ++m_generation;
    becomeClickHandler();
    m_center->getAuthorizationStatus(
        [weak = m_weakSelf.weak(), mainThread = m_mainThread, expectedGeneration, state = std::move(state), title,
            body](NotificationAuthorizationStatus status) {
            hop(mainThread, [weak, expectedGeneration, state, title, body, status] {
                if (ReminderScheduler* self = WeakSelf<ReminderScheduler>::lock(weak))
                    self->applyPass(expectedGeneration, *state, title, body, status);
            });
        });
}

void ReminderScheduler::applyPass(std::int64_t expectedGeneration, const PracticeState& state, const std::string& title,
    const std::string& body, NotificationAuthorizationStatus status)
{
    // A newer schedule() has been made; its own pass will act.
    if (m_generation != expectedGeneration)
        return;

    const bool authorized = status == NotificationAuthorizationStatus::authorized
        || status == NotificationAuthorizationStatus::provisional;
    const UserCalendar calendar = m_system->currentCalendar();
    const ReminderDecision decision = m_policy.evaluate(state, m_system->now(), calendar,
        authorized ? ReminderPolicy::Authorization::authorized : ReminderPolicy::Authorization::notAuthorized, body);

    if (m_onPermissionDenied)
        m_onPermissionDenied(status == NotificationAuthorizationStatus::denied);
    if (decision.clearDelivered)
        m_center->removeAllDelivered();
    if (!decision.datesToSchedule)
        return;

    m_center->removeAllPending();
    std::size_t position = 0;
    for (const Instant date : *decision.datesToSchedule) {
        NotificationRequest request{
            .identifier = "practice-" + std::to_string(position++),
            .title = title,
            .body = body,
            .sound = NotificationSound::systemDefault,
            .trigger = NotificationTrigger::at(date, calendar),
        };
        m_center->add(std::move(request),
            [weak = m_weakSelf.weak(), mainThread = m_mainThread](const std::optional<std::string>& error) {
                if (!error)
                    return;
                // Forgetting the signature makes the next pass replace every
                // request, even if nothing else changed.
                hop(mainThread, [weak] {
                    if (ReminderScheduler* self = WeakSelf<ReminderScheduler>::lock(weak))
                        self->m_policy.invalidate();
                });
            });
    }
}

void ReminderScheduler::request(PermissionCompletion completion)
{
    becomeClickHandler();
    m_center->requestAuthorization([mainThread = m_mainThread, completion = std::move(completion)](bool granted) {
        hop(mainThread, [completion, granted] {
            if (completion)
                completion(granted);
        });
    });
}

} // namespace velmora
