#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "ReminderScheduling.h"
#include "VelmoraCore/ReminderPolicy.h"
#include "VelmoraMac/Platform/MainThread.h"
#include "VelmoraMac/Platform/NotificationCenter.h"
#include "VelmoraMac/Platform/SystemEnvironment.h"
#include "WeakSelf.h"

namespace velmora {

// The only code that talks to the notification centre: asks for permission,
// keeps the pending daily reminders ("practice-0", "practice-1", ...) in
// line with the state as the ReminderPolicy decides, reports denial, and
// turns a click on a delivered reminder into onOpen().
//
// Main thread only. Every answer of the centre arrives on a thread of its
// own and hops to the main thread before it touches anything here. Instead
// of cancelling, each schedule() starts a new generation, and an answer
// that belongs to an older one does nothing at all.
class ReminderScheduler final : public ReminderScheduling {
public:
    ReminderScheduler(std::shared_ptr<NotificationCenter> center, std::shared_ptr<MainThread> mainThread,
        std::shared_ptr<SystemEnvironment> system);
    ReminderScheduler(const ReminderScheduler&) = delete;
    ReminderScheduler& operator=(const ReminderScheduler&) = delete;
    ReminderScheduler(ReminderScheduler&&) = delete;
    ReminderScheduler& operator=(ReminderScheduler&&) = delete;
    ~ReminderScheduler() override;

    [[nodiscard]] const OpenCallback& onOpen() const override { return m_onOpen; }
    void setOnOpen(OpenCallback callback) override { m_onOpen = std::move(callback); }
    [[nodiscard]] const PermissionDeniedCallback& onPermissionDenied() const override { return m_onPermissionDenied; }
    void setOnPermissionDenied(PermissionDeniedCallback callback) override
    {
        m_onPermissionDenied = std::move(callback);
    }

    void schedule(
        std::shared_ptr<const PracticeState> state, const std::string& title, const std::string& body) override;
    void request(PermissionCompletion completion) override;

private:
    using Weak = WeakSelf<ReminderScheduler>::Weak;

    // Makes this scheduler the receiver of clicks, as on every call.
    void becomeClickHandler();
    void applyPass(std::int64_t expectedGeneration, const PracticeState& state, const std::string& title,
        const std::string& body, NotificationAuthorizationStatus status);
    // Queues `task` on the main thread from one of the centre's threads.
    static void hop(const std::shared_ptr<MainThread>& mainThread, MainThread::Task task);

    std::shared_ptr<NotificationCenter> m_center;
    std::shared_ptr<MainThread> m_mainThread;
    std::shared_ptr<SystemEnvironment> m_system;
    ReminderPolicy m_policy;
    std::int64_t m_generation = 0;
    OpenCallback m_onOpen;
    PermissionDeniedCallback m_onPermissionDenied;
    WeakSelf<ReminderScheduler> m_weakSelf{this};
};

} // namespace velmora
