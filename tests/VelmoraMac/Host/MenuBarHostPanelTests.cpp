#include <memory>
#include <stdexcept>
#include <variant>

#include <gtest/gtest.h>

#include "HostFixture.h"
#include "VelmoraMac/Panel/PanelContent.h"
#include "VelmoraMac/Platform/Headless/HeadlessUrlOpener.h"

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

    // Uses the page's primary control as the user would: through the body.
    void tapFooter() const
    {
        const PanelBody body = pages().body();
        ASSERT_TRUE(body.footer);
        ASSERT_TRUE(body.footer->primary.enabled);
        body.footer->primary.action();
    }

    template <typename Page>
    [[nodiscard]] Page shown() const
    {
        const PanelBody body = pages().body();
        const Page* page = std::get_if<Page>(&body.page);
        if (page == nullptr)
            throw std::logic_error("the panel shows another page");
        return *page;
    }
};

TEST_F(MenuBarHostPanelTest, FreshInstall_OnboardsThroughThePanelIntoThePond)
{
    const auto window = addRendererWindow();
    start();
    ASSERT_TRUE(panel());
    EXPECT_TRUE(panel()->isVisible());
    EXPECT_FALSE(window->isVisible());
    EXPECT_EQ(&pages().model(), &model());
    (void)shown<WelcomePage>();

    tapFooter();
    for (int step = 0; step < 5; ++step) {
        const auto page = shown<SelectionPage>();
        ASSERT_FALSE(page.topics.empty());
        page.topics.front().toggle();
        tapFooter();
    }
    (void)shown<LoginIntroPage>();
    tapFooter();
    ASSERT_EQ(model().page().get(), "hint");
    shown<ExplanationPage>().understood.action();

    EXPECT_TRUE(host().visible());
    EXPECT_FALSE(panel()->isVisible());
    EXPECT_TRUE(window->isVisible());
    EXPECT_TRUE(window->isKeyWindow());
    EXPECT_TRUE(host().interactive());
    const PracticeState saved = PracticeState::fromJSON(test::fileBytes(stateFile()));
    EXPECT_TRUE(saved.onboarded);
    EXPECT_EQ(saved.selected.size(), 5U);
    EXPECT_TRUE(takeEvent()) << "the pond's first snapshot";
}

TEST_F(MenuBarHostPanelTest, Pages_ReadTheLoginItemWhenShownAndWhenTheUserComesBack)
{
    storeOnboarded();
    const auto window = addRendererWindow();
    m_platform->loginItemService().setStatus(LoginItemStatus::enabled);
    start();
    EXPECT_FALSE(panel()) << "the pond comes first once onboarded";

    host().settings();
    EXPECT_EQ(pages().selected(), onboardedState().selected) << "the working selection starts as saved";
    EXPECT_TRUE(model().loginEnabled().get());
    EXPECT_FALSE(model().loginRequiresApproval().get());

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
