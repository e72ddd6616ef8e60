#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "PanelTestFixture.h"
#include "VelmoraMac/Panel/TimeOfDay.h"

namespace velmora {
namespace {

using test::onboardedState;
using test::shownPage;
using test::tap;
using test::utc;

class PracticeViewSettingsTest : public test::PanelTest {
protected:
    SettingsPage settings() { return shownPage<SettingsPage>(view().body()); }
};

TEST_F(PracticeViewSettingsTest, LanguagePage_ListsSystemAndEveryLanguageAndClosesOnlyWhenTheChoiceIsSaved)
{
    nlohmann::json content = test::shippedContentDocument();
    content["languages"].erase("pi");
    saveBeforeStart(onboardedState());
    rebuild(content);
    model().load();

    tap(settings().language.row.action);
    ASSERT_EQ(page(), "language");
    PanelBody body = view().body();
    ASSERT_TRUE(body.header.back);
    const auto& languages = shownPage<LanguagePage>(body);
    std::vector<std::string> codes;
    for (const auto& choice : languages.choices)
        codes.push_back(choice.code);
    EXPECT_EQ(codes, (std::vector<std::string>{"system", "ru", "en", "fr", "hi", "es", "pt", "pi"}));
    EXPECT_EQ(languages.choices[7].row.title.text, "pi") << "a language the catalog has no name for shows its code";

    // Saved: the panel speaks French at once and returns to the settings.
    tap(languages.choices[3].row.action);
    EXPECT_EQ(page(), "settings");
    EXPECT_EQ(savedState().language, "fr");
    body = view().body();
    EXPECT_EQ(body.header.title.text, model().catalog().text("settings", "fr"));
    EXPECT_EQ(shownPage<SettingsPage>(body).language.row.subtitle->text, "Français");

    // Not saved: the page stays and the error shows under it in red.
    view().openLanguage();
    view().chooseLanguage("xx");
    EXPECT_EQ(page(), "language");
    body = view().body();
    ASSERT_TRUE(body.errorLine);
    EXPECT_EQ(body.errorLine->text, model().catalog().text("saveError", "fr"));

    tap(body.header.back->action);
    EXPECT_EQ(page(), "settings");
}

TEST_F(PracticeViewSettingsTest, ReminderSwitch_WithPermissionDenied_WarnsAndOffersTheSettings)
{
    start(onboardedState());
    tap(settings().reminder.toggle.toggle);
    m_reminders->answerRequest(false);

    EXPECT_FALSE(savedState().reminderEnabled);
    const SettingsPage::Reminder reminder = settings().reminder;
    EXPECT_FALSE(reminder.toggle.control.isOn);
    EXPECT_EQ(reminder.toggle.body.text, text("permissionDenied"));
    ASSERT_TRUE(reminder.openSettings);
    tap(reminder.openSettings->action);
    EXPECT_EQ(m_notificationSettingsOpened, 1);
}

TEST_F(PracticeViewSettingsTest, TimePicker_IsEnabledOnlyWhileRemindersAreOnAndAllowed)
{
    struct PickerCase {
        bool reminderEnabled = false;
        bool denied = false;
        bool enabled = false;
    };
    const PickerCase cases[] = {
        {false, false, false},
        {false, true, false},
        {true, false, true},
        {true, true, false},
    };
    for (const PickerCase& c : cases) {
        SCOPED_TRACE(testing::Message() << "reminder " << c.reminderEnabled << ", denied " << c.denied);
        PracticeState stored = onboardedState();
        stored.reminderEnabled = c.reminderEnabled;
        start(stored);
        model().setReminderPermissionDenied(c.denied);
        EXPECT_EQ(settings().reminder.time.enabled, c.enabled);
        EXPECT_EQ(view().setReminderTime(utc(2025, 3, 15, 5, 15)), c.enabled);
        EXPECT_EQ(savedState().reminderHour, c.enabled ? 7 : 20);
    }
}

TEST_F(PracticeViewSettingsTest, TimePicker_ReadsTodayInTheUsersCalendarAndWritesItsHourAndMinute)
{
    PracticeState stored = onboardedState();
    stored.reminderEnabled = true;
    start(stored);

    // Now is 00:30 on the 15th in Helsinki (UTC+2), still the 14th in UTC.
    ReminderTimePicker picker = settings().reminder.time;
    EXPECT_EQ(picker.date, utc(2025, 3, 15, 18, 0));
    EXPECT_EQ(picker.hour, 20);
    EXPECT_EQ(picker.minute, 0);

    picker.pick(utc(2025, 3, 20, 4, 45, 30));
    EXPECT_EQ(savedState().reminderHour, 6);
    EXPECT_EQ(savedState().reminderMinute, 45);
    picker = settings().reminder.time;
    EXPECT_EQ(picker.date, utc(2025, 3, 15, 4, 45));
    EXPECT_EQ(picker.hour, 6);
    EXPECT_EQ(picker.minute, 45);
}

TEST_F(PracticeViewSettingsTest, TimeOfDay_FollowsTheRemindersThroughDaylightSavingChanges)
{
    const UserCalendar helsinki = UserCalendar::inTimeZone("Europe/Helsinki");
    struct DayCase {
        const char* name = nullptr;
        Instant now;
        TimeOfDay time;
        std::optional<Instant> expected;
    };
    const DayCase cases[] = {
        {"ordinary winter day", utc(2025, 1, 10, 12), {20, 0}, utc(2025, 1, 10, 18)},
        {"inside the spring gap: the first time after it", utc(2025, 3, 30, 12), {3, 30}, utc(2025, 3, 30, 1)},
        {"twice in autumn: the first occurrence", utc(2025, 10, 26, 12), {3, 30}, utc(2025, 10, 26, 0, 30)},
        {"outside the clock", utc(2025, 1, 10, 12), {24, 0}, std::nullopt},
        {"negative minute", utc(2025, 1, 10, 12), {8, -1}, std::nullopt},
    };
    for (const DayCase& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(c.time.on(c.now, helsinki), c.expected);
    }
}

TEST_F(PracticeViewSettingsTest, LoginBlock_ShowsApprovalAndErrorsAndOpensTheLoginItemsSettings)
{
    start(onboardedState());
    m_login->statusAfterRegistering = 2;
    tap(settings().login.toggle.toggle);
    LoginBlock login = settings().login;
    EXPECT_TRUE(login.toggle.control.isOn) << "waiting for approval counts as on";
    ASSERT_TRUE(login.approval);
    ASSERT_TRUE(login.openSettings);
    tap(login.openSettings->action);
    EXPECT_EQ(m_loginItems->requests(),
        std::vector<HeadlessLoginItemService::Request>{HeadlessLoginItemService::Request::openLoginItemsSettings});
    EXPECT_FALSE(login.error);

    m_login->refuse = true;
    tap(login.toggle.toggle);
    login = settings().login;
    ASSERT_TRUE(login.error);
    EXPECT_EQ(login.error->text, text("loginError"));
    EXPECT_TRUE(login.toggle.control.isOn) << "the status is read again, unchanged";
    m_login->refuse = false;
    tap(login.toggle.toggle);
    EXPECT_FALSE(settings().login.error) << "a switch that succeeds clears the error";
    EXPECT_EQ(m_login->requests, (std::vector<bool>{true, false, false}));
    tap(settings().login.toggle.toggle);

    // Approved in the system settings meanwhile: seen when the application
    // becomes active again.
    m_login->status = 1;
    EXPECT_TRUE(settings().login.approval);
    view().applicationDidBecomeActive();
    EXPECT_FALSE(settings().login.approval);
    EXPECT_FALSE(settings().login.openSettings);
}

TEST_F(PracticeViewSettingsTest, Redraw_IsAskedForOnEveryPublishedChangeAndEveryChangeOfTheViewsOwn)
{
    start(onboardedState());
    int redraws = 0;
    view().setOnNeedsDisplay([&redraws] { ++redraws; });
    view().openGuide();
    EXPECT_GE(redraws, 1);
    redraws = 0;
    view().toggleTopic("phone");
    EXPECT_EQ(redraws, 1);
    redraws = 0;
    m_reminders->onPermissionDenied()(true);
    EXPECT_EQ(redraws, 1);
}

TEST_F(PracticeViewSettingsTest, Actions_OutlivingTheView_DoNothing)
{
    start(onboardedState());
    const PanelBody body = view().body();
    m_view.reset();
    tap(body.header.close.action);
    tap(shownPage<SettingsPage>(body).sounds.water.toggle);
    shownPage<SettingsPage>(body).reminder.time.pick(utc(2025, 3, 15, 5));
    EXPECT_EQ(m_pondEntered, 0);
    EXPECT_EQ(savedState(), onboardedState());
}

} // namespace
} // namespace velmora
