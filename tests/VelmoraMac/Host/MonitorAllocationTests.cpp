#include <atomic>
#include <cstdlib>
#include <new>

#include <gtest/gtest.h>

#include "HostFixture.h"

// Every allocation of the process goes through here while a test counts.
namespace {
std::atomic<bool> counting{false};
std::atomic<long> allocations{0};

void* allocate(std::size_t size)
{
    if (counting.load(std::memory_order_relaxed))
        allocations.fetch_add(1, std::memory_order_relaxed);
    if (void* memory = std::malloc(size == 0 ? 1 : size))
        return memory;
    throw std::bad_alloc();
}
} // namespace

void* operator new(std::size_t size)
{
    return allocate(size);
}
void* operator new[](std::size_t size)
{
    return allocate(size);
}
void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept
{
    try {
        return allocate(size);
    } catch (...) {
        return nullptr;
    }
}
void* operator new[](std::size_t size, const std::nothrow_t& /*tag*/) noexcept
{
    try {
        return allocate(size);
    } catch (...) {
        return nullptr;
    }
}
void operator delete(void* memory) noexcept
{
    std::free(memory);
}
void operator delete[](void* memory) noexcept
{
    std::free(memory);
}
void operator delete(void* memory, std::size_t /*size*/) noexcept
{
    std::free(memory);
}
void operator delete[](void* memory, std::size_t /*size*/) noexcept
{
    std::free(memory);
}

namespace velmora {
namespace {

using test::HostFixture;

class MonitorAllocationTest : public HostFixture { };

TEST_F(MonitorAllocationTest, Monitors_AllocateNothingPerEvent)
{
    storeOnboarded();
    const auto window = addRendererWindow();
    start();
    ASSERT_TRUE(host().interactive());
    Window* pond = window.get();

    // A mix of what the monitors see most, built before counting.
    const InputEvent burst[] = {
        mouse(InputEventType::mouseMoved, pond, {100, 100}),
        mouse(InputEventType::leftMouseDown, pond, {120, 100}),
        mouse(InputEventType::leftMouseDragged, pond, {140, 110}),
        mouse(InputEventType::leftMouseUp, pond, {140, 110}),
        mouse(InputEventType::mouseMoved, nullptr, {0, 0}),
        wheel(pond, {200, 200}, 0.5, -1.5, true),
        wheel(pond, {200, 200}, 0, 1, false),
        wheel(pond, {200, 2000}, 0, 1, false),
        key(InputEventType::keyDown, KeyCode::w, pond),
        key(InputEventType::keyDown, KeyCode::w, pond, 0, true),
        key(InputEventType::keyDown, 49, pond),
        key(InputEventType::keyUp, KeyCode::w, pond),
        key(InputEventType::flagsChanged, 0, pond, ModifierFlag::shift),
        key(InputEventType::keyDown, KeyCode::leftArrow, pond, ModifierFlag::command),
        key(InputEventType::keyDown, KeyCode::d, nullptr),
    };
    // The count itself works: one allocation that escapes is seen.
    counting = true;
    host().events().emplace_back(64, 'x');
    counting = false;
    ASSERT_EQ(allocations.exchange(0), 1);
    host().events().clear();

    counting = true;
    for (int round = 0; round < 1000; ++round) {
        for (const InputEvent& event : burst)
            dispatch(event);
    }
    counting = false;

    EXPECT_EQ(allocations.load(), 0);
    EXPECT_TRUE(host().interactive());
    EXPECT_NE(host().pointerState().scroll, Point());
}

} // namespace
} // namespace velmora
