#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "NotificationRequest.h"

namespace velmora {

// Whether the user lets the application post notifications, with the
// platform's numbering.
enum class NotificationAuthorizationStatus : std::uint8_t {
    // The user has not been asked yet.
    notDetermined = 0,
    denied = 1,
    authorized = 2,
    // Allowed to post quietly until the user decides.
    provisional = 3,
    // Allowed for a limited time.
    ephemeral = 4,
};

// The system's notification centre, as far as the reminders need it: the
// user's permission, the application's pending and delivered
// notifications, and the user's click on one.
//
// As on a real desktop, every answer and every click arrives on a thread of
// the centre's, not the caller's: a caller hops to its own thread (the
// MainThread) before touching its state. The changes themselves take effect
// in the order of the calls, so "remove all pending" followed by "add" never
// removes the added request. Every operation may be called from any thread.
class NotificationCenter {
public:
    using StatusCompletion = std::function<void(NotificationAuthorizationStatus status)>;
    // Only whether permission is granted: a failure to ask counts as a
    // refusal.
    using AuthorizationCompletion = std::function<void(bool granted)>;
    // The error's description, or none when the request was added.
    using AddCompletion = std::function<void(const std::optional<std::string>& error)>;
    // Called when the user clicks a delivered notification of this
    // application. `complete` must be called once, promptly; the platform
    // waits for it, not for the work the handler queues.
    using ClickHandler = std::function<void(const std::string& identifier, const std::function<void()>& complete)>;

    NotificationCenter() = default;
    NotificationCenter(const NotificationCenter&) = delete;
    NotificationCenter& operator=(const NotificationCenter&) = delete;
    NotificationCenter(NotificationCenter&&) = delete;
    NotificationCenter& operator=(NotificationCenter&&) = delete;
    virtual ~NotificationCenter() = default;

    virtual void getAuthorizationStatus(StatusCompletion completion) = 0;
    // Asks the user, if not asked yet, to allow alerts with sound.
    virtual void requestAuthorization(AuthorizationCompletion completion) = 0;
    // Removes the application's notifications already shown to the user.
    virtual void removeAllDelivered() = 0;
    // Removes the application's notifications that have not fired yet.
    virtual void removeAllPending() = 0;
    virtual void add(NotificationRequest request, AddCompletion completion) = 0;
    // Replaces the click handler; an empty one ignores clicks. When this
    // returns, the previous handler is not running on any other thread and
    // will not be called again, so it may capture what dies next.
    virtual void setClickHandler(ClickHandler handler) = 0;
};

// Shows the system settings where the user allows or forbids this
// application's notifications. Main thread only.
class NotificationSettingsOpener {
public:
    NotificationSettingsOpener() = default;
    NotificationSettingsOpener(const NotificationSettingsOpener&) = delete;
    NotificationSettingsOpener& operator=(const NotificationSettingsOpener&) = delete;
    NotificationSettingsOpener(NotificationSettingsOpener&&) = delete;
    NotificationSettingsOpener& operator=(NotificationSettingsOpener&&) = delete;
    virtual ~NotificationSettingsOpener() = default;

    virtual void openNotificationSettings() = 0;
};

} // namespace velmora
