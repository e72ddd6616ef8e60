#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include "PlatformToken.h"
#include "VelmoraCore/Point.h"

namespace velmora {

// What a local event monitor does with the event it was shown.
enum class EventDisposition : std::uint8_t {
    // Normal dispatch goes on: the window gets the event.
    passOn,
    // The monitor has handled it; nobody else sees it.
    consume,
};

class Window;

// The event types the host's monitors and the status button distinguish,
// with the window system's own numbers. Other numbers may arrive and are
// carried through unchanged.
enum class InputEventType : std::uint32_t {
    leftMouseDown = 1,
    leftMouseUp = 2,
    rightMouseDown = 3,
    rightMouseUp = 4,
    mouseMoved = 5,
    leftMouseDragged = 6,
    keyDown = 10,
    keyUp = 11,
    flagsChanged = 12,
    scrollWheel = 22,
};

// The bit an event type has in a monitor's event mask.
constexpr std::uint64_t eventMaskBit(InputEventType type)
{
    return std::uint64_t{1} << static_cast<std::uint32_t>(type);
}

// Modifier bits of InputEvent::modifierFlags.
namespace ModifierFlag {
constexpr std::uint64_t capsLock = 0x10000;
constexpr std::uint64_t shift = 0x20000;
constexpr std::uint64_t control = 0x40000;
constexpr std::uint64_t option = 0x80000;
constexpr std::uint64_t command = 0x100000;
} // namespace ModifierFlag

// Layout-independent virtual key codes of the keys the pond reacts to.
namespace KeyCode {
constexpr std::uint16_t a = 0;
constexpr std::uint16_t s = 1;
constexpr std::uint16_t d = 2;
constexpr std::uint16_t f = 3;
constexpr std::uint16_t w = 13;
constexpr std::uint16_t escape = 53;
constexpr std::uint16_t leftArrow = 123;
constexpr std::uint16_t rightArrow = 124;
constexpr std::uint16_t downArrow = 125;
constexpr std::uint16_t upArrow = 126;
} // namespace KeyCode

// One input event as the window system reports it to a local event monitor.
// A plain value with no owned memory, so that the monitors, which see every
// mouse movement, copy and inspect it without allocating.
// The wide members come first, so that it packs without holes.
struct InputEvent {
    std::uint64_t modifierFlags = 0;
    // The window the event belongs to; not owned, null for none.
    Window* window = nullptr;
    // In the window's coordinates: origin at the lower left of its content,
    // y growing upwards.
    Point locationInWindow;
    double scrollingDeltaX = 0;
    double scrollingDeltaY = 0;
    InputEventType type = InputEventType::mouseMoved;
    std::uint16_t keyCode = 0;
    bool isARepeat = false;
    bool hasPreciseScrollingDeltas = false;
};

// Local event monitors: handlers that see the application's own input
// events before they are dispatched to a window, and may keep them from it.
// Main thread only; handlers run on the main thread inside the event
// dispatch.
class EventMonitors {
public:
    using Handler = std::function<EventDisposition(const InputEvent& event)>;

    EventMonitors() = default;
    EventMonitors(const EventMonitors&) = delete;
    EventMonitors& operator=(const EventMonitors&) = delete;
    EventMonitors(EventMonitors&&) = delete;
    EventMonitors& operator=(EventMonitors&&) = delete;
    virtual ~EventMonitors() = default;

    // Calls `handler` for every event whose type is in `eventMask`
    // (eventMaskBit), in the order monitors were added, until one consumes
    // it. Null when the platform refuses the monitor.
    virtual std::unique_ptr<PlatformToken> addLocalMonitor(std::uint64_t eventMask, Handler handler) = 0;
};

} // namespace velmora
