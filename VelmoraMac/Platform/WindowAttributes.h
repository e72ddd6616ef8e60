#pragma once

#include <cstdint>
#include <string>

namespace velmora {

// How a window looks and behaves, set as a whole. The values are the window
// system's own, so that a desktop implementation maps each one once.
struct WindowAttributes {
    // Bits of styleMask.
    static constexpr std::uint64_t titled = 1;
    static constexpr std::uint64_t closable = 2;
    static constexpr std::uint64_t miniaturizable = 4;
    static constexpr std::uint64_t resizable = 8;
    // Set by the window system, never by a caller, while the window is in
    // full screen.
    static constexpr std::uint64_t fullScreen = 0x4000;

    // Values of collectionBehavior.
    static constexpr std::uint64_t fullScreenPrimary = 128;
    static constexpr std::uint64_t fullScreenAuxiliary = 256;

    std::string title;
    std::uint64_t styleMask = titled | closable | miniaturizable | resizable;
    bool titleVisible = true;
    bool titlebarTransparent = false;
    // The dark variant of the system's look, whatever the user's choice.
    bool darkAppearance = false;
    // Close, miniaturize and zoom shown in the title bar.
    bool standardButtonsShown = true;
    bool movable = true;
    bool movableByWindowBackground = false;
    // Closing destroys the window; when false, closing only hides it.
    bool releasedWhenClosed = true;
    // 0 is the normal level of application windows.
    std::int32_t level = 0;
    std::uint64_t collectionBehavior = 0;
    bool opaque = true;
    // A transparent background, so that what is beneath shows through the
    // parts the content leaves undrawn.
    bool clearBackground = false;
    // A panel that floats above all normal windows.
    bool floatingPanel = false;
    bool hidesOnDeactivate = false;

    friend bool operator==(const WindowAttributes&, const WindowAttributes&) = default;
};

} // namespace velmora
