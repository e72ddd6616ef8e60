#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace velmora {

// How the application presents itself, with the window system's numbers.
enum class ActivationPolicy : std::int32_t {
    // A Dock icon, and windows that can become key.
    regular = 0,
    // No Dock icon, but windows that can become key.
    accessory = 1,
    // Neither.
    prohibited = 2,
};

// A request from the system to open the application, as the platform
// reports it: a first launch ("oapp"), a request to come forward while
// running ("rapp"), and for a first launch an optional property-data
// parameter that says how it was launched ("lgit": as a login item). The
// codes are the window system's own four-character codes.
struct LaunchEvent {
    static constexpr const char* openApplication = "oapp";
    static constexpr const char* reopenApplication = "rapp";
    static constexpr const char* launchedAsLoginItem = "lgit";

    std::string eventID;
    // The enumerated value of the "prdt" parameter; none when absent.
    std::optional<std::string> propertyData;

    friend bool operator==(const LaunchEvent&, const LaunchEvent&) = default;
};

// The running application as the window system sees it: its activation,
// the launch requests the system sends it, a modal alert and termination.
// Main thread only.
class Application {
public:
    using LaunchHandler = std::function<void(const LaunchEvent& event)>;

    Application() = default;
    Application(const Application&) = delete;
    Application& operator=(const Application&) = delete;
    Application(Application&&) = delete;
    Application& operator=(Application&&) = delete;
    virtual ~Application() = default;

    // This process, as the power-management service names it.
    [[nodiscard]] virtual std::int32_t processID() const = 0;

    virtual void setActivationPolicy(ActivationPolicy policy) = 0;
    [[nodiscard]] virtual ActivationPolicy activationPolicy() const = 0;
    // Whether the application owns the user's focus now.
    [[nodiscard]] virtual bool isActive() const = 0;
    // Takes the focus, even from the application that has it.
    virtual void activate() = 0;

    // Receives every open ("oapp") and reopen ("rapp") request from now on,
    // replacing the handler before; an empty one ignores them.
    virtual void setLaunchHandler(LaunchHandler handler) = 0;
    // The request being handled at this moment, so that code running on
    // behalf of a launch can tell how the application was started; none
    // outside the handling of one.
    [[nodiscard]] virtual std::optional<LaunchEvent> currentLaunchEvent() const = 0;

    // Shows a warning with one button and returns when the user has
    // dismissed it.
    virtual void runModalAlert(
        const std::string& message, const std::string& informativeText, const std::string& buttonTitle)
        = 0;
    // Ends the application. The window system may still return here, so a
    // caller that must not continue ends the process itself.
    virtual void terminate() = 0;
};

} // namespace velmora
