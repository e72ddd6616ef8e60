#include <vector>

#include <gtest/gtest.h>

#include "VelmoraMac/Platform/Headless/HeadlessLoginItemService.h"
#include "VelmoraMac/Platform/LoginItemError.h"

namespace velmora {
namespace {

using Request = HeadlessLoginItemService::Request;

TEST(HeadlessLoginItemService, Switching_MovesTheStatusAndRecordsEveryRequest)
{
    HeadlessLoginItemService service;
    EXPECT_EQ(service.status(), LoginItemStatus::notRegistered);
    service.registerLoginItem();
    EXPECT_EQ(service.status(), LoginItemStatus::enabled);
    service.unregisterLoginItem();
    EXPECT_EQ(service.status(), LoginItemStatus::notRegistered);

    service.setStatusAfterRegistering(LoginItemStatus::requiresApproval);
    service.registerLoginItem();
    EXPECT_EQ(service.status(), LoginItemStatus::requiresApproval);
    service.openLoginItemsSettings();

    EXPECT_EQ(service.requests(), (std::vector<Request>{Request::registerLoginItem, Request::unregisterLoginItem, Request::registerLoginItem, Request::openLoginItemsSettings}));
}

TEST(HeadlessLoginItemService, RefusedSwitch_ThrowsTheSystemsTextAndChangesNothing)
{
    HeadlessLoginItemService service(LoginItemStatus::enabled);
    service.setUnregisterError("Operation not permitted");
    try {
        service.unregisterLoginItem();
        ADD_FAILURE() << "expected LoginItemError";
    } catch (const LoginItemError& error) {
        EXPECT_STREQ(error.what(), "Operation not permitted");
    }
    EXPECT_EQ(service.status(), LoginItemStatus::enabled);

    service.setStatus(LoginItemStatus::notFound);
    service.setRegisterError("Application not found");
    EXPECT_THROW(service.registerLoginItem(), LoginItemError);
    EXPECT_EQ(service.status(), LoginItemStatus::notFound);

    service.setRegisterError(std::nullopt);
    service.registerLoginItem();
    EXPECT_EQ(service.status(), LoginItemStatus::enabled);
    EXPECT_EQ(service.requests().size(), 3U) << "refused requests were asked too";
}

} // namespace
} // namespace velmora
