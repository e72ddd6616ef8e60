#pragma once

#include <cstdint>

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

} // namespace velmora
