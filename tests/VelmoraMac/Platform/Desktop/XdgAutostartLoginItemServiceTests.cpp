#include <chrono>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "DesktopSession.h"
#include "VelmoraCore/DurableFile.h"
#include "VelmoraMac/Platform/Desktop/LoginLaunchMarker.h"
#include "VelmoraMac/Platform/Desktop/XdgAutostartLoginItemService.h"
#include "VelmoraMac/Platform/LoginItemService.h"
#include "tests/VelmoraCore/TemporaryFolder.h"

namespace velmora {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

constexpr const char* launchingEntry = "[Desktop Entry]\nType=Application\nExec=pond\n";
constexpr const char* hiddenEntry = "[Desktop Entry]\nType=Application\nExec=pond\nHidden=true\n";

std::vector<std::string> pondCommand()
{
    return LoginLaunchMarker::loginCommand("/opt/pond/pond", {"pond", "--fps=60"});
}

class XdgAutostartLoginItemServiceTest : public testing::Test {
protected:
    [[nodiscard]] fs::path entry() const
    {
        return m_folder / "config" / "autostart" / XdgAutostartLoginItemService::entryName;
    }

    [[nodiscard]] XdgAutostartLoginItemService service(std::vector<std::string> command = pondCommand(),
        std::vector<std::string> settings = {"systemsettings", "kcm_autostart"})
    {
        return {entry(), std::move(command), std::move(settings), [this](const std::vector<std::string>& launched) {
                    m_launched.push_back(launched);
                    return false;
                }};
    }

    // Iterates the main loop, where the autostart folder's changes are
    // told, until `login` reports `expected`.
    static bool seen(const LoginItemService& login, LoginItemStatus expected)
    {
        return test::iterateUntil([&] { return login.status() == expected; }, 20s);
    }

