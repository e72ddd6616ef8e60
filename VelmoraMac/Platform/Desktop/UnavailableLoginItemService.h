#pragma once

#include <string>

#include "VelmoraMac/Platform/LoginItemService.h"

namespace velmora {

// Launch at login where the process has no configuration folder to hold an
// autostart entry (neither XDG_CONFIG_HOME, HOME nor the password database
// names one): nothing is registered, and registering is refused with the
// reason, which the settings panel shows like any refusal of the system's.
// Main thread only.
class UnavailableLoginItemService final : public LoginItemService {
public:
    // `reason` is the refusal's text.
    explicit UnavailableLoginItemService(std::string reason);

    [[nodiscard]] LoginItemStatus status() const override;
    // Throws LoginItemError with the reason.
    void registerLoginItem() override;
    // There is nothing to remove.
    void unregisterLoginItem() override;
    // There is no entry for any panel to show.
    void openLoginItemsSettings() override;

private:
    std::string m_reason;
};

} // namespace velmora
