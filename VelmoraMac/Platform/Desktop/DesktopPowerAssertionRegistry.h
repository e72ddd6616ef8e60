#pragma once

#include "VelmoraMac/Platform/PowerAssertionRegistry.h"

namespace velmora {

// The power assertions a process can see on a Linux desktop: none. Every
// way to keep the display awake hands its holder alone the means to undo
// it: a cookie from org.freedesktop.ScreenSaver.Inhibit or
// org.gnome.SessionManager.Inhibit (GTK's gtk_application_inhibit among
// them), a Wayland idle-inhibitor object, a logind inhibitor descriptor.
// None of them is listed to anyone else, not even to other code of the
// same process, so the display-sleep policy finds nothing to lower and the
// renderer's own inhibitions stand.
// Main thread only.
class DesktopPowerAssertionRegistry final : public PowerAssertionRegistry {
public:
    // Answers, with no process holding anything the library could see.
    [[nodiscard]] std::optional<nlohmann::json> assertionsByProcess() const override;
    // Nothing can be changed: answers a failure code (ENOTSUP).
    std::int32_t setAssertionLevel(std::uint32_t identifier, std::int64_t level) override;
};

} // namespace velmora
