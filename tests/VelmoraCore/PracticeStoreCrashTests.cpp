#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <optional>
#include <random>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "CoreTestSupport.h"
#include "TemporaryFolder.h"
#include "VelmoraCore/DurableFile.h"
#include "VelmoraCore/PracticeStore.h"

namespace velmora {
namespace {

namespace fs = std::filesystem;
using test::utc;

constexpr int killCount = 120;

// Notices "phone" over and over, reporting each completed update's moment
// count on `acknowledgements`, until it is killed.
[[noreturn]] void runWriter(const fs::path& url, int acknowledgements)
{
    try {
        PracticeStore store(url);
        store.load();
        for (;;) {
            const PracticeState saved = *store.update([](const PracticeState& state) {
                return state.notice("phone", utc(2025, 3, 14), UserCalendar::utc());
            });
            const std::int64_t moments = saved.lotuses.at("phone").moments;
            if (::write(acknowledgements, &moments, sizeof moments) != sizeof moments)
                ::_exit(3);
        }
    } catch (...) {
        ::_exit(2);
    }
}

std::int64_t momentsOnDisk(const fs::path& url)
{
    PracticeStore reader(url);
    const PracticeState state = *reader.load();
    return state.lotuses.contains("phone") ? state.lotuses.at("phone").moments : 0;
}

std::size_t temporariesBeside(const fs::path& url)
{
    std::size_t count = 0;
    for (const auto& entry : fs::directory_iterator(url.parent_path()))
        count += entry.path().filename().string().starts_with(DurableFile::temporaryPrefix(url)) ? 1U : 0U;
    return count;
}

TEST(PracticeStoreCrash, WriterKilledAtRandomMoments_LeavesTheLastOrTheNextStateAndOneTemporaryAtMost)
{
    const test::TemporaryFolder folder;
    const fs::path url = folder / "app.velmora.mac" / "practice.json";
    {
        PracticeStore store(url);
        store.load();
        store.update([](PracticeState state) {
            state.selected = {"phone"};
            return state;
        });
    }

    std::mt19937 random(20251122);
    std::uniform_int_distribution<int> updatesBeforeKill(0, 3);
    std::uniform_int_distribution<int> readsBeforeKill(0, 20);
    std::int64_t acknowledged = 0;
    int killsDuringWork = 0;

    for (int kill = 0; kill < killCount; ++kill) {
        std::array<int, 2> pipe{};
        ASSERT_EQ(::pipe(pipe.data()), 0);
        const pid_t writer = ::fork();
        ASSERT_GE(writer, 0);
        if (writer == 0) {
            ::close(pipe[0]);
            runWriter(url, pipe[1]);
        }
        ::close(pipe[1]);

        // Let the writer finish a few updates, so that most kills land in
        // the middle of its work rather than during its start-up.
        std::int64_t moments = 0;
        bool acknowledgedThisTime = false;
        for (int update = updatesBeforeKill(random); update > 0; --update) {
            ASSERT_EQ(::read(pipe[0], &moments, sizeof moments), static_cast<ssize_t>(sizeof moments));
            acknowledged = moments;
            acknowledgedThisTime = true;
        }
        // A reader running beside the writer always finds a complete, valid file.
        for (int read = readsBeforeKill(random); read > 0; --read) {
            const std::int64_t seen = momentsOnDisk(url);
            ASSERT_GE(seen, acknowledged);
        }
        ASSERT_EQ(::kill(writer, SIGKILL), 0);
        int status = 0;
        ASSERT_EQ(::waitpid(writer, &status, 0), writer);
        ASSERT_TRUE(WIFSIGNALED(status)) << "the writer stopped by itself with status " << WEXITSTATUS(status);

        while (::read(pipe[0], &moments, sizeof moments) == sizeof moments) {
            acknowledged = moments;
            acknowledgedThisTime = true;
        }
        ::close(pipe[0]);
        killsDuringWork += acknowledgedThisTime ? 1 : 0;

        const std::int64_t onDisk = momentsOnDisk(url);
        EXPECT_TRUE(onDisk == acknowledged || onDisk == acknowledged + 1)
            << "after kill " << kill << ": " << onDisk << " on disk, " << acknowledged << " acknowledged";
        acknowledged = onDisk;
        EXPECT_LE(temporariesBeside(url), 1U) << "after kill " << kill;
    }
    EXPECT_GT(killsDuringWork, killCount / 4) << "most kills should land while the writer is busy saving";
}

} // namespace
} // namespace velmora
