#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "VelmoraMac/Platform/Desktop/DesktopNotificationSettingsOpener.h"
#include "VelmoraMac/Platform/Headless/HeadlessDiagnosticLog.h"

namespace velmora {
namespace {

struct DesktopCase {
    std::string_view currentDesktop;
    std::vector<std::string> command;
};

TEST(DesktopNotificationSettingsOpener, SettingsCommand_MatchesAnyDesktopOfTheListWhole)
{
    const DesktopCase cases[] = {
        {.currentDesktop = "GNOME", .command = {"gnome-control-center", "notifications"}},
        {.currentDesktop = "ubuntu:GNOME", .command = {"gnome-control-center", "notifications"}},
        {.currentDesktop = "GNOMEish", .command = {}},
        {.currentDesktop = "", .command = {}},
    };
    for (const DesktopCase& testCase : cases)
        EXPECT_EQ(DesktopNotificationSettingsOpener::settingsCommandFor(testCase.currentDesktop), testCase.command)
            << testCase.currentDesktop;
}

TEST(DesktopNotificationSettingsOpener, NothingToOpen_LeavesOneDiagnosticLine)
{
    auto log = std::make_shared<HeadlessDiagnosticLog>();
    std::vector<std::vector<std::string>> launched;
    const auto launcher = [&](const std::vector<std::string>& command) {
        launched.push_back(command);
        return command.front() != "missing";
    };

    DesktopNotificationSettingsOpener({"xfce4-notifyd-config"}, launcher, log).openNotificationSettings();
    DesktopNotificationSettingsOpener({"missing", "notifications"}, launcher, log).openNotificationSettings();
    DesktopNotificationSettingsOpener({}, launcher, log).openNotificationSettings();

    EXPECT_EQ(
        launched, (std::vector<std::vector<std::string>>{{"xfce4-notifyd-config"}, {"missing", "notifications"}}));
    EXPECT_EQ(log->lines().size(), 2U) << "a line for the failed start and one for no command";
}

} // namespace
} // namespace velmora
