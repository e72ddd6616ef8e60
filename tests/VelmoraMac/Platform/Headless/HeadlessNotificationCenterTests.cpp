#include <atomic>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "Signal.h"
#include "VelmoraMac/Platform/Headless/HeadlessNotificationCenter.h"
#include "tests/VelmoraCore/CoreTestSupport.h"

namespace velmora {
namespace {

using namespace std::chrono_literals;
using Status = NotificationAuthorizationStatus;
using test::Signal;
using test::utc;

// 20:00 in Berlin in March 2025 (before summer time) is 19:00 UTC.
NotificationRequest reminder(const std::string& identifier, int day, int hour = 20, int minute = 0)
{
    return {identifier, "velmora", "A gentle reminder", NotificationSound::systemDefault, {2025, 3, day, hour, minute, "Europe/Berlin"}};
}

std::vector<std::string> identifiers(const std::vector<NotificationRequest>& requests)
{
    std::vector<std::string> names;
    names.reserve(requests.size());
    for (const NotificationRequest& request : requests)
        names.push_back(request.identifier);
    return names;
}

// What answers arrived, and on which threads; filled on the centre's thread.
class Answers {
public:
    void record(const std::string& answer)
    {
        const std::scoped_lock lock(m_mutex);
        m_answers.push_back(answer);
        m_threads.insert(std::this_thread::get_id());
    }

    [[nodiscard]] std::vector<std::string> answers() const
    {
        const std::scoped_lock lock(m_mutex);
        return m_answers;
    }

    [[nodiscard]] std::set<std::thread::id> threads() const
    {
        const std::scoped_lock lock(m_mutex);
        return m_threads;
    }

private:
    mutable std::mutex m_mutex;
    std::vector<std::string> m_answers;
    std::set<std::thread::id> m_threads;
};

class HeadlessNotificationCenterTest : public testing::Test {
protected:
    std::optional<std::string> addAndWait(const NotificationRequest& request)
    {
        std::optional<std::string> answer = "no answer";
        m_centre.add(request, [&](const std::optional<std::string>& error) { answer = error; });
        m_centre.waitUntilIdle();
        return answer;
    }

    bool requestAndWait()
    {
        bool answer = false;
        m_centre.requestAuthorization([&](bool granted) { answer = granted; });
        m_centre.waitUntilIdle();
        return answer;
    }

    Status statusAndWait()
    {
        Status answer = Status::notDetermined;
        m_centre.getAuthorizationStatus([&](Status status) { answer = status; });
        m_centre.waitUntilIdle();
        return answer;
    }

