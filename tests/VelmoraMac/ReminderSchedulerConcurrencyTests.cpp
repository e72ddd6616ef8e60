#include <memory>

#include <gtest/gtest.h>

#include "VelmoraMac/Platform/Headless/HeadlessNotificationCenter.h"
#include "VelmoraMac/Platform/Headless/HeadlessSystemEnvironment.h"
#include "VelmoraMac/Platform/Headless/ManualMainThread.h"
#include "VelmoraMac/ReminderScheduler.h"
#include "tests/VelmoraCore/CoreTestSupport.h"

namespace velmora {
namespace {

using Status = NotificationAuthorizationStatus;
using test::utc;

PracticeState remindAt(std::int64_t hour, std::int64_t minute)
{
    PracticeState state;
    state.onboarded = true;
    state.selected = {"phone"};
    state.reminderEnabled = true;
    state.reminderHour = hour;
    state.reminderMinute = minute;
    return state;
}

std::vector<std::string> identifiers(const std::vector<NotificationRequest>& requests)
{
    std::vector<std::string> names;
    names.reserve(requests.size());
    for (const NotificationRequest& request : requests)
        names.push_back(request.identifier);
    return names;
}

std::vector<std::string> sevenRequests()
{
    return {"practice-0", "practice-1", "practice-2", "practice-3", "practice-4", "practice-5", "practice-6"};
}

// The centre answers on its own thread; the scheduler hops to the main
// thread, which the test runs by hand.
class ReminderSchedulerTest : public testing::Test {
protected:
    ReminderSchedulerTest()
    {
        m_center->setAuthorizationStatus(Status::authorized);
        m_scheduler->setOnPermissionDenied([this](bool denied) { m_denials.push_back(denied); });
        m_scheduler->setOnOpen([this] { ++m_opened; });
    }

    // Lets every answer arrive and every hop run, until a hop asks the
    // centre nothing more.
    void settle()
    {
        do {
            m_center->waitUntilIdle();
        } while (m_mainThread->runPending());
    }

    void scheduleAndSettle(const PracticeState& state, const std::string& body = "A gentle pause")
    {
        m_scheduler->schedule(std::make_shared<const PracticeState>(state), "velmora", body);
        settle();
    }

