#pragma once

#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "VelmoraMac/Platform/LoginItemService.h"

namespace velmora {

// A login-item service in memory that records what it was asked, with the
// status and the refusals a test sets. Thread-safe, so that a test may
// inspect it while the main thread uses it.
class HeadlessLoginItemService final : public LoginItemService {
public:
    enum class Request : std::uint8_t {
        registerLoginItem,
        unregisterLoginItem,
        openLoginItemsSettings,
    };

    explicit HeadlessLoginItemService(LoginItemStatus status = LoginItemStatus::notRegistered);

    [[nodiscard]] LoginItemStatus status() const override;
    // Unless set to fail: the status becomes the one set to follow a
    // registration (`enabled` at first).
    void registerLoginItem() override;
    // Unless set to fail: the status becomes `notRegistered`.
    void unregisterLoginItem() override;
    void openLoginItemsSettings() override;

    void setStatus(LoginItemStatus status);
    // `requiresApproval` plays a system that asks the user first.
    void setStatusAfterRegistering(LoginItemStatus status);
    // While set, the call throws LoginItemError with this text and changes
    // nothing.
    void setRegisterError(std::optional<std::string> error);
    void setUnregisterError(std::optional<std::string> error);

    // Every call, refused ones included, in order.
    [[nodiscard]] std::vector<Request> requests() const;

private:
    mutable std::mutex m_mutex;
    LoginItemStatus m_status;
    LoginItemStatus m_statusAfterRegistering = LoginItemStatus::enabled;
    std::optional<std::string> m_registerError;
    std::optional<std::string> m_unregisterError;
    std::vector<Request> m_requests;
};

} // namespace velmora
