#pragma once

namespace velmora {

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
