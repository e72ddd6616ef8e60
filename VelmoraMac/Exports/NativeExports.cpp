// The C interface of the library. Every function but VelmoraFree runs its
// body on the library's main thread, where all of the host's state lives,
// and waits for it; on the main thread itself the body runs at once. No
// exception leaves a function: a failure gives the answer the function gives
// when there is no host.

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <memory>
#include <string>

#include "NativeStartup.h"
#include "VelmoraCore/Point.h"
#include "VelmoraMac/Host/MenuBarHost.h"
#include "VelmoraMac/Platform/MainThread.h"
#include "velmora/velmora.h"

namespace velmora {
namespace {

// What the pond is taken to measure before there is one to ask.
constexpr float defaultContentWidth = 780.0F;

// The renderer reads single precision; the host keeps doubles.
struct FloatPair {
    float x = 0;
    float y = 0;
};

struct Buttons {
    std::int32_t down = 0;
    std::int32_t held = 0;
    std::int32_t up = 0;
};

FloatPair narrowed(Point point)
{
    return {static_cast<float>(point.x), static_cast<float>(point.y)};
}

std::int32_t flag(bool value)
{
    return value ? 1 : 0;
}

template <typename T> void put(T* out, T value)
{
    if (out != nullptr)
        *out = value;
}

// `body` with the host, on the main thread, or `fallback` when there is no
// host yet or anything fails.
template <typename Result, typename Body> Result withHost(Result fallback, const Body& body) noexcept
{
    try {
        MainThread* mainThread = NativeStartup::mainThread();
        if (mainThread == nullptr)
            return fallback;
        return mainThread->runSync([&]() -> Result {
            const std::shared_ptr<MenuBarHost>& host = MenuBarHost::current();
            return host ? body(*host) : fallback;
        });
    } catch (...) {
        // Nothing may cross into the renderer's C code; the answer without a
        // host is always a safe one.
        return fallback;
    }
}

} // namespace
} // namespace velmora

using velmora::Buttons;
using velmora::FloatPair;
using velmora::MenuBarHost;

extern "C" {

void VelmoraStart(void)
{
    try {
        velmora::NativeStartup::start(velmora::NativeStartup::processSources());
    } catch (...) {
        // Building the graph failed after its files were found. No host was
        // set, so every function answers as before a start, and the next
        // call tries again.
    }
}

void VelmoraNotice(const char* topicID)
{
    if (topicID == nullptr)
        return;
    try {
        // Copied here: the caller's buffer is only promised for the call,
        // and the main thread reads the copy.
        const std::string topic(topicID);
        // A refused or unsaved noticing is shown in the panel, not told to
        // the renderer.
        (void)velmora::withHost(false, [&topic](MenuBarHost& host) { return host.model().notice(topic); });
    } catch (...) {
        // Only the copy can fail here, for want of memory.
    }
}

char* VelmoraCopyEvent(void)
{
    return velmora::withHost<char*>(nullptr, [](MenuBarHost& host) -> char* {
        std::deque<std::string>& events = host.events();
        if (events.empty())
            return nullptr;
        const std::string& head = events.front();
        // The C allocator, since the renderer releases it with free().
        auto* copy = static_cast<char*>(std::malloc(head.size() + 1));
        if (copy == nullptr)
            return nullptr; // The event stays for the next call.
        std::memcpy(copy, head.c_str(), head.size() + 1);
        events.pop_front();
        return copy;
    });
}

void VelmoraFree(char* event)
{
    std::free(event);
}

float VelmoraContentWidth(void)
{
    return velmora::withHost(velmora::defaultContentWidth, [](MenuBarHost& host) {
        const std::optional<double> width = host.contentWidth();
        return width ? static_cast<float>(*width) : velmora::defaultContentWidth;
    });
}

int32_t VelmoraIsPondVisible(void)
{
    return velmora::withHost(std::int32_t{0}, [](MenuBarHost& host) { return velmora::flag(host.visible()); });
}

int32_t VelmoraIsPondInteractive(void)
{
    return velmora::withHost(std::int32_t{0}, [](MenuBarHost& host) { return velmora::flag(host.interactive()); });
}

void VelmoraReadPointer(float* x, float* y)
{
    const FloatPair pointer
        = velmora::withHost(FloatPair{}, [](MenuBarHost& host) { return velmora::narrowed(host.eventPointer()); });
    velmora::put(x, pointer.x);
    velmora::put(y, pointer.y);
}

void VelmoraReadPointerButtons(int32_t* down, int32_t* held, int32_t* up)
{
    const Buttons buttons = velmora::withHost(Buttons{}, [](MenuBarHost& host) {
        velmora::PondPointerState& state = host.pointerState();
        const Buttons read = {velmora::flag(state.down), velmora::flag(state.held), velmora::flag(state.up)};
        // The edges are consumed by the read; the level stays.
        state.down = false;
        state.up = false;
        return read;
    });
    velmora::put(down, buttons.down);
    velmora::put(held, buttons.held);
    velmora::put(up, buttons.up);
}

void VelmoraReadScroll(float* dx, float* dy)
{
    const FloatPair scroll = velmora::withHost(FloatPair{}, [](MenuBarHost& host) {
        velmora::PondPointerState& state = host.pointerState();
        const FloatPair read = velmora::narrowed(state.scroll);
        state.scroll = velmora::Point();
        return read;
    });
    velmora::put(dx, scroll.x);
    velmora::put(dy, scroll.y);
}

void VelmoraReadNavigation(float* dx, float* dy)
{
    const FloatPair direction = velmora::withHost(FloatPair{}, [](MenuBarHost& host) {
        return host.interactive() ? velmora::narrowed(host.keyboardState().direction()) : FloatPair{};
    });
    velmora::put(dx, direction.x);
    velmora::put(dy, direction.y);
}

} // extern "C"