    std::shared_ptr<ManualMainThread> m_mainThread = std::make_shared<ManualMainThread>();
    // Monday 10 March 2025, 12:00 in Berlin.
    std::shared_ptr<HeadlessSystemEnvironment> m_system
        = std::make_shared<HeadlessSystemEnvironment>(utc(2025, 3, 10, 11), UserCalendar::inTimeZone("Europe/Berlin"));
    std::shared_ptr<HeadlessNotificationCenter> m_center
        = std::make_shared<HeadlessNotificationCenter>(utc(2025, 3, 10, 11));
    std::unique_ptr<ReminderScheduler> m_scheduler
        = std::make_unique<ReminderScheduler>(m_center, m_mainThread, m_system);
    std::vector<bool> m_denials;
    int m_opened = 0;
};

// Pass after pass, as the coordinator makes them: the first replaces every
// pending request, whatever its name, with one per date; an unchanged pass
// touches nothing; a changed one replaces them, and practising today also
// clears what was delivered.
TEST_F(ReminderSchedulerTest, Passes_ReplaceThePendingRequestsOnlyWhenSomethingChanged)
{
    NotificationRequest older;
    older.identifier = "from-an-older-version";
    older.trigger = NotificationTrigger::at(utc(2025, 3, 12, 9), UserCalendar::utc());
    m_center->add(older, nullptr);
    scheduleAndSettle(remindAt(20, 15));
    std::vector<NotificationRequest> pending = m_center->pendingRequests();
    EXPECT_EQ(identifiers(pending), sevenRequests());
    EXPECT_EQ(pending[0].body, "A gentle pause");
    EXPECT_EQ(pending[0].trigger,
        (NotificationTrigger{
            .year = 2025, .month = 3, .day = 10, .hour = 20, .minute = 15, .timeZone = "Europe/Berlin"}));
    EXPECT_EQ(pending[6].trigger.day, 16);

    const HeadlessNotificationCenter::Counts before = m_center->counts();
    scheduleAndSettle(remindAt(20, 15));
    EXPECT_EQ(m_center->counts().pendingRemovals, before.pendingRemovals);
    EXPECT_EQ(m_center->counts().adds, before.adds);
    EXPECT_EQ(m_denials, (std::vector<bool>{false, false})) << "denial is reported on every applied pass";

    PracticeState practised = remindAt(20, 15);
    practised.practiceDays = {"2025-03-10"};
    scheduleAndSettle(practised, "Another language");
    EXPECT_EQ(m_center->counts().pendingRemovals, before.pendingRemovals + 1);
    EXPECT_EQ(m_center->counts().deliveredRemovals, 1);
    pending = m_center->pendingRequests();
    EXPECT_EQ(pending[0].body, "Another language");
    EXPECT_EQ(pending[0].trigger.day, 11) << "today's reminder is no longer wanted";

    practised.reminderEnabled = false;
    scheduleAndSettle(practised);
    EXPECT_TRUE(m_center->pendingRequests().empty());
}

TEST_F(ReminderSchedulerTest, AuthorizationStatus_DecidesDenialAndWhetherAnythingIsPosted)
{
    struct StatusCase {
        Status status;
        bool denied;
        std::size_t posted;
    };
    const StatusCase cases[] = {
        {Status::notDetermined, false, 0},
        {Status::denied, true, 0},
        {Status::authorized, false, 7},
        {Status::provisional, false, 7},
        {Status::ephemeral, false, 0},
    };
    for (const StatusCase& c : cases) {
        SCOPED_TRACE(static_cast<int>(c.status));
        m_center->setAuthorizationStatus(c.status);
        m_denials.clear();
        scheduleAndSettle(remindAt(20, 0));
        EXPECT_EQ(m_denials, std::vector<bool>{c.denied});
        EXPECT_EQ(m_center->pendingRequests().size(), c.posted);
    }
}

TEST_F(ReminderSchedulerTest, StaleAnswersAndAnswersForAGoneScheduler_DoNothingAtAll)
{
    m_center->holdAnswers();
    m_scheduler->schedule(std::make_shared<const PracticeState>(remindAt(7, 0)), "velmora", "first");
    m_scheduler->schedule(std::make_shared<const PracticeState>(remindAt(21, 0)), "velmora", "second");
    m_center->releaseAnswers();
    settle();

    EXPECT_EQ(m_denials, std::vector<bool>{false}) << "only the newest pass reports";
    EXPECT_EQ(m_center->counts().adds, 7);
    const std::vector<NotificationRequest> pending = m_center->pendingRequests();
    ASSERT_EQ(pending.size(), 7U);
    EXPECT_EQ(pending[0].body, "second");
    EXPECT_EQ(pending[0].trigger.hour, 21);

    // Answers that arrive after the scheduler is gone are dropped.
    m_center->holdAnswers();
    m_scheduler->schedule(std::make_shared<const PracticeState>(remindAt(20, 0)), "velmora", "third");
    m_scheduler.reset();
    m_center->releaseAnswers();
    settle();
    EXPECT_EQ(m_denials, std::vector<bool>{false});
    ASSERT_EQ(m_center->pendingRequests().size(), 7U);
    EXPECT_EQ(m_center->pendingRequests()[0].body, "second");
}

TEST_F(ReminderSchedulerTest, FailedAdd_MakesTheNextPassReplaceEverything)
{
    m_center->setAddFailure("practice-3", "no room");
    scheduleAndSettle(remindAt(20, 0));
    EXPECT_EQ(m_center->pendingRequests().size(), 6U) << "the other requests of the pass are still added";

    m_center->clearAddFailures();
    scheduleAndSettle(remindAt(20, 0));
    EXPECT_EQ(identifiers(m_center->pendingRequests()), sevenRequests());
}

TEST_F(ReminderSchedulerTest, ClickAndPermissionAnswer_ReachTheirCallbacksOnlyOnTheMainThread)
{
    scheduleAndSettle(remindAt(20, 0));
    m_center->setNow(utc(2025, 3, 10, 19, 1));
    ASSERT_EQ(identifiers(m_center->deliveredRequests()), std::vector<std::string>{"practice-0"});

    m_center->click("practice-0");
    m_center->waitUntilIdle();
    EXPECT_EQ(m_center->counts().completedClicks, 1);
    EXPECT_EQ(m_opened, 0) << "not before the main thread runs";
    m_mainThread->runPending();
    EXPECT_EQ(m_opened, 1);

    // The answer to a permission request hops the same way.
    m_center->setAuthorizationStatus(Status::notDetermined);
    m_center->setPromptAnswer(HeadlessNotificationCenter::PromptAnswer::deny);
    std::vector<bool> granted;
    m_scheduler->request([&](bool allowed) {
        EXPECT_TRUE(m_mainThread->isMainThread());
        granted.push_back(allowed);
    });
    m_center->waitUntilIdle();
    EXPECT_TRUE(granted.empty());
    m_mainThread->runPending();
    EXPECT_EQ(granted, std::vector<bool>{false});
}

} // namespace
} // namespace velmora
