#pragma once

namespace velmora {

// How the coordinator holds the launch-at-login service. Main thread only.
class LoginLaunchControlling {
public:
    LoginLaunchControlling() = default;
    LoginLaunchControlling(const LoginLaunchControlling&) = delete;
    LoginLaunchControlling& operator=(const LoginLaunchControlling&) = delete;
    LoginLaunchControlling(LoginLaunchControlling&&) = delete;
    LoginLaunchControlling& operator=(LoginLaunchControlling&&) = delete;
    virtual ~LoginLaunchControlling() = default;

    // Registered as a login item, or waiting for the user's approval. Read
    // anew on every call: the user may change it in the system settings.
    [[nodiscard]] virtual bool enabled() const = 0;
    // Registered, waiting for the user's approval in the system settings.
    [[nodiscard]] virtual bool requiresApproval() const = 0;
    // Registers or unregisters the application; throws when the system
    // refuses.
    virtual void setEnabled(bool enabled) = 0;
};

} // namespace velmora
