#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <thread>

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "CoreTestSupport.h"
#include "FaultyFileSystemCalls.h"
#include "TemporaryFolder.h"
#include "VelmoraCore/DurableFile.h"
#include "VelmoraCore/FileError.h"
#include "VelmoraCore/PracticeStore.h"

namespace velmora {
namespace {

namespace fs = std::filesystem;
using test::expectPracticeError;
using test::FaultyFileSystemCalls;
using test::fileBytes;
using test::utc;
using test::writeFileBytes;

PracticeState selectPhone(const PracticeState& current)
{
    PracticeState state = current;
    state.selected = {"phone"};
    return state;
}

class PracticeStoreTest : public testing::Test {
protected:
    // A folder that does not exist yet, below one that does.
    fs::path url() const { return m_folder / "Application Support" / "app.velmora.mac" / "practice.json"; }

    std::vector<fs::path> temporaries() const
    {
        std::vector<fs::path> found;
        if (!fs::exists(url().parent_path()))
            return found;
        for (const auto& entry : fs::directory_iterator(url().parent_path()))
            if (entry.path().filename().string().starts_with(DurableFile::temporaryPrefix(url())))
                found.push_back(entry.path());
        return found;
    }

    // A store that has saved one state, and the bytes of that state.
    std::string saveFirstState(PracticeStore& store) const
    {
        store.load();
        store.update(selectPhone);
        return fileBytes(url());
    }

