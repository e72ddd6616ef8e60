#pragma once

#include <optional>
#include <string>

namespace velmora {

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

} // namespace velmora