    test::TemporaryFolder m_folder;
    std::vector<std::vector<std::string>> m_launched;
};

TEST_F(XdgAutostartLoginItemServiceTest, Switching_WritesAndRemovesTheEntryTheSessionStarts)
{
    XdgAutostartLoginItemService login = service();
    EXPECT_EQ(login.status(), LoginItemStatus::notRegistered);
    EXPECT_NO_THROW(login.unregisterLoginItem()) << "nothing to remove is fine";

    login.registerLoginItem();
    EXPECT_EQ(login.status(), LoginItemStatus::enabled);
    const std::string text = DurableFile::read(entry());
    EXPECT_NE(text.find("\nExec=env VELMORA_LOGIN_LAUNCH=1 /opt/pond/pond --fps=60\n"), std::string::npos) << text;
    login.registerLoginItem();
    EXPECT_EQ(login.status(), LoginItemStatus::enabled) << "registering twice changes nothing";

    // The desktop's own switch turned it off: on again means rewritten.
    DurableFile::write(entry(), hiddenEntry);
    ASSERT_TRUE(seen(login, LoginItemStatus::notRegistered));
    login.registerLoginItem();
    EXPECT_EQ(login.status(), LoginItemStatus::enabled);

    login.unregisterLoginItem();
    EXPECT_FALSE(fs::exists(entry()));
    EXPECT_EQ(login.status(), LoginItemStatus::notRegistered);
}

TEST_F(XdgAutostartLoginItemServiceTest, ChangesMadeElsewhere_AreSeenWhenTheMainLoopTellsOfThem)
{
    // The autostart folder does not exist yet: it is watched all the same.
    XdgAutostartLoginItemService login = service();
    fs::create_directories(entry().parent_path());
    DurableFile::write(entry(), launchingEntry);
    EXPECT_EQ(login.status(), LoginItemStatus::notRegistered)
        << "nothing is read until the main loop tells of the change";
    ASSERT_TRUE(seen(login, LoginItemStatus::enabled)) << "an entry in a folder made after the service";

    DurableFile::write(entry(), hiddenEntry);
    EXPECT_EQ(login.status(), LoginItemStatus::enabled) << "nothing is read until the main loop tells of the change";
    ASSERT_TRUE(seen(login, LoginItemStatus::notRegistered)) << "switched off";
    DurableFile::write(entry(), launchingEntry);
    ASSERT_TRUE(seen(login, LoginItemStatus::enabled)) << "switched on";
    fs::remove(entry());
    ASSERT_TRUE(seen(login, LoginItemStatus::notRegistered)) << "deleted";
}

TEST_F(XdgAutostartLoginItemServiceTest, Refusals_RaiseLoginItemErrorAndChangeNothing)
{
    // A file where the autostart folder belongs.
    fs::create_directories(entry().parent_path().parent_path());
    DurableFile::write(entry().parent_path(), "in the way");
    XdgAutostartLoginItemService login = service();
    EXPECT_THROW(login.registerLoginItem(), LoginItemError);
    EXPECT_EQ(login.status(), LoginItemStatus::notRegistered);
    EXPECT_EQ(DurableFile::read(entry().parent_path()), "in the way");

    XdgAutostartLoginItemService unknownProgram = service({});
    EXPECT_THROW(unknownProgram.registerLoginItem(), LoginItemError);

    fs::remove(entry().parent_path());
    fs::create_directories(entry() / "a folder, not an entry");
    EXPECT_THROW(login.unregisterLoginItem(), LoginItemError);
}

TEST_F(XdgAutostartLoginItemServiceTest, ForAConfigurationHome_ThereIsAlwaysAServiceAndWithoutOneItRefusesToRegister)
{
    const NotNullShared<LoginItemService> none = XdgAutostartLoginItemService::forConfigHome(std::nullopt);
    EXPECT_EQ(none->status(), LoginItemStatus::notRegistered);
    try {
        none->registerLoginItem();
        ADD_FAILURE() << "registered with nowhere to write";
    } catch (const LoginItemError& error) {
        EXPECT_STRNE(error.what(), "") << "the panel shows why";
    }
    EXPECT_EQ(none->status(), LoginItemStatus::notRegistered);
    EXPECT_NO_THROW(none->unregisterLoginItem()) << "nothing to remove is fine";

    const NotNullShared<LoginItemService> some = XdgAutostartLoginItemService::forConfigHome(m_folder / "config");
    some->registerLoginItem();
    EXPECT_TRUE(fs::exists(entry()));
    EXPECT_EQ(some->status(), LoginItemStatus::enabled);
}

TEST_F(XdgAutostartLoginItemServiceTest, Settings_OpenTheDesktopsPanelWhereThereIsOne)
{
    service().openLoginItemsSettings();
    service({}, {}).openLoginItemsSettings();
    EXPECT_EQ(m_launched, (std::vector<std::vector<std::string>>{{"systemsettings", "kcm_autostart"}}));
}

TEST(XdgAutostartLocations, ConfigHome_FollowsTheXdgRules)
{
    EXPECT_EQ(XdgAutostartLoginItemService::configHomeFrom("/xdg", "/home/me"), fs::path("/xdg"));
    EXPECT_EQ(XdgAutostartLoginItemService::configHomeFrom("", "/home/me"), fs::path("/home/me/.config"));
    EXPECT_EQ(XdgAutostartLoginItemService::configHomeFrom("relative", "/home/me"), fs::path("/home/me/.config"));
    EXPECT_EQ(XdgAutostartLoginItemService::configHomeFrom("", "relative"), std::nullopt);
}

TEST(LoginLaunchMarker, LaunchEvent_IsALoginLaunchOnlyWithTheMarkersValue)
{
    const LaunchEvent login{LaunchEvent::openApplication, LaunchEvent::launchedAsLoginItem};
    const LaunchEvent plain{LaunchEvent::openApplication, std::nullopt};
    EXPECT_EQ(LoginLaunchMarker::launchEvent("1"), login);
    EXPECT_EQ(LoginLaunchMarker::launchEvent(std::nullopt), plain);
    EXPECT_EQ(LoginLaunchMarker::launchEvent(""), plain);
    EXPECT_EQ(LoginLaunchMarker::launchEvent("0"), plain);
    EXPECT_EQ(LoginLaunchMarker::launchEvent("yes"), plain);
}

// The program's own arguments are left as they are, so that a renderer
// that refuses any argument it does not know starts at login all the same.
TEST(LoginLaunchMarker, LoginCommand_RelaunchesThisProgramWithItsArgumentsAndTheVariable)
{
    EXPECT_EQ(LoginLaunchMarker::loginCommand("/opt/pond", {"pond", "-v"}),
        (std::vector<std::string>{"env", "VELMORA_LOGIN_LAUNCH=1", "/opt/pond", "-v"}));
    EXPECT_EQ(LoginLaunchMarker::loginCommand("/opt/pond", {}),
        (std::vector<std::string>{"env", "VELMORA_LOGIN_LAUNCH=1", "/opt/pond"}));
}

// What the library starts does not count as started at login; the rest of
// the environment goes along.
TEST(LoginLaunchMarker, WithoutMarker_LeavesEverythingElse)
{
    gchar** environment
        = g_environ_setenv(g_environ_setenv(nullptr, "VELMORA_LOGIN_LAUNCH", "1", TRUE), "LANG", "fr_FR.UTF-8", TRUE);
    environment = LoginLaunchMarker::withoutMarker(environment);
    EXPECT_EQ(g_environ_getenv(environment, "VELMORA_LOGIN_LAUNCH"), nullptr);
    EXPECT_STREQ(g_environ_getenv(environment, "LANG"), "fr_FR.UTF-8");
    g_strfreev(environment);
}

} // namespace
} // namespace velmora
