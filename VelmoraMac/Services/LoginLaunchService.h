#pragma once

#include <memory>
#include <optional>

#include "VelmoraMac/LoginLaunchControlling.h"
#include "VelmoraMac/Platform/Application.h"
#include "VelmoraMac/Platform/LoginItemService.h"

namespace velmora {

// Launch at login as the system's login-item service keeps it. Holds no
// state of its own: the registration lives in the service and outlasts the
// process, and the user may change it in the system settings at any time.
// Main thread only.
class LoginLaunchService final : public LoginLaunchControlling {
public:
    explicit LoginLaunchService(std::shared_ptr<LoginItemService> service);

    [[nodiscard]] bool enabled() const override;
    [[nodiscard]] bool requiresApproval() const override;
    // Throws the service's LoginItemError when it refuses.
    void setEnabled(bool enabled) override;

    // Whether `event`, the request that opened the application, says that
    // the system launched it at login: a first launch ("oapp") marked as a
    // login item ("lgit"). A reopen request never is.
    [[nodiscard]] static bool isLoginEvent(const std::optional<LaunchEvent>& event);

private:
    std::shared_ptr<LoginItemService> m_service;
};

} // namespace velmora
