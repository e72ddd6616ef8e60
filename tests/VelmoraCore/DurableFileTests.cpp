#include <fcntl.h>
#include <filesystem>
#include <optional>
#include <sys/file.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "CoreTestSupport.h"
#include "FaultyFileSystemCalls.h"
#include "TemporaryFolder.h"
#include "VelmoraCore/DurableFile.h"

namespace velmora {
namespace {

namespace fs = std::filesystem;
using test::fileBytes;
using test::writeFileBytes;

class DurableFileTest : public testing::Test {
protected:
    fs::path target() const { return m_folder / "practice.json"; }

    fs::path abandonedTemporary(const char* suffix) const
    {
        fs::path path = m_folder / (DurableFile::temporaryPrefix(target()) + suffix);
        writeFileBytes(path, "half a state");
        return path;
    }

    test::TemporaryFolder m_folder;
};

TEST_F(DurableFileTest, Write_ReplacesASymbolicLinkInsteadOfFollowingIt)
{
    const fs::path elsewhere = m_folder / "elsewhere.json";
    writeFileBytes(elsewhere, "not ours");
    fs::create_symlink(elsewhere, target());
    DurableFile::write(target(), "ours");
    EXPECT_FALSE(fs::is_symlink(target()));
    EXPECT_EQ(fileBytes(target()), "ours");
    EXPECT_EQ(fileBytes(elsewhere), "not ours");
}

TEST_F(DurableFileTest, RemoveAbandonedTemporaries_RemovesThoseOfKilledWritersNeverALiveWritersUpToItsRename)
{
    const fs::path first = abandonedTemporary("a1B2c3");
    const fs::path second = abandonedTemporary("zzzzzz");
    const fs::path unrelated = m_folder / ".practice.json.backup-of-mine";
    writeFileBytes(unrelated, "keep");

    // Another process's sweep in the last instant before our rename, when
    // the temporary is complete and its data descriptor already closed.
    test::FaultyFileSystemCalls calls;
    std::optional<bool> survivedSweep;
    calls.beforeRename([&](const char* temporary) {
        DurableFile::removeAbandonedTemporaries(target());
        survivedSweep = fs::exists(temporary);
    });
    DurableFile::write(target(), "new", calls);

    EXPECT_EQ(survivedSweep, true) << "a live writer's temporary was removed";
    EXPECT_EQ(fileBytes(target()), "new");
    EXPECT_FALSE(fs::exists(first));
    EXPECT_FALSE(fs::exists(second));
    EXPECT_TRUE(fs::exists(unrelated)) << "only names of our own temporaries are touched";
}

TEST_F(DurableFileTest, Exists_FollowsLinksAndTreatsAFileInThePathAsAbsence)
{
    EXPECT_FALSE(DurableFile::exists(target()));
    fs::create_symlink(m_folder / "missing", target());
    EXPECT_FALSE(DurableFile::exists(target())) << "a dangling link is no file";
    writeFileBytes(m_folder / "file", "");
    EXPECT_FALSE(DurableFile::exists(m_folder / "file" / "practice.json"));
    EXPECT_TRUE(DurableFile::exists(m_folder / "file"));
}

TEST_F(DurableFileTest, Read_ReturnsFilesWholeUpToTheLimitAndRefusesLargerOnesUnread)
{
    std::string large(std::size_t{300} * 1024, 'x');
    large[12345] = '\0';
    writeFileBytes(target(), large);
    EXPECT_EQ(DurableFile::read(target()), large);
    EXPECT_EQ(DurableFile::read(target(), large.size()), large);
    try {
        (void)DurableFile::read(target(), large.size() - 1);
        FAIL() << "read past the limit";
    } catch (const fs::filesystem_error& error) {
        EXPECT_EQ(error.code(), std::errc::file_too_large);
    }
}

} // namespace
} // namespace velmora
