#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "VelmoraMac/Platform/Application.h"

namespace velmora {

class SystemNotificationHub;

// An application in memory that a test plays the system for: it delivers
// launch requests, takes the focus away, and reads the alerts shown and
// the terminations asked for. Starts inactive, with the accessory policy a
// library-hosting process has until the shell asks for another.
// Main thread only.
class HeadlessApplication final : public Application {
public:
    struct Alert {
        std::string message;
        std::string informativeText;
        std::string buttonTitle;

        friend bool operator==(const Alert&, const Alert&) = default;
    };

    HeadlessApplication(std::shared_ptr<SystemNotificationHub> notifications, std::int32_t processID);

    [[nodiscard]] std::int32_t processID() const override { return m_processID; }
    void setActivationPolicy(ActivationPolicy policy) override { m_activationPolicy = policy; }
    [[nodiscard]] ActivationPolicy activationPolicy() const override { return m_activationPolicy; }
    [[nodiscard]] bool isActive() const override { return m_active; }
    void activate() override;
    void setLaunchHandler(LaunchHandler handler) override;
    [[nodiscard]] std::optional<LaunchEvent> currentLaunchEvent() const override { return m_currentLaunchEvent; }
    // Records the alert and returns at once, as if dismissed.
    void runModalAlert(
        const std::string& message, const std::string& informativeText, const std::string& buttonTitle) override;
    // Records the request; the process goes on.
    void terminate() override { ++m_terminations; }

    // The system sends `event`: it is current while the handler runs.
    // Without a handler it is lost, as an unhandled request is.
    void deliverLaunchEvent(const LaunchEvent& event);
    // Makes `event` the one being handled, for code that runs inside the
    // handling of a launch (start-up during the first "oapp"), until reset
    // with none.
    void setCurrentLaunchEvent(std::optional<LaunchEvent> event) { m_currentLaunchEvent = std::move(event); }
    // The user switches to another application: reported when it was
    // active. The user coming back is activate(), reported when it was not.
    void resignActive();

    [[nodiscard]] int activations() const { return m_activations; }
    [[nodiscard]] const std::vector<Alert>& alerts() const { return m_alerts; }
    [[nodiscard]] int terminations() const { return m_terminations; }
    [[nodiscard]] bool hasLaunchHandler() const { return static_cast<bool>(m_launchHandler); }

private:
    std::shared_ptr<SystemNotificationHub> m_notifications;
    std::int32_t m_processID;
    ActivationPolicy m_activationPolicy = ActivationPolicy::accessory;
    bool m_active = false;
    int m_activations = 0;
    LaunchHandler m_launchHandler;
    std::optional<LaunchEvent> m_currentLaunchEvent;
    std::vector<Alert> m_alerts;
    int m_terminations = 0;
};

} // namespace velmora
