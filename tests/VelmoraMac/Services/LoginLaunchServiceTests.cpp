#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "VelmoraMac/Platform/Headless/HeadlessLoginItemService.h"
#include "VelmoraMac/Platform/LoginItemService.h"
#include "VelmoraMac/Services/LoginLaunchService.h"

namespace velmora {
namespace {

struct StatusCase {
    const char* name = "";
    LoginItemStatus status = LoginItemStatus::notRegistered;
    bool enabled = false;
    bool requiresApproval = false;
};

TEST(LoginLaunchService, Status_EnabledWhenRegisteredOrAwaitingApproval)
{
    const StatusCase cases[] = {
        {"not registered", LoginItemStatus::notRegistered, false, false},
        {"enabled", LoginItemStatus::enabled, true, false},
        {"awaiting approval", LoginItemStatus::requiresApproval, true, true},
        {"not found", LoginItemStatus::notFound, false, false},
        {"a value the system added later", static_cast<LoginItemStatus>(7), false, false},
    };
    const auto system = std::make_shared<HeadlessLoginItemService>();
    const LoginLaunchService service(system);
    // One service throughout: the status is read anew on every call.
    for (const auto& c : cases) {
        system->setStatus(c.status);
        EXPECT_EQ(service.enabled(), c.enabled) << c.name;
        EXPECT_EQ(service.requiresApproval(), c.requiresApproval) << c.name;
    }
}

TEST(LoginLaunchService, Switch_RegistersOrUnregistersAndPassesARefusalOn)
{
    const auto system = std::make_shared<HeadlessLoginItemService>();
    LoginLaunchService service(system);
    service.setEnabled(true);
    EXPECT_TRUE(service.enabled());
    system->setUnregisterError("Operation not permitted");
    EXPECT_THROW(service.setEnabled(false), LoginItemError);
    EXPECT_TRUE(service.enabled());
}

struct EventCase {
    const char* name = "";
    std::optional<LaunchEvent> event;
    bool login = false;
};

TEST(LoginLaunchService, IsLoginEvent_OnlyAFirstLaunchMarkedAsLoginItem)
{
    const EventCase cases[] = {
        {"no event", std::nullopt, false},
        {"open, launched as login item", LaunchEvent{"oapp", "lgit"}, true},
        {"open without the parameter", LaunchEvent{"oapp", std::nullopt}, false},
        {"open with another launch kind", LaunchEvent{"oapp", "????"}, false},
        {"reopen, even marked as login item", LaunchEvent{"rapp", "lgit"}, false},
    };
    for (const auto& c : cases)
        EXPECT_EQ(LoginLaunchService::isLoginEvent(c.event), c.login) << c.name;
}

} // namespace
} // namespace velmora
