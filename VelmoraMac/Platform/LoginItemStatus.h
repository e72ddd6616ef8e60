#pragma once

#include <cstdint>

namespace velmora {

// The application's registration as a login item, with the platform's
// numbering. Only `enabled` and `requiresApproval` mean that it starts at
// login (the second once the user approves).
enum class LoginItemStatus : std::uint8_t {
    notRegistered = 0,
    enabled = 1,
    // Registered, waiting for the user's approval in the system settings.
    requiresApproval = 2,
    // The system cannot find the application to register.
    notFound = 3,
};

} // namespace velmora
