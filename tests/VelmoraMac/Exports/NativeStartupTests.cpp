#include <filesystem>
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
    // beside it as its content file, or none.
    [[nodiscard]] fs::path libraryWithContent(const std::optional<std::string>& content) const
    {
        const fs::path folder = m_folder / "lib";
        fs::create_directories(folder);
        fs::path library = folder / "libVelmoraNative.so";
        fs::copy_file(DriverProcess::builtLibrary(), library);
        if (content)
            test::writeFileBytes(folder / "content.json", *content);
        return library;
    }

    [[nodiscard]] static std::string shippedContent() { return test::fileBytes(DriverProcess::builtLibrary().parent_path() / "content.json"); }
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
        const std::vector<std::string> alert = {texts.at("startupError"), texts.at("startupErrorBody"), texts.at("okay")};
        EXPECT_EQ(result.errorLines(), alert);
        EXPECT_EQ(test::fileBytes(stateFile()), stateBefore);
        EXPECT_EQ(std::distance(fs::directory_iterator(stateFile().parent_path()), fs::directory_iterator()), 1);
        if (entry.dataHomeBlocked) {
            EXPECT_EQ(test::fileBytes(blocker), "in the way");
        }
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

        const DriverProcess::Result result = DriverProcess::run(DriverProcess::builtLibrary(), "notice", {}, environment);

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

} // namespace
} // namespace velmora
