#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "PanelTestFixture.h"

namespace velmora {
namespace {

using test::onboardedState;
using test::shownPage;
using test::tap;

const TopicCard& card(const SelectionPage& page, std::string_view id)
{
    for (const TopicCard& card : page.topics) {
        if (card.topicID == id)
            return card;
    }
    throw std::logic_error("no card for the topic");
}

class PracticeViewOnboardingTest : public test::PanelTest { };

TEST_F(PracticeViewOnboardingTest,
    FreshInstall_WalksFromWelcomeThroughTheFiveStepsAndTheLoginIntroductionToTheHintAndThePond)
{
    start();
    PanelBody body = view().body();
    (void)shownPage<WelcomePage>(body);
    EXPECT_FALSE(body.header.back);
    tap(body.footer->primary.action);

    // Step 1 of 5: back to the welcome, but no cancel before onboarding.
    body = view().body();
    EXPECT_TRUE(body.header.back);
    EXPECT_FALSE(body.header.cancel);
    EXPECT_EQ(body.footer->counter->text, text("selected", 0));
    EXPECT_TRUE(body.footer->primary.enabled) << "only the last step is a gate";

    // Choosing and un-choosing a topic changes the card and the counter only.
    tap(card(shownPage<SelectionPage>(body), "alcohol").toggle);
    body = view().body();
    EXPECT_TRUE(card(shownPage<SelectionPage>(body), "alcohol").selected);
    EXPECT_EQ(body.footer->counter->text, text("selected", 1));
    tap(card(shownPage<SelectionPage>(body), "alcohol").toggle);
    EXPECT_FALSE(card(shownPage<SelectionPage>(view().body()), "alcohol").selected);
    EXPECT_TRUE(state().selected.empty()) << "nothing is saved before the last step";

    for (std::int64_t group = 1; group <= 4; ++group)
        tap(view().body().footer->primary.action);

    // The last step with nothing chosen asks for a choice and holds the button.
    body = view().body();
    EXPECT_EQ(body.footer->counter->text, text("chooseOne", 0));
    EXPECT_EQ(body.footer->primary.label->text, text("next")) << "\"save\" only once onboarded";
    EXPECT_FALSE(body.footer->primary.enabled);
    tap(body.footer->primary.action);
    EXPECT_EQ(page(), "selection") << "a disabled button does nothing";

    tap(card(shownPage<SelectionPage>(body), "craving").toggle);
    tap(view().body().footer->primary.action);

    // The choice is committed; the login introduction comes next.
    ASSERT_EQ(page(), "loginIntro");
    EXPECT_EQ(savedState().selected, (PracticeState::StringSet{"craving"}));
    tap(shownPage<LoginIntroPage>(view().body()).login.toggle.toggle);
    EXPECT_EQ(m_login->requests, std::vector<bool>{true});

    // Finishing onboarding shows the one-time hint, then the pond.
    tap(view().body().footer->primary.action);
    ASSERT_EQ(page(), "hint");
    EXPECT_TRUE(savedState().onboarded);
    tap(shownPage<ExplanationPage>(view().body()).understood.action);
    EXPECT_TRUE(savedState().hintSeen);
    EXPECT_EQ(m_pondEntered, 1);
}

TEST_F(PracticeViewOnboardingTest, Back_StepsDownThenLeavesToWelcomeOrSettings)
{
    struct BackCase {
        const char* name = nullptr;
        bool onboarded = false;
        std::int64_t stepsForward = 0;
        const char* page = nullptr;
        std::int64_t group = 0;
    };
    const BackCase cases[] = {
        {"first step, not onboarded", false, 0, "welcome", 0},
        {"first step, onboarded", true, 0, "settings", 0},
        {"third step", false, 2, "selection", 1},
        {"last step, onboarded", true, 4, "selection", 3},
    };
    for (const BackCase& c : cases) {
        SCOPED_TRACE(c.name);
        std::filesystem::remove(url());
        start(c.onboarded ? std::optional(onboardedState()) : std::nullopt);
        if (c.onboarded)
            view().openTopics();
        else
            view().advance();
        for (std::int64_t step = 0; step < c.stepsForward; ++step)
            view().advance();
        tap(view().body().header.back->action);
        EXPECT_EQ(page(), c.page);
        EXPECT_EQ(view().group(), c.group);
    }
}

TEST_F(PracticeViewOnboardingTest, WorkingSelection_SurvivesBackCancelAndCloseAndIsResetOnlyByEnteringAgain)
{
    start(onboardedState({"phone"}));
    view().openTopics();
    ASSERT_EQ(view().selected(), (PracticeState::StringSet{"phone"})) << "entering starts from the saved selection";
    view().toggleTopic("alcohol");
    view().advance();

    // Close leaves the page as it is: the panel reopens on the same step.
    tap(view().body().header.close.action);
    EXPECT_EQ(m_pondEntered, 1);
    EXPECT_EQ(page(), "selection");
    EXPECT_EQ(view().group(), 1);
    EXPECT_EQ(view().selected(), (PracticeState::StringSet{"alcohol", "phone"}));

    // Back keeps the working set too; cancel saves nothing.
    view().back();
    EXPECT_EQ(view().group(), 0);
    const PanelBody body = view().body();
    ASSERT_TRUE(body.header.cancel);
    tap(body.header.cancel->action);
    EXPECT_EQ(page(), "settings");
    EXPECT_EQ(view().selected(), (PracticeState::StringSet{"alcohol", "phone"}));
    EXPECT_EQ(savedState().selected, (PracticeState::StringSet{"phone"}));

    // The topics row starts over from what is saved.
    tap(shownPage<SettingsPage>(view().body()).topics.topics.action);
    EXPECT_EQ(page(), "selection");
    EXPECT_EQ(view().group(), 0);
    EXPECT_EQ(view().selected(), (PracticeState::StringSet{"phone"}));
}

TEST_F(PracticeViewOnboardingTest, Appear_FillsTheWorkingSelectionAndReadsTheLoginStatusOnlyTheFirstTime)
{
    PracticeState chosen;
    chosen.selected = {"money"};
    saveBeforeStart(chosen);
    m_login->status = 2;
    model().load();
    ASSERT_EQ(page(), "loginIntro");
    EXPECT_TRUE(view().selected().empty()) << "empty until first shown";

    view().appear();
    EXPECT_EQ(view().selected(), (PracticeState::StringSet{"money"}));
    const PanelBody body = view().body();
    const LoginBlock& login = shownPage<LoginIntroPage>(body).login;
    EXPECT_TRUE(login.toggle.control.isOn);
    ASSERT_TRUE(login.approval);
    EXPECT_EQ(login.approval->text, text("loginApproval"));

    view().toggleTopic("phone");
    view().appear();
    EXPECT_EQ(view().selected(), (PracticeState::StringSet{"money", "phone"}));
}

} // namespace
} // namespace velmora
