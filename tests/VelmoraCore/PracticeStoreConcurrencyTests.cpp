// The store with a caller that prepares its publication while the write
// waits for the device, on the store's side thread.

#include <cerrno>
#include <filesystem>
#include <optional>
#include <thread>

#include <gtest/gtest.h>

#include "CoreTestSupport.h"
#include "FaultyFileSystemCalls.h"
#include "TemporaryFolder.h"
#include "VelmoraCore/PracticeStore.h"

namespace velmora {
namespace {

namespace fs = std::filesystem;
using test::expectPracticeError;
using test::FaultyFileSystemCalls;
using test::fileBytes;

// What a caller prepares while the write waits: from the new state, on
// another thread, finished when update() returns, and never for a change
// that is refused before anything is written.
TEST(PracticeStoreSideThread, Update_PreparesFromTheNewStateBesideTheWriteAndOnlyForAValidOne)
{
    const test::TemporaryFolder folder;
    const fs::path url = folder / "app.velmora.mac" / "practice.json";
    FaultyFileSystemCalls calls;
    PracticeStore store(url, calls);
    store.load();
    std::optional<std::thread::id> preparedOn;
    std::optional<PracticeState> preparedFrom;
    const auto prepare = [&](const PracticeState& upcoming) {
        preparedOn = std::this_thread::get_id();
        preparedFrom = upcoming;
    };

    const PracticeState saved = *store.update([](PracticeState state) { state.selected = {"phone"}; return state; }, prepare);
    EXPECT_EQ(preparedFrom, saved);
    EXPECT_NE(preparedOn, std::this_thread::get_id());

    preparedFrom.reset();
    expectPracticeError([&] { store.update([](PracticeState state) { state.reminderMinute = 60; return state; }, prepare); }, PracticeError::invalidData);
    EXPECT_FALSE(preparedFrom) << "prepared for a state that is never stored";

    // A write that fails after the preparation began: the store and the
    // file keep the old state, and the preparation is over all the same.
    calls.failAt(FaultyFileSystemCalls::Step::fsyncFile, EIO);
    EXPECT_THROW(store.update([](PracticeState state) { state.hintSeen = true; return state; }, prepare), fs::filesystem_error);
    EXPECT_EQ(*store.state(), saved);
    EXPECT_EQ(fileBytes(url), saved.toJSON());
    ASSERT_TRUE(preparedFrom);
    EXPECT_TRUE(preparedFrom->hintSeen);
}

} // namespace
} // namespace velmora
