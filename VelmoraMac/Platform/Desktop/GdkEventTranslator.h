#pragma once

#include <bitset>
#include <cstdint>
#include <functional>
#include <optional>

#include <gdk/gdk.h>

#include "VelmoraCore/Point.h"
#include "VelmoraMac/Platform/EventMonitors.h"

namespace velmora {

class Window;

// The one place where GDK's events become the event records the host's
// monitors read, so that every rule of the pond's input holds on the
// desktop as written:
//  - keys by their hardware code, whatever the keyboard layout, to our
//    KeyCode values (W A S D, the arrows, F, Escape); any other key keeps
//    a code of its own outside them;
//  - modifiers to our ModifierFlag bits, Super counting as Command and Alt
//    as Option; a modifier key itself is a flags-changed event carrying the
//    modifiers as they are after it;
//  - a press of a key already held is a repeat, since X11 repeats a held
//    key as further presses;
//  - wheels scroll in lines, one per step, and touchpads and other smooth
//    devices in points (precise); scrolling up or left is positive, as the
//    pond's input expects, the opposite of GDK's;
//  - positions in the window's content with the origin at its lower left.
// It keeps only the set of held keys, and allocates nothing.
// Main thread only.
class GdkEventTranslator {
public:
    // Hardware codes of other keys are moved up by this much, so that none
    // of them meets one of our KeyCode values.
    static constexpr std::uint16_t otherKeyOffset = 0x1000;

    // What the window system knows of the window an event came from.
    struct Target {
        // The window, or null for one that is not ours to report.
        Window* window = nullptr;
        // The top left corner of its content area in root-window
        // coordinates, and the content's height.
        Point contentOrigin;
        double contentHeight = 0;
    };
    using TargetLookup = std::function<Target(GdkWindow* window)>;

    explicit GdkEventTranslator(TargetLookup lookup);

    // The record for `event`, or none for the kinds no monitor watches
    // (double clicks among them: GDK reports each click as well).
    [[nodiscard]] std::optional<InputEvent> translate(const GdkEvent& event);

    // Our KeyCode value for an X11/evdev hardware key code.
    [[nodiscard]] static std::uint16_t keyCode(std::uint16_t hardwareKeycode);
    // The same for a key whose layout gives it `keyval`: Escape and the
    // arrows are known by their symbol wherever they are. A keymap of its
    // own, such as a virtual keyboard's, numbers its keys in any order:
    // when the code evdev gives to one of those keys carries another
    // symbol, the code says nothing and the letters are known by symbol.
    // F, the full-screen shortcut's letter, is known by its symbol on a
    // key outside the table too.
    [[nodiscard]] static std::uint16_t keyCode(std::uint16_t hardwareKeycode, guint keyval);
    // Our ModifierFlag bits for GDK's modifier state.
    [[nodiscard]] static std::uint64_t modifierFlags(unsigned state);

private:
    [[nodiscard]] std::optional<InputEvent> translateKey(const GdkEventKey& key);
    void place(InputEvent& event, GdkWindow* window, double rootX, double rootY) const;

    TargetLookup m_lookup;
    std::bitset<256> m_heldKeys;
};

} // namespace velmora
