#pragma once

#include <functional>
#include <memory>
#include <string>

#include "VelmoraCore/PracticeState.h"

namespace velmora {

// How the coordinator holds its reminder scheduler, so that it can be built
// and tested with any implementation. Main thread only.
class ReminderScheduling {
public:
    using OpenCallback = std::function<void()>;
    using PermissionDeniedCallback = std::function<void(bool denied)>;
    using PermissionCompletion = std::function<void(bool granted)>;

    ReminderScheduling() = default;
    ReminderScheduling(const ReminderScheduling&) = delete;
    ReminderScheduling& operator=(const ReminderScheduling&) = delete;
    ReminderScheduling(ReminderScheduling&&) = delete;
    ReminderScheduling& operator=(ReminderScheduling&&) = delete;
    virtual ~ReminderScheduling() = default;

    // Called on the main thread when the user clicks a delivered reminder.
    [[nodiscard]] virtual const OpenCallback& onOpen() const = 0;
    virtual void setOnOpen(OpenCallback callback) = 0;

    // Told on every applied scheduling pass whether notifications are denied.
    [[nodiscard]] virtual const PermissionDeniedCallback& onPermissionDenied() const = 0;
    virtual void setOnPermissionDenied(PermissionDeniedCallback callback) = 0;

    // Brings the pending daily reminders in line with `state`, which is
    // shared rather than copied since the answer it waits for comes later.
    virtual void schedule(std::shared_ptr<const PracticeState> state, const std::string& title, const std::string& body)
        = 0;

    // Asks the user for permission to post notifications with alert and
    // sound; the answer arrives on the main thread.
    virtual void request(PermissionCompletion completion) = 0;
};

} // namespace velmora
