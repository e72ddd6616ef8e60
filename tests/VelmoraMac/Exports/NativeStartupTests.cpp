#include <array>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <future>
#include <iostream>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "ExportsFixture.h"
#include "VelmoraMac/MacStrings.h"
#include "tests/VelmoraMac/CatalogFixture.h"

namespace velmora {
namespace {

namespace fs = std::filesystem;
using test::DriverProcess;

class NativeStartupTest : public test::ExportsFixture {
protected:
    // A copy of the built library in a folder of its own, with `content`
    // beside it as its content file (velmora/content.json), or none.
    [[nodiscard]] fs::path libraryWithContent(const std::optional<std::string>& content) const
    {
        const fs::path folder = m_folder / "lib";
        fs::create_directories(folder);
        fs::path library = folder / "libVelmoraNative.so.0.1.0";
        fs::copy_file(DriverProcess::builtLibrary(), library);
        if (content) {
            fs::create_directories(folder / "velmora");
            test::writeFileBytes(folder / "velmora" / "content.json", *content);
        }
        return library;
    }

    [[nodiscard]] static std::string shippedContent()
    {
        return test::fileBytes(DriverProcess::builtLibrary().parent_path() / "velmora" / "content.json");
    }

    // Runs the driver's `scenario` with `library` from the folder `from`,
    // with `variables` added to the environment.
    [[nodiscard]] DriverProcess::Result driveFrom(const fs::path& from, const std::string& library,
        const std::vector<std::string>& arguments, const DriverProcess::Environment& variables = {}) const
    {
        DriverProcess::Environment environment = this->environment();
        for (const auto& [variable, value] : variables)
            environment[variable] = value;
        std::vector<std::string> command = {"env", "-C", from.string(), VELMORA_EXPORTS_DRIVER, library};
        command.insert(command.end(), arguments.begin(), arguments.end());
        return DriverProcess::runProgram(command, environment);
    }
};

std::string incompleteContent()
{
    nlohmann::json document = test::minimalCatalogDocument();
    document["topics"].erase(document["topics"].begin());
    return document.dump();
}

struct FailedStart {
    const char* name;
    // The content file beside the library; none for a missing one.
    std::optional<std::string> content;
    // XDG_DATA_HOME is a file, so no data folder can be had.
    bool dataHomeBlocked;
    const char* lang;
    const char* language;
    // The language whose built-in texts the alert must show.
    const char* expectedLanguage;
};

// Each way a start fails, each in another of the user's languages: the
// alert is in the language the locale variables resolve to.
TEST_F(NativeStartupTest, Failure_ShowsTheAlertInTheUsersLanguageAndEndsWithoutTouchingTheState)
{
    const std::vector<FailedStart> cases = {
        {"missing content", std::nullopt, false, "fr_FR.UTF-8", nullptr, "fr"},
        {"content not JSON", "{\"topics\": [", false, "de_DE.UTF-8", "ru:en", "ru"},
        {"content incomplete", incompleteContent(), false, "C", nullptr, "en"},
        {"data folder blocked by a file", shippedContent(), true, "hi_IN.UTF-8", nullptr, "hi"},
        {"Pali has no built-in texts", std::nullopt, false, "en_GB.UTF-8", "pi:es", "en"},
        {"first practice language preferred wins", std::nullopt, false, "de_DE.UTF-8", "de:es:fr", "es"},
    };
    for (const FailedStart& entry : cases) {
        SCOPED_TRACE(entry.name);
        const test::TemporaryFolder folder;
        fs::remove_all(m_folder / "lib");
        const fs::path library = libraryWithContent(entry.content);
        seed(onboardedState());
        const std::string stateBefore = test::fileBytes(stateFile());

        DriverProcess::Environment environment = this->environment();
        environment["LANG"] = entry.lang;
        environment["LANGUAGE"] = entry.language == nullptr ? std::nullopt : std::optional<std::string>(entry.language);
        const fs::path blocker = folder / "not-a-folder";
        if (entry.dataHomeBlocked) {
            test::writeFileBytes(blocker, "in the way");
            environment["XDG_DATA_HOME"] = blocker.string();
        }

        const DriverProcess::Result result = DriverProcess::run(library, "notice", {}, environment);

        EXPECT_NE(result.status, 0);
        EXPECT_FALSE(result.value("initial").has_value()) << "the process went on after a failed start";
        const MacStrings::Table& texts = MacStrings::table(entry.expectedLanguage);
        const std::vector<std::string> alert
            = {texts.at("startupError"), texts.at("startupErrorBody"), texts.at("okay")};
        EXPECT_EQ(result.errorLines(), alert);
        EXPECT_EQ(test::fileBytes(stateFile()), stateBefore);
        EXPECT_EQ(std::distance(fs::directory_iterator(stateFile().parent_path()), fs::directory_iterator()), 1);
        if (entry.dataHomeBlocked) {
            EXPECT_EQ(test::fileBytes(blocker), "in the way");
        }
    }
}

// The content is read from the folder "velmora" beside the library's real
// file, however the program reached the library: by a link in another
// folder, through a chain of links, by its soname on a relative
// LD_LIBRARY_PATH, and after the program has left the folder it loaded
// the library from.
TEST_F(NativeStartupTest, Locations_FindTheContentBesideTheLibrarysRealFile)
{
    seed(onboardedState());
    const fs::path library = libraryWithContent(shippedContent());
    const fs::path links = m_folder / "links";
    fs::create_directories(links / "deeper");
    // As ldconfig and the package lay them out: soname and development
    // links beside the file, here in another folder as well.
    fs::create_symlink("../lib/" + library.filename().string(), links / "libVelmoraNative.so.0");
    fs::create_symlink(links / "libVelmoraNative.so.0", links / "deeper" / "libVelmoraNative.so");

    struct LinkCase {
        const char* name;
        fs::path from;
        std::string library;
        DriverProcess::Environment variables;
        std::vector<std::string> arguments;
    };
    const std::vector<LinkCase> cases = {
        {"the file itself", m_folder.path(), library.string(), {}, {"notice", "smoking"}},
        {"a relative link in another folder", m_folder.path(), (links / "libVelmoraNative.so.0").string(), {},
            {"notice", "smoking"}},
        {"a chain of links", m_folder.path(), (links / "deeper" / "libVelmoraNative.so").string(), {},
            {"notice", "smoking"}},
        {"a relative path to a link", m_folder.path(), "./links/deeper/libVelmoraNative.so", {}, {"notice", "smoking"}},
        {"the soname on a relative LD_LIBRARY_PATH", m_folder.path(), "libVelmoraNative.so.0",
            {{"LD_LIBRARY_PATH", "links"}}, {"notice", "smoking"}},
        {"the same, the program moving on before the start", m_folder.path(), "libVelmoraNative.so.0",
            {{"LD_LIBRARY_PATH", "links"}}, {"notice-elsewhere", "/", "smoking"}},
    };
    std::int64_t noticed = 0;
    for (const LinkCase& entry : cases) {
        SCOPED_TRACE(entry.name);
        const DriverProcess::Result result = driveFrom(entry.from, entry.library, entry.arguments, entry.variables);
        ASSERT_EQ(result.status, 0) << result.errors;
        EXPECT_EQ(result.errors, "");
        EXPECT_EQ(momentsInEvent(result.value("event").value_or("{}"), "smoking"), seededSmokingMoments + ++noticed);
    }
}

// Only the folder beside the real file counts, and only a regular file in
// it: anything else is the start-up alert, the practice untouched.
TEST_F(NativeStartupTest, Locations_ContentElsewhereOrNoFile_ShowsTheAlert)
{
    seed(onboardedState());
    const std::string stateBefore = test::fileBytes(stateFile());
    const MacStrings::Table& texts = MacStrings::table("en");
    const std::vector<std::string> alert = {texts.at("startupError"), texts.at("startupErrorBody"), texts.at("okay")};
    const fs::path library = libraryWithContent(std::nullopt);
    const fs::path links = m_folder / "links";
    fs::create_directories(links / "velmora");
    fs::create_symlink(library, links / "libVelmoraNative.so.0");
    const fs::path resources = library.parent_path() / "velmora";

    struct Placement {
        const char* name;
        std::function<void()> place;
    };
    const std::vector<Placement> cases = {
        {"beside the link only", [&] { test::writeFileBytes(links / "velmora" / "content.json", shippedContent()); }},
        {"in the library's own folder, not in velmora/",
            [&] { test::writeFileBytes(library.parent_path() / "content.json", shippedContent()); }},
        {"a folder named content.json", [&] { fs::create_directories(resources / "content.json"); }},
        {"a dangling link",
            [&] {
                fs::create_directories(resources);
                fs::create_symlink(m_folder / "nothing-here.json", resources / "content.json");
            }},
        {"velmora/ is a file", [&] { test::writeFileBytes(resources, shippedContent()); }},
    };
    for (const Placement& entry : cases) {
        SCOPED_TRACE(entry.name);
        entry.place();
        const DriverProcess::Result result
            = driveFrom(m_folder.path(), (links / "libVelmoraNative.so.0").string(), {"notice", "smoking"});
        EXPECT_NE(result.status, 0);
        EXPECT_EQ(result.errorLines(), alert);
        EXPECT_FALSE(result.value("initial").has_value()) << "the process went on after a failed start";
        EXPECT_EQ(test::fileBytes(stateFile()), stateBefore);
        fs::remove_all(resources);
        fs::remove_all(links / "velmora");
        fs::create_directories(links / "velmora");
        fs::remove(library.parent_path() / "content.json");
    }
}

struct DataHomeCase {
    const char* name;
    // None leaves the variable unset; a value starting with "/" is a path
    // inside the case's folder; anything else is passed as it stands.
    std::optional<std::string> xdgDataHome;
    std::optional<std::string> home;
    // Where the data folder must appear, inside the case's folder.
    const char* expected;
};

// The data folder follows the XDG rules and is made, private, when missing;
// the state file itself is written only by the first change.
TEST_F(NativeStartupTest, Success_FindsOrMakesTheDataFolderAndWritesNoStateFile)
{
    const std::vector<DataHomeCase> cases = {
        {"XDG_DATA_HOME, several levels missing", "/xdg/a/b", "/home", "xdg/a/b"},
        {"XDG_DATA_HOME already there", "/home", "/home", "home"},
        {"no XDG_DATA_HOME", std::nullopt, "/home", "home/.local/share"},
        {"relative XDG_DATA_HOME is ignored", "relative", "/home", "home/.local/share"},
    };
    for (const DataHomeCase& entry : cases) {
        SCOPED_TRACE(entry.name);
        const test::TemporaryFolder folder;
        fs::create_directory(folder / "home", folder.path());
        const auto inFolder = [&folder](const std::optional<std::string>& value) {
            return value && value->starts_with('/') ? std::optional(folder.path().string() + *value) : value;
        };
        DriverProcess::Environment environment = this->environment();
        environment["XDG_DATA_HOME"] = inFolder(entry.xdgDataHome);
        environment["HOME"] = inFolder(entry.home);

        const DriverProcess::Result result
            = DriverProcess::run(DriverProcess::builtLibrary(), "notice", {}, environment);

        ASSERT_EQ(result.status, 0) << result.errors;
        const fs::path expected = folder / entry.expected;
        ASSERT_TRUE(fs::is_directory(expected));
        if (expected != folder / "home") {
            EXPECT_EQ(fs::status(expected).permissions(), fs::perms::owner_all);
        }
        EXPECT_FALSE(fs::exists(expected / "app.velmora.mac" / "practice.json"));
        EXPECT_EQ(result.errors, "");
    }
}

// Two renderers started together on one data folder, as when a user opens
// the program twice or a session starts it beside one already running.
// Only one of them may keep the practice; the other says so and ends
// without touching the file, so no noticing either acknowledged is lost.
TEST_F(NativeStartupTest, TwoProcessesOnOneFolder_OneOwnsItAndNoAcknowledgedNoticingIsLost)
{
    constexpr int noticingsEach = 300;
    seed(onboardedState());

    std::array<std::future<DriverProcess::Result>, 2> runs;
    for (auto& run : runs)
        run = std::async(std::launch::async, [this] {
            return drive("race", {std::to_string(noticingsEach), "smoking"});
        });

    std::int64_t acknowledged = 0;
    int owners = 0;
    const MacStrings::Table& texts = MacStrings::table("en");
    for (auto& run : runs) {
        const DriverProcess::Result result = run.get();
        if (result.status == 0) {
            ++owners;
            const std::int64_t count = std::stoll(result.value("acknowledged").value_or("-1"));
            EXPECT_EQ(count, noticingsEach) << "an owner's noticings all reach the file";
            acknowledged += count;
            continue;
        }
        EXPECT_EQ(result.errorLines(),
            (std::vector<std::string>{texts.at("alreadyRunning"), texts.at("alreadyRunningBody"), texts.at("okay")}));
        EXPECT_FALSE(result.value("acknowledged").has_value()) << "a process that does not own the folder went on";
    }
    // One after the other, should the first have ended before the second
    // started, both may own the folder in turn.
    EXPECT_GE(owners, 1);
    EXPECT_EQ(momentsInFile("smoking"), seededSmokingMoments + acknowledged);
    std::cout << "[ counts   ] owners " << owners << ", acknowledged " << acknowledged << ", in the file "
              << momentsInFile("smoking") - seededSmokingMoments << '\n';
}

struct Environment {
    const char* name;
    DriverProcess::Environment changes;
};

// Starts where a service manager, a bare terminal or a script may start
// the renderer: the library falls back as it can and keeps the practice.
TEST_F(NativeStartupTest, SparseEnvironments_StartAndKeepThePractice)
{
    const std::vector<Environment> cases = {
        {"no HOME", {{"HOME", std::nullopt}}},
        {"no display", {{"DISPLAY", std::nullopt}, {"WAYLAND_DISPLAY", std::nullopt}}},
        {"no session bus", {{"DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/bus"}}},
        {"nothing at all",
            {{"HOME", std::nullopt}, {"XDG_CONFIG_HOME", std::nullopt}, {"DISPLAY", std::nullopt},
                {"DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/bus"}}},
    };
    for (const Environment& entry : cases) {
        SCOPED_TRACE(entry.name);
        fs::remove_all(dataHome());
        seed(onboardedState());
        DriverProcess::Environment environment = this->environment();
        for (const auto& [variable, value] : entry.changes)
            environment[variable] = value;

        const DriverProcess::Result result
            = DriverProcess::run(DriverProcess::builtLibrary(), "notice", {"smoking"}, environment);

        ASSERT_EQ(result.status, 0) << result.errors;
        EXPECT_EQ(momentsInEvent(result.value("event").value_or("{}"), "smoking"), seededSmokingMoments + 1);
        EXPECT_EQ(momentsInFile("smoking"), seededSmokingMoments + 1);
    }
}

} // namespace
} // namespace velmora