    HeadlessNotificationCenter m_centre{utc(2025, 3, 1, 12, 0)};
};

TEST_F(HeadlessNotificationCenterTest, Answers_ArriveOnOneThreadOfTheCentresInCallOrder)
{
    Answers answers;
    m_centre.getAuthorizationStatus([&](Status) { answers.record("status"); });
    m_centre.add(reminder("practice-0", 2), [&](const std::optional<std::string>&) { answers.record("add"); });
    m_centre.requestAuthorization([&](bool) { answers.record("request"); });
    m_centre.getAuthorizationStatus([&](Status) { answers.record("status again"); });
    m_centre.waitUntilIdle();

    EXPECT_EQ(answers.answers(), (std::vector<std::string>{"status", "add", "request", "status again"}));
    ASSERT_EQ(answers.threads().size(), 1U);
    EXPECT_FALSE(answers.threads().contains(std::this_thread::get_id()));
}

TEST_F(HeadlessNotificationCenterTest, FirstAuthorizationRequest_SettlesTheStatusWithTheUsersAnswer)
{
    EXPECT_EQ(statusAndWait(), Status::notDetermined);
    m_centre.setPromptAnswer(HeadlessNotificationCenter::PromptAnswer::deny);
    EXPECT_FALSE(requestAndWait());
    EXPECT_EQ(statusAndWait(), Status::denied);
    // Asked once, the user is not asked again.
    m_centre.setPromptAnswer(HeadlessNotificationCenter::PromptAnswer::grant);
    EXPECT_FALSE(requestAndWait());
    EXPECT_EQ(m_centre.authorizationStatus(), Status::denied);

    m_centre.setAuthorizationStatus(Status::notDetermined);
    EXPECT_TRUE(requestAndWait());
    EXPECT_EQ(m_centre.authorizationStatus(), Status::authorized);
    EXPECT_EQ(m_centre.counts().authorizationRequests, 3);
}

TEST_F(HeadlessNotificationCenterTest, AuthorizationRequest_GrantsForEveryStatusThatAllowsPosting)
{
    for (const auto& [status, granted] : {std::pair(Status::authorized, true), std::pair(Status::provisional, true), std::pair(Status::ephemeral, true), std::pair(Status::denied, false)}) {
        m_centre.setAuthorizationStatus(status);
        EXPECT_EQ(requestAndWait(), granted) << static_cast<int>(status);
        EXPECT_EQ(m_centre.authorizationStatus(), status) << "a settled status stays";
    }
}

TEST_F(HeadlessNotificationCenterTest, HeldAnswers_ComeOnlyOnReleaseAndReadTheStatusThen)
{
    m_centre.holdAnswers();
    Answers answers;
    m_centre.getAuthorizationStatus([&](Status status) { answers.record(status == Status::denied ? "denied" : "other"); });
    EXPECT_THROW(m_centre.waitUntilIdle(), std::logic_error);
    m_centre.setAuthorizationStatus(Status::denied);
    EXPECT_TRUE(answers.answers().empty());
    m_centre.releaseAnswers();
    m_centre.waitUntilIdle();
    EXPECT_EQ(answers.answers(), std::vector<std::string>{"denied"});
}

TEST_F(HeadlessNotificationCenterTest, PendingRequests_FireWhenTheClockReachesTheirTriggerInTriggerOrder)
{
    // Added out of order: the third of March before the second.
    EXPECT_EQ(addAndWait(reminder("practice-1", 3)), std::nullopt);
    EXPECT_EQ(addAndWait(reminder("practice-0", 2)), std::nullopt);
    EXPECT_EQ(identifiers(m_centre.pendingRequests()), (std::vector<std::string>{"practice-1", "practice-0"}));

    m_centre.setNow(utc(2025, 3, 2, 18, 59));
    EXPECT_TRUE(m_centre.deliveredRequests().empty());
    m_centre.advance(1min);
    EXPECT_EQ(identifiers(m_centre.deliveredRequests()), std::vector<std::string>{"practice-0"});
    EXPECT_EQ(identifiers(m_centre.pendingRequests()), std::vector<std::string>{"practice-1"});
    EXPECT_EQ(m_centre.deliveredRequests().front(), reminder("practice-0", 2));

    m_centre.setNow(utc(2025, 3, 10, 0, 0));
    EXPECT_EQ(identifiers(m_centre.deliveredRequests()), (std::vector<std::string>{"practice-0", "practice-1"}));
    EXPECT_TRUE(m_centre.pendingRequests().empty());
}

TEST_F(HeadlessNotificationCenterTest, ClockJumpingPastSeveralTriggers_DeliversThemInTriggerOrder)
{
    addAndWait(reminder("practice-2", 4));
    addAndWait(reminder("practice-0", 2));
    addAndWait(reminder("practice-1", 3));
    m_centre.setNow(utc(2025, 3, 5, 0, 0));
    EXPECT_EQ(identifiers(m_centre.deliveredRequests()), (std::vector<std::string>{"practice-0", "practice-1", "practice-2"}));
}

TEST_F(HeadlessNotificationCenterTest, TriggerNotAfterTheClock_NeverFires)
{
    m_centre.setNow(utc(2025, 3, 2, 19, 0));
    EXPECT_EQ(addAndWait(reminder("practice-0", 2)), std::nullopt) << "added, like any request";
    m_centre.setNow(utc(2025, 3, 20, 0, 0));
    EXPECT_TRUE(m_centre.deliveredRequests().empty());
    EXPECT_EQ(identifiers(m_centre.pendingRequests()), std::vector<std::string>{"practice-0"});
}

TEST_F(HeadlessNotificationCenterTest, RequestWithAnIdentifierInUse_ReplacesTheEarlierOne)
{
    addAndWait(reminder("practice-0", 2));
    addAndWait(reminder("practice-1", 3));
    addAndWait(reminder("practice-0", 4, 8, 30));
    const std::vector<NotificationRequest> pending = m_centre.pendingRequests();
    ASSERT_EQ(identifiers(pending), (std::vector<std::string>{"practice-1", "practice-0"}));
    EXPECT_EQ(pending.back().trigger, (NotificationTrigger{2025, 3, 4, 8, 30, "Europe/Berlin"}));
}

TEST_F(HeadlessNotificationCenterTest, Removals_TouchOnlyTheirOwnList)
{
    addAndWait(reminder("practice-0", 2));
    addAndWait(reminder("practice-1", 3));
    m_centre.setNow(utc(2025, 3, 2, 20, 0));

    m_centre.removeAllPending();
    EXPECT_TRUE(m_centre.pendingRequests().empty());
    EXPECT_EQ(identifiers(m_centre.deliveredRequests()), std::vector<std::string>{"practice-0"});

    addAndWait(reminder("practice-1", 3));
    m_centre.removeAllDelivered();
    EXPECT_TRUE(m_centre.deliveredRequests().empty());
    EXPECT_EQ(identifiers(m_centre.pendingRequests()), std::vector<std::string>{"practice-1"});

    const HeadlessNotificationCenter::Counts counts = m_centre.counts();
    EXPECT_EQ(counts.pendingRemovals, 1);
    EXPECT_EQ(counts.deliveredRemovals, 1);
    EXPECT_EQ(counts.adds, 3);
}

TEST_F(HeadlessNotificationCenterTest, AddSetToFail_AnswersTheErrorKeepsNothingAndOthersStillGoIn)
{
    m_centre.setAddFailure("practice-1", "The operation couldn't be completed.");
    EXPECT_EQ(addAndWait(reminder("practice-0", 2)), std::nullopt);
    EXPECT_EQ(addAndWait(reminder("practice-1", 3)), "The operation couldn't be completed.");
    EXPECT_EQ(addAndWait(reminder("practice-2", 4)), std::nullopt);
    EXPECT_EQ(identifiers(m_centre.pendingRequests()), (std::vector<std::string>{"practice-0", "practice-2"}));
    EXPECT_EQ(m_centre.counts().adds, 3);

    m_centre.clearAddFailures();
    EXPECT_EQ(addAndWait(reminder("practice-1", 3)), std::nullopt);
}

TEST_F(HeadlessNotificationCenterTest, TriggerThatNamesNoTime_FailsTheAdd)
{
    NotificationRequest badDate = reminder("practice-0", 30);
    badDate.trigger.month = 2;
    NotificationRequest badZone = reminder("practice-1", 2);
    badZone.trigger.timeZone = "Europe/Atlantis";
    EXPECT_TRUE(addAndWait(badDate));
    EXPECT_TRUE(addAndWait(badZone));
    EXPECT_TRUE(m_centre.pendingRequests().empty());
}

TEST_F(HeadlessNotificationCenterTest, Click_ReachesTheHandlerOnTheCentresThreadAndCompletes)
{
    addAndWait(reminder("practice-0", 2));
    m_centre.setNow(utc(2025, 3, 2, 19, 0));
    Answers clicks;
    m_centre.setClickHandler([&](const std::string& identifier, const std::function<void()>& complete) {
        clicks.record(identifier);
        complete();
    });
    m_centre.click("practice-0");
    m_centre.waitUntilIdle();

    EXPECT_EQ(clicks.answers(), std::vector<std::string>{"practice-0"});
    EXPECT_FALSE(clicks.threads().contains(std::this_thread::get_id()));
    EXPECT_EQ(m_centre.counts().completedClicks, 1);
    EXPECT_TRUE(m_centre.deliveredRequests().empty()) << "a clicked notification is dismissed";
}

TEST_F(HeadlessNotificationCenterTest, ClickOnWhatIsNotDelivered_IsRefused)
{
    addAndWait(reminder("practice-0", 2));
    EXPECT_THROW(m_centre.click("practice-0"), std::invalid_argument) << "still pending";
    EXPECT_THROW(m_centre.click("practice-7"), std::invalid_argument);
}

TEST_F(HeadlessNotificationCenterTest, ClickWithoutAHandler_CompletesQuietly)
{
    addAndWait(reminder("practice-0", 2));
    m_centre.setNow(utc(2025, 3, 3, 0, 0));
    m_centre.click("practice-0");
    m_centre.waitUntilIdle();
    EXPECT_EQ(m_centre.counts().completedClicks, 1);
}

// Replacing the handler promises the old one is over. If it were not, the
// old handler below would write to freed memory, which the sanitizer builds
// report.
TEST_F(HeadlessNotificationCenterTest, ReplacingTheClickHandler_WaitsForAClickUnderWay)
{
    addAndWait(reminder("practice-0", 2));
    m_centre.setNow(utc(2025, 3, 3, 0, 0));
    auto target = std::make_unique<int>(0);
    Signal entered;
    std::atomic<bool> release{false};
    m_centre.setClickHandler([&](const std::string&, const std::function<void()>& complete) {
        entered.raise();
        while (!release)
            std::this_thread::yield();
        ++*target;
        complete();
    });
    m_centre.click("practice-0");
    entered.wait();

    Signal replacing;
    std::thread replacer([&] {
        replacing.raise();
        m_centre.setClickHandler(nullptr);
        target.reset();
    });
    replacing.wait();
    for (int spin = 0; spin < 100; ++spin)
        std::this_thread::yield();
    release = true;
    replacer.join();
    m_centre.waitUntilIdle();
    EXPECT_FALSE(target);
    EXPECT_EQ(m_centre.counts().completedClicks, 1);
}

TEST(HeadlessNotificationCenter, Destruction_DeliversTheAnswersStillHeld)
{
    Answers answers;
    {
        HeadlessNotificationCenter centre;
        centre.holdAnswers();
        centre.getAuthorizationStatus([&](Status) { answers.record("status"); });
        centre.requestAuthorization([&](bool) { answers.record("request"); });
    }
    EXPECT_EQ(answers.answers(), (std::vector<std::string>{"status", "request"}));
}

} // namespace
} // namespace velmora
