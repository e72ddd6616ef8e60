#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "VelmoraCore/Rect.h"
#include "Window.h"

namespace velmora {

// A display as placement sees it, in screen coordinates (origin at the
// lower left of the primary screen, y growing upwards). A plain value.
struct Screen {
    Rect frame;
    // The frame without the menu bar and the Dock (or panels).
    Rect visibleFrame;

    friend bool operator==(const Screen&, const Screen&) = default;
};

// The application's windows and the screens they are placed on.
// Main thread only.
class WindowSystem {
public:
    WindowSystem() = default;
    WindowSystem(const WindowSystem&) = delete;
    WindowSystem& operator=(const WindowSystem&) = delete;
    WindowSystem(WindowSystem&&) = delete;
    WindowSystem& operator=(WindowSystem&&) = delete;
    virtual ~WindowSystem() = default;

    // Every window of the application, shown or not, front to back.
    [[nodiscard]] virtual std::vector<std::shared_ptr<Window>> windows() const = 0;
    // In the platform's order; the first holds the menu bar.
    [[nodiscard]] virtual std::vector<Screen> screens() const = 0;
    // The screen with the key window, else the one with the menu bar; none
    // without screens.
    [[nodiscard]] virtual std::optional<Screen> mainScreen() const = 0;
    // A new panel, not shown yet, with its frame equal to `frame`. It stays
    // among windows() for as long as the application runs.
    virtual std::shared_ptr<Window> createPanel(const Rect& frame, const WindowAttributes& attributes) = 0;
};

} // namespace velmora