    test::TemporaryFolder m_folder;
};

TEST_F(PracticeStoreTest, LoadWithoutFileCreatesNothing_FirstUpdateCreatesPrivateFoldersAndTheFile)
{
    {
        PracticeStore store(url());
        EXPECT_FALSE(store.state());
        EXPECT_EQ(*store.load(), PracticeState());
        EXPECT_EQ(*store.state(), PracticeState());
        EXPECT_FALSE(fs::exists(url().parent_path())) << "neither the file nor its folder is created by loading";

        const PracticeState saved = *store.update(selectPhone);
        EXPECT_EQ(saved.selected, PracticeState::StringSet{"phone"});
        EXPECT_EQ(*store.state(), saved);
        EXPECT_EQ(fileBytes(url()), saved.toJSON());
    }
    for (const fs::path& folder : {url().parent_path(), url().parent_path().parent_path()})
        EXPECT_EQ(fs::status(folder).permissions(), fs::perms::owner_all) << folder;
    EXPECT_EQ(fs::status(url()).permissions(), fs::perms::owner_read | fs::perms::owner_write);
    EXPECT_TRUE(temporaries().empty()) << "the next write's temporary goes with the store";
}

struct BadFile {
    const char* name;
    std::string bytes;
    bool decodingError; // otherwise invalidData
};

TEST_F(PracticeStoreTest, FailedLoad_LeavesTheStoreUnloadedAndTheFileUntouched)
{
    PracticeState versionTwo;
    versionTwo.version = 2;
    PracticeState onboardedWithNothing;
    onboardedWithNothing.onboarded = true;
    const BadFile files[] = {
        {"empty file", "", true},
        {"truncated", PracticeState().toJSON().substr(0, 40), true},
        {"binary", std::string("\x89PNG\r\n\x1a\n\0\0", 10), true},
        {"wrong type", R"({"version":"1"})", true},
        {"version 2", versionTwo.toJSON(), false},
        {"onboarded without topics", onboardedWithNothing.toJSON(), false},
    };
    for (const BadFile& file : files) {
        SCOPED_TRACE(file.name);
        fs::remove(url());
        PracticeStore store(url());
        saveFirstState(store);
        writeFileBytes(url(), file.bytes);
        if (file.decodingError)
            EXPECT_THROW(store.load(), nlohmann::json::exception);
        else
            expectPracticeError([&] { store.load(); }, PracticeError::invalidData);
        EXPECT_FALSE(store.state()) << "the earlier state is dropped, not kept";
        EXPECT_EQ(fileBytes(url()), file.bytes);
        expectPracticeError([&] { store.update(selectPhone); }, PracticeError::notLoaded);
        EXPECT_EQ(fileBytes(url()), file.bytes);
    }
}

TEST_F(PracticeStoreTest, FailingOrInvalidChange_PassesItsErrorOnAndChangesNothing)
{
    PracticeStore store(url());
    const std::string saved = saveFirstState(store);
    const std::shared_ptr<const PracticeState> held = store.state();

    expectPracticeError(
        [&] {
            store.update(
                [](const PracticeState& state) { return state.notice("money", utc(2025, 1, 1), UserCalendar::utc()); });
        },
        PracticeError::notSelected);
    EXPECT_THROW(store.update([](const PracticeState&) -> PracticeState { throw std::runtime_error("change failed"); }),
        std::runtime_error);
    // A change that breaks a rule is refused before it replaces anything,
    // and its temporary goes.
    expectPracticeError(
        [&] {
            store.update([](PracticeState state) {
                state.reminderHour = 25;
                return state;
            });
        },
        PracticeError::invalidData);

    EXPECT_EQ(store.state(), held);
    EXPECT_EQ(fileBytes(url()), saved);
    EXPECT_TRUE(temporaries().empty());
}

TEST_F(PracticeStoreTest, FolderThatCannotBeCreated_FailsWithTheFileSystemError)
{
    // A file stands where a folder of the path should be.
    const fs::path blocked = m_folder / "blocked";
    writeFileBytes(blocked, "not a folder");
    PracticeStore store(blocked / "app.velmora.mac" / "practice.json");
    store.load();
    try {
        store.update(selectPhone);
        FAIL() << "saved below a file";
    } catch (const fs::filesystem_error& error) {
        EXPECT_EQ(error.code(), std::errc::not_a_directory) << error.what();
    }
    EXPECT_EQ(*store.state(), PracticeState());
    EXPECT_EQ(fileBytes(blocked), "not a folder");
}

struct WriteFault {
    const char* name;
    FaultyFileSystemCalls::Step step;
    int error;
};

class PracticeStoreWriteFault : public PracticeStoreTest, public testing::WithParamInterface<WriteFault> { };

TEST_P(PracticeStoreWriteFault, LeavesStateFileAndFolderAsTheyWere)
{
    std::string saved;
    {
        PracticeStore first(url());
        saved = saveFirstState(first);
    }
    // Started afresh, so that this write makes its temporary itself.
    FaultyFileSystemCalls calls;
    PracticeStore store(url(), calls);
    const std::shared_ptr<const PracticeState> held = store.load();

    calls.failAt(GetParam().step, GetParam().error);
    try {
        store.update([](PracticeState state) {
            state.reminderEnabled = true;
            return state;
        });
        FAIL() << "the update succeeded";
    } catch (const fs::filesystem_error& error) {
        EXPECT_EQ(error.code().value(), GetParam().error) << error.what();
    }
    EXPECT_EQ(store.state(), held);
    EXPECT_EQ(fileBytes(url()), saved);
    EXPECT_TRUE(temporaries().empty());
}

INSTANTIATE_TEST_SUITE_P(EveryStep, PracticeStoreWriteFault,
    testing::Values(WriteFault{"CreateTemporaryDenied", FaultyFileSystemCalls::Step::createUniqueFile, EACCES},
        WriteFault{"WriteDiskFull", FaultyFileSystemCalls::Step::write, ENOSPC},
        WriteFault{"ShortWriteThenDiskFull", FaultyFileSystemCalls::Step::shortWriteThenWrite, ENOSPC},
        WriteFault{"FsyncIOError", FaultyFileSystemCalls::Step::fsyncFile, EIO},
        WriteFault{"CloseQuotaExceeded", FaultyFileSystemCalls::Step::close, EDQUOT},
        WriteFault{"RenameReadOnlyFileSystem", FaultyFileSystemCalls::Step::rename, EROFS}),
    [](const testing::TestParamInfo<WriteFault>& param) { return std::string(param.param.name); });

TEST_F(PracticeStoreTest, FolderFlushFailure_IsIgnoredBecauseTheNewFileIsInPlace)
{
    for (const auto step : {FaultyFileSystemCalls::Step::openFolder, FaultyFileSystemCalls::Step::fsyncFolder}) {
        FaultyFileSystemCalls calls;
        PracticeStore store(url(), calls);
        store.load();
        calls.failAt(step, EINVAL);
        const PracticeState saved = *store.update([](PracticeState state) {
            state.bellSoundEnabled = !state.bellSoundEnabled;
            return state;
        });
        EXPECT_EQ(*store.state(), saved);
        EXPECT_EQ(fileBytes(url()), saved.toJSON());
    }
}

TEST_F(PracticeStoreTest, Write_FlushesTheFileBeforeTheRenameAndTheFolderAfterIt_AndMakesTheNextTemporaryAhead)
{
    FaultyFileSystemCalls calls;
    PracticeState saved;
    {
        PracticeStore store(url(), calls);
        store.load();
        calls.interruptNextWrite();
        store.update(selectPhone);
        saved = *store.update([](PracticeState state) {
            state.bellSoundEnabled = !state.bellSoundEnabled;
            return state;
        });
    }
    EXPECT_EQ(fileBytes(url()), saved.toJSON()) << "an interrupted write is resumed";
    std::vector<std::string> steps = calls.steps();
    steps.erase(steps.begin(), std::find(steps.begin(), steps.end(), "create"));
    EXPECT_EQ(steps,
        (std::vector<std::string>{
            "create", "write", "write", "fsync", "close", "rename", "open folder", "fsync folder", "close folder",
            "create", // the second write's, made once the first is in place
            "write", "fsync", "close", "rename", "open folder", "fsync folder", "close folder", "create",
            "close", // the third's, removed with the store
        }));
}

// What a hostile or careless hand may leave at the state file's place. None
// of them may block the load or be read into memory, and each stays.
TEST_F(PracticeStoreTest, Load_RefusesAnythingButARegularFileWithinTheLimit)
{
    fs::create_directories(url().parent_path());
    const auto fifo = [this] { ASSERT_EQ(::mkfifo(url().c_str(), 0600), 0); };
    const auto endlessDevice = [this] { fs::create_symlink("/dev/zero", url()); };
    const auto folder = [this] { fs::create_directory(url()); };
    const auto socket = [this] {
        const int descriptor = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        ASSERT_GE(descriptor, 0);
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        const std::string path = url().string();
        ASSERT_LT(path.size(), sizeof(address.sun_path));
        std::copy(path.begin(), path.end(), address.sun_path);
        // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast): the socket API's own type pun
        const auto* socketAddress = reinterpret_cast<const sockaddr*>(&address);
        ASSERT_EQ(::bind(descriptor, socketAddress, sizeof(address)), 0);
        ::close(descriptor);
    };
    // Sparse, so the test costs no disk: only its size is ever looked at.
    const auto tooLarge = [this] {
        writeFileBytes(url(), "");
        fs::resize_file(url(), PracticeStore::sizeLimit + 1);
    };
    struct Case {
        const char* name;
        std::function<void()> make;
        std::error_code expected;
        fs::file_type type;
    };
    const Case cases[] = {
        {"FIFO without a writer", fifo, make_error_code(FileError::notRegularFile), fs::file_type::fifo},
        {"link to an endless device", endlessDevice, make_error_code(FileError::notRegularFile),
            fs::file_type::character},
        {"folder", folder, make_error_code(FileError::notRegularFile), fs::file_type::directory},
        {"socket", socket, std::make_error_code(std::errc::no_such_device_or_address), fs::file_type::socket},
        {"file over the limit", tooLarge, std::make_error_code(std::errc::file_too_large), fs::file_type::regular},
    };
    for (const Case& entry : cases) {
        SCOPED_TRACE(entry.name);
        fs::remove_all(url());
        entry.make();
        PracticeStore store(url());
        try {
            store.load();
            ADD_FAILURE() << "loaded";
        } catch (const fs::filesystem_error& error) {
            EXPECT_TRUE(error.code() == entry.expected.default_error_condition()) << error.what();
        }
        EXPECT_FALSE(store.state());
        EXPECT_EQ(fs::status(url()).type(), entry.type);
    }

    fs::remove_all(url());
    const fs::path real = m_folder / "kept-elsewhere.json";
    PracticeState elsewhere;
    elsewhere.language = "pt";
    writeFileBytes(real, elsewhere.toJSON());
    fs::create_symlink(real, url());
    PracticeStore store(url());
    EXPECT_EQ(store.load()->language, "pt") << "a link to a regular file is followed";
}

TEST_F(PracticeStoreTest, Update_RefusesAStateWhoseFileCouldNotBeLoadedAgain)
{
    PracticeStore store(url());
    const std::string saved = saveFirstState(store);
    const std::shared_ptr<const PracticeState> held = store.state();
    const auto tooManyDays = [](const PracticeState& current) {
        PracticeState state = current;
        // Thirteen bytes a day in the file: enough days to pass the limit.
        std::array<char, 48> key{};
        for (int year = 1600; state.toJSON().size() <= PracticeStore::sizeLimit; year += 50) {
            for (int day = 0; day < 50 * 12 * 28; ++day) {
                (void)std::snprintf(key.data(), key.size(), "%04d-%02d-%02d", year + day / (12 * 28),
                    (day / 28) % 12 + 1, day % 28 + 1);
                state.practiceDays.insert(key.data());
            }
        }
        return state;
    };
    try {
        store.update(tooManyDays);
        FAIL() << "saved a file the next start would refuse";
    } catch (const fs::filesystem_error& error) {
        EXPECT_EQ(error.code(), std::errc::file_too_large);
    }
    EXPECT_EQ(store.state(), held);
    EXPECT_EQ(fileBytes(url()), saved);
}

TEST_F(PracticeStoreTest, Update_MakesTheFolderOnTheFirstWriteAndWhenItHasGoneNotOnEveryWrite)
{
    FaultyFileSystemCalls calls;
    PracticeStore store(url(), calls);
    store.load();
    const auto foldersMade = [&calls] {
        const std::vector<std::string> steps = calls.steps();
        return std::count(steps.begin(), steps.end(), "make folder");
    };
    const auto toggleBell = [](const PracticeState& current) {
        PracticeState state = current;
        state.bellSoundEnabled = !state.bellSoundEnabled;
        return state;
    };
    store.update(toggleBell);
    const auto afterFirst = foldersMade();
    EXPECT_GT(afterFirst, 0);
    store.update(toggleBell);
    store.update(toggleBell);
    EXPECT_EQ(foldersMade(), afterFirst) << "the folder is made once, not on every write";

    // The user removes the folder while the library runs, maybe while the
    // next write's temporary is being made in it.
    std::error_code removal;
    for (const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
         fs::exists(url().parent_path()) && std::chrono::steady_clock::now() < deadline;)
        fs::remove_all(url().parent_path(), removal);
    ASSERT_FALSE(fs::exists(url().parent_path())) << removal.message();
    const PracticeState saved = *store.update(toggleBell);
    EXPECT_EQ(fileBytes(url()), saved.toJSON());
    EXPECT_GT(foldersMade(), afterFirst);
}

// What a caller prepares while the write waits: from the new state, on
// another thread, finished when update() returns, and never for a change
// that is refused before anything is written.
TEST_F(PracticeStoreTest, Update_PreparesFromTheNewStateBesideTheWriteAndOnlyForAValidOne)
{
    FaultyFileSystemCalls calls;
    PracticeStore store(url(), calls);
    store.load();
    std::optional<std::thread::id> preparedOn;
    std::optional<PracticeState> preparedFrom;
    const auto prepare = [&](const PracticeState& upcoming) {
        preparedOn = std::this_thread::get_id();
        preparedFrom = upcoming;
    };

    const PracticeState saved = *store.update(
        [](PracticeState state) {
            state.selected = {"phone"};
            return state;
        },
        prepare);
    EXPECT_EQ(preparedFrom, saved);
    EXPECT_NE(preparedOn, std::this_thread::get_id());

    preparedFrom.reset();
    expectPracticeError(
        [&] {
            store.update(
                [](PracticeState state) {
                    state.reminderMinute = 60;
                    return state;
                },
                prepare);
        },
        PracticeError::invalidData);
    EXPECT_FALSE(preparedFrom) << "prepared for a state that is never stored";

    // A write that fails after the preparation began: the store and the
    // file keep the old state, and the preparation is over all the same.
    calls.failAt(FaultyFileSystemCalls::Step::fsyncFile, EIO);
    EXPECT_THROW(store.update(
                     [](PracticeState state) {
                         state.hintSeen = true;
                         return state;
                     },
                     prepare),
        fs::filesystem_error);
    EXPECT_EQ(*store.state(), saved);
    EXPECT_EQ(fileBytes(url()), saved.toJSON());
    ASSERT_TRUE(preparedFrom);
    EXPECT_TRUE(preparedFrom->hintSeen);
}

} // namespace
} // namespace velmora
