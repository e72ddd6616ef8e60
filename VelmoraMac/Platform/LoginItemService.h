#pragma once

#include <cstdint>
#include <stdexcept>

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

// The system refused to register or unregister the login item; what() says
// why, in the system's words.
class LoginItemError final : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// The system's record of whether the application starts at login. The
// status answers the system's current record on every call, since the user
// may change it in the system settings at any time; an implementation may
// keep it by watching the record rather than reading it on every call.
// Main thread only.
class LoginItemService {
public:
    LoginItemService() = default;
    LoginItemService(const LoginItemService&) = delete;
    LoginItemService& operator=(const LoginItemService&) = delete;
    LoginItemService(LoginItemService&&) = delete;
    LoginItemService& operator=(LoginItemService&&) = delete;
    virtual ~LoginItemService() = default;

    [[nodiscard]] virtual LoginItemStatus status() const = 0;
    // Both throw LoginItemError when the system refuses.
    virtual void registerLoginItem() = 0;
    virtual void unregisterLoginItem() = 0;
    // Shows the system settings where the user approves login items.
    virtual void openLoginItemsSettings() = 0;
};

} // namespace velmora
