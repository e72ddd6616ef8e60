#include <memory>
#include <stdexcept>

#include <gtest/gtest.h>

#include "HostFixture.h"
#include "VelmoraMac/Panel/PanelContent.h"

namespace velmora {
namespace {

// The settings panel's window hosts the panel's pages, so the host's
// showPanel and the pages' flow run together here, as the user meets them.
class MenuBarHostPanelTest : public test::HostFixture {
protected:
    [[nodiscard]] PracticeView& pages() const
    {
        const auto content = std::dynamic_pointer_cast<PanelContent>(panel()->content());
        if (!content)
            throw std::logic_error("the panel hosts no pages");
        return content->view();
    }
};

TEST_F(MenuBarHostPanelTest, Pages_ReadTheLoginItemWhenShownAndWhenTheUserComesBack)
{
    storeOnboarded();
    const auto window = addRendererWindow();
    m_platform->loginItemService().setStatus(LoginItemStatus::enabled);
    start();
    host().settings();
    EXPECT_EQ(pages().selected(), onboardedState().selected) << "the working selection starts as saved";
    EXPECT_TRUE(model().loginEnabled().get());

    // Changed in the system's settings while the user was away.
    application().resignActive();
    m_platform->loginItemService().setStatus(LoginItemStatus::requiresApproval);
    EXPECT_FALSE(model().loginRequiresApproval().get());
    application().activate();
    EXPECT_TRUE(model().loginRequiresApproval().get());

    // The panel's close button returns to the pond behind it.
    pages().body().header.close.action();
    EXPECT_FALSE(panel()->isVisible());
    EXPECT_TRUE(window->isVisible());
    EXPECT_TRUE(host().interactive());
}

} // namespace
} // namespace velmora
