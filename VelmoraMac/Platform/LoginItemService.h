#pragma once

#include "LoginItemStatus.h"

namespace velmora {

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
