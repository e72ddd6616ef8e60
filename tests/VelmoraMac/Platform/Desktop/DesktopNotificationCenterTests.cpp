#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <iostream>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include <gio/gio.h>
#include <gtest/gtest.h>

#include "DesktopSession.h"
#include "VelmoraMac/Platform/Desktop/DesktopNotificationCenter.h"

namespace velmora {
namespace {

using namespace std::chrono_literals;
using test::DesktopSession;
using Bus = DesktopSession::Bus;

constexpr const char* serverName = "org.freedesktop.Notifications";
constexpr const char* serverPath = "/org/freedesktop/Notifications";

// The centre runs on a thread of its own: iterating here only waits.
bool waitUntil(const std::function<bool()>& done)
{
    return test::iterateUntil(done, 20s);
}

// What of a Notify call decides what the user sees and what a click does.
struct Notification {
    std::string applicationName;
    std::string icon;
    std::string body;
    std::vector<std::string> actions;
    std::map<std::string, std::string> hints;
    std::uint64_t time = 0;
};

// What the centre answered, from its own thread.
template <typename T> class Answers {
public:
    void add(T answer)
    {
        {
            const std::scoped_lock lock(m_mutex);
            m_answers.push_back(std::move(answer));
        }
        m_changed.notify_all();
    }

    // Waits, generously, for `count` answers; all of them so far.
    std::vector<T> waitFor(std::size_t count)
    {
        std::unique_lock lock(m_mutex);
        m_changed.wait_for(lock, 20s, [&] { return m_answers.size() >= count; });
        return m_answers;
    }

private:
    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    std::vector<T> m_answers;
};

// GNOME's switch for our notifications, where its schema is installed; on
// again once the test is over, as GSettings' memory backend keeps it for
// the rest of the process.
class GnomeSwitch {
public:
    GnomeSwitch()
    {
        GSettingsSchemaSource* source = g_settings_schema_source_get_default();
        m_schema = source != nullptr
            ? g_settings_schema_source_lookup(source, DesktopNotificationCenter::gnomeSettingsSchema, TRUE)
            : nullptr;
        m_settings = m_schema != nullptr
            ? g_settings_new_full(m_schema, nullptr, DesktopNotificationCenter::gnomeSettingsPath)
            : nullptr;
        set(true);
    }
    GnomeSwitch(const GnomeSwitch&) = delete;
    GnomeSwitch& operator=(const GnomeSwitch&) = delete;
    GnomeSwitch(GnomeSwitch&&) = delete;
    GnomeSwitch& operator=(GnomeSwitch&&) = delete;
    ~GnomeSwitch()
    {
        set(true);
        if (m_settings != nullptr)
            g_object_unref(m_settings);
        if (m_schema != nullptr)
            g_settings_schema_unref(m_schema);
    }

    [[nodiscard]] bool installed() const { return m_settings != nullptr; }
    void set(bool on)
    {
        if (m_settings != nullptr)
            g_settings_set_boolean(m_settings, "enable", on ? TRUE : FALSE);
    }

private:
    GSettingsSchema* m_schema = nullptr;
    GSettings* m_settings = nullptr;
};

// A notification server (python3-dbusmock's notification_daemon) on a
// private session bus, and a centre whose triggers fire within seconds: a
// trigger's minute counts seconds from the test's start, so that no test
// waits for a real minute to turn.
class DesktopNotificationCenterTest : public testing::Test {
protected:
    DesktopNotificationCenterTest()
    {
        // In memory, so that no test reads or writes the user's settings.
        g_setenv("GSETTINGS_BACKEND", "memory", TRUE);
    }

    void startServer() { m_session.startMock(Bus::session, serverName, {"--template", "notification_daemon"}); }

    void startCenter()
    {
        // The seconds count from here, once the server is up: a server slow
        // to start under load must not leave the triggers in the past.
        m_start = std::chrono::time_point_cast<std::chrono::milliseconds>(std::chrono::system_clock::now());
        m_center = std::make_unique<DesktopNotificationCenter>(m_session.connection(Bus::session),
            [start = m_start](const NotificationTrigger& trigger) -> std::optional<Instant> {
                if (!trigger.instant())
                    return std::nullopt;
                return start + std::chrono::seconds(trigger.minute);
            });
    }

    static NotificationRequest request(
        std::string identifier, std::int32_t secondsFromStart, std::string body = "Notice the urge")
    {
        NotificationRequest request;
        request.identifier = std::move(identifier);
        request.title = "velmora";
        request.body = std::move(body);
        request.trigger = NotificationTrigger{
            .year = 2030, .month = 1, .day = 1, .hour = 8, .minute = secondsFromStart, .timeZone = "UTC"};
        return request;
    }

    [[nodiscard]] std::vector<DesktopSession::MockCall> calls(const char* method) const
    {
        return m_session.mockCalls(Bus::session, serverName, serverPath, method);
    }

    [[nodiscard]] std::vector<Notification> posted() const
    {
        std::vector<Notification> notifications;
        for (const auto& call : calls("Notify")) {
            Notification& notification = notifications.emplace_back();
            notification.applicationName = g_variant_get_string(call.arguments.at(0).get(), nullptr);
            notification.icon = g_variant_get_string(call.arguments.at(2).get(), nullptr);
            notification.body = g_variant_get_string(call.arguments.at(4).get(), nullptr);
            notification.time = call.time;
            const gchar** actions = g_variant_get_strv(call.arguments.at(5).get(), nullptr);
            for (const gchar** action = actions; *action != nullptr; ++action)
                notification.actions.emplace_back(*action);
            g_free(static_cast<gpointer>(actions));
            GVariantIter hints;
            g_variant_iter_init(&hints, call.arguments.at(6).get());
            const gchar* key = nullptr;
            GVariant* value = nullptr;
            while (g_variant_iter_next(&hints, "{&sv}", &key, &value) != FALSE) {
                notification.hints.emplace(key,
                    g_variant_is_of_type(value, G_VARIANT_TYPE_STRING) != FALSE ? g_variant_get_string(value, nullptr)
                                                                                : "(not a string)");
                g_variant_unref(value);
            }
        }
        return notifications;
    }

    // The status as the centre answers it now.
    [[nodiscard]] NotificationAuthorizationStatus statusNow() const
    {
        // Shared with the completion, which may outlive a wait that gave up.
        auto statuses = std::make_shared<Answers<NotificationAuthorizationStatus>>();
        m_center->getAuthorizationStatus([statuses](NotificationAuthorizationStatus status) { statuses->add(status); });
        const auto answers = statuses->waitFor(1);
        return answers.empty() ? NotificationAuthorizationStatus::notDetermined : answers.front();
    }

    void invoke(std::uint32_t id, const char* action) const
    {
        m_session.emit(Bus::session, serverName, serverPath, serverName, "ActionInvoked", "us",
            g_variant_new_parsed("[<%u>, <%s>]", id, action));
    }

    DesktopSession m_session;
    Instant m_start = std::chrono::time_point_cast<std::chrono::milliseconds>(std::chrono::system_clock::now());
    std::unique_ptr<DesktopNotificationCenter> m_center;
};

TEST_F(
    DesktopNotificationCenterTest, PendingRequests_ArePostedInTheOrderOfTheirTimesUnlessRemovedReplacedPastOrTimeless)
{
    startServer();
    startCenter();
    Answers<std::optional<std::string>> added;
    const auto record = [&](const std::optional<std::string>& error) { added.add(error); };
    NotificationRequest timeless = request("practice-9", 1);
    timeless.trigger.month = 13;
    m_center->add(timeless, record);
    m_center->add(request("practice-0", 0), record); // its minute has passed
    m_center->add(request("practice-1", 1), record);
    m_center->removeAllPending();
    m_center->add(request("practice-2", 1, "replaced"), record);
    m_center->add(request("practice-2", 3, "the one"), record);
    m_center->add(request("practice-3", 4, "Breathe in"), record);
    NotificationRequest sooner = request("practice-4", 2, "Breathe out");
    sooner.sound = NotificationSound::none;
    m_center->add(sooner, record);
    const auto answers = added.waitFor(7);
    ASSERT_EQ(answers.size(), 7U);
    EXPECT_TRUE(answers[0].has_value()) << "a trigger naming no time is refused";
    EXPECT_EQ(std::ranges::count(answers, std::optional<std::string>()), 6);

    // The last request comes after every time the others had: once it is
    // shown, none of them ever will be.
    ASSERT_TRUE(waitUntil([&] { return posted().size() >= 3; }));
    const std::vector<Notification> notifications = posted();
    ASSERT_EQ(notifications.size(), 3U);
    EXPECT_EQ(notifications[0].body, "Breathe out");
    EXPECT_EQ(notifications[0].applicationName, "Velmora");
    EXPECT_EQ(notifications[0].icon, "app.velmora.mac") << "the installed application's icon";
    EXPECT_EQ(notifications[0].actions, (std::vector<std::string>{"default", ""}))
        << "a click on the body reports \"default\"";
    EXPECT_EQ(notifications[0].hints, (std::map<std::string, std::string>{{"desktop-entry", "app.velmora.mac"}}))
        << "no sound asked for";
    EXPECT_EQ(notifications[1].body, "the one");
    EXPECT_EQ(notifications[2].body, "Breathe in");
    EXPECT_EQ(notifications[2].hints,
        (std::map<std::string, std::string>{
            {"desktop-entry", "app.velmora.mac"}, {"sound-name", "message-new-instant"}}));

    // Not before their time: the server's clock reads whole seconds.
    const auto secondsOf = [](Instant instant) {
        return static_cast<std::uint64_t>(std::chrono::floor<std::chrono::seconds>(instant).time_since_epoch().count());
    };
    EXPECT_GE(notifications[0].time, secondsOf(m_start + 2s));
    EXPECT_GE(notifications[2].time, secondsOf(m_start + 4s));
}

TEST_F(DesktopNotificationCenterTest, ClicksOnOurShownNotifications_ReachTheHandlerWithTheirIdentifier)
{
    startServer();
    startCenter();
    Answers<std::string> clicks;
    m_center->setClickHandler([&](const std::string& identifier, const std::function<void()>& complete) {
        clicks.add(identifier);
        complete();
    });
    m_center->add(request("practice-0", 1), nullptr);
    m_center->add(request("practice-1", 1), nullptr);
    ASSERT_TRUE(waitUntil([&] { return posted().size() >= 2; }));
    // The server numbers from 1, in the order it was asked.
    invoke(7, "default"); // another client's
    invoke(1, "snooze");
    invoke(1, "default");
    ASSERT_EQ(clicks.waitFor(1), std::vector<std::string>{"practice-0"});

    // Once the server says it closed one, its id is no longer ours.
    m_session.emit(Bus::session, serverName, serverPath, serverName, "NotificationClosed", "uu",
        g_variant_new_parsed("[<@u 1>, <@u 2>]"));
    invoke(1, "default");
    invoke(2, "default");
    EXPECT_EQ(clicks.waitFor(2), (std::vector<std::string>{"practice-0", "practice-1"}));

    // Only ours still shown are closed, and clicks on them end with the
    // handler.
    m_center->setClickHandler(nullptr);
    m_center->removeAllDelivered();
    ASSERT_TRUE(waitUntil([&] { return !calls("CloseNotification").empty(); }));
    const auto closed = calls("CloseNotification");
    ASSERT_EQ(closed.size(), 1U);
    // The mock declares the id signed; the protocol, and we, send it unsigned.
    GVariant* closedId = closed[0].arguments.at(0).get();
    EXPECT_EQ(g_variant_is_of_type(closedId, G_VARIANT_TYPE_INT32) != FALSE
            ? static_cast<std::int64_t>(g_variant_get_int32(closedId))
            : static_cast<std::int64_t>(g_variant_get_uint32(closedId)),
        2);
}

struct AuthorizationCase {
    const char* name = "";
    bool server = false;
    bool gnomeSwitchOn = true;
    NotificationAuthorizationStatus status = NotificationAuthorizationStatus::notDetermined;
};

TEST_F(DesktopNotificationCenterTest, Authorization_FollowsTheServerAndGnomesSwitch)
{
    GnomeSwitch gnome;
    const AuthorizationCase cases[] = {
        {.name = "no server",
            .server = false,
            .gnomeSwitchOn = true,
            .status = NotificationAuthorizationStatus::denied},
        {.name = "a server",
            .server = true,
            .gnomeSwitchOn = true,
            .status = NotificationAuthorizationStatus::authorized},
        {.name = "GNOME's switch off",
            .server = true,
            .gnomeSwitchOn = false,
            .status = NotificationAuthorizationStatus::denied},
    };
    bool serverStarted = false;
    for (const AuthorizationCase& testCase : cases) {
        SCOPED_TRACE(testCase.name);
        if (!testCase.gnomeSwitchOn && !gnome.installed()) {
            std::cout << "GNOME's notification schema is not installed: \"" << testCase.name << "\" not tried\n";
            continue;
        }
        gnome.set(testCase.gnomeSwitchOn);
        if (testCase.server && !serverStarted) {
            startServer();
            serverStarted = true;
        }
        startCenter();
        Answers<NotificationAuthorizationStatus> statuses;
        Answers<bool> grants;
        m_center->getAuthorizationStatus([&](NotificationAuthorizationStatus status) { statuses.add(status); });
        m_center->requestAuthorization([&](bool granted) { grants.add(granted); });
        EXPECT_EQ(statuses.waitFor(1), std::vector<NotificationAuthorizationStatus>{testCase.status});
        EXPECT_EQ(grants.waitFor(1), std::vector<bool>{testCase.status == NotificationAuthorizationStatus::authorized});
        m_center.reset();
    }
}

TEST_F(DesktopNotificationCenterTest, Authorization_FollowsChangesWhileTheCentreRuns)
{
    GnomeSwitch gnome;
    startCenter();
    EXPECT_EQ(statusNow(), NotificationAuthorizationStatus::denied);

    startServer();
    EXPECT_TRUE(waitUntil([&] { return statusNow() == NotificationAuthorizationStatus::authorized; }))
        << "a server that appears";
    if (gnome.installed()) {
        gnome.set(false);
        EXPECT_TRUE(waitUntil([&] { return statusNow() == NotificationAuthorizationStatus::denied; }))
            << "GNOME's switch turned off";
        gnome.set(true);
        EXPECT_TRUE(waitUntil([&] { return statusNow() == NotificationAuthorizationStatus::authorized; }))
            << "and on again";
    }

    m_session.stopMocks();
    EXPECT_TRUE(waitUntil([&] { return statusNow() == NotificationAuthorizationStatus::denied; }))
        << "a server that goes, with none the bus could start";
}

TEST_F(DesktopNotificationCenterTest, Authorization_IsAnsweredWithoutAMessageOnTheBus)
{
    startServer();
    startCenter();
    // What the centre asks once, at its start, is asked by now.
    ASSERT_EQ(statusNow(), NotificationAuthorizationStatus::authorized);

    GDBusConnection* bus = m_session.connection(Bus::session);
    // Filters run on GDBus's own thread, possibly once more after their
    // removal: the count is shared with the filter until GDBus lets it go.
    auto outgoing = std::make_shared<std::atomic<int>>(0);
    const guint filter = g_dbus_connection_add_filter(
        bus,
        [](GDBusConnection* /*connection*/, GDBusMessage* message, gboolean incoming, gpointer count) -> GDBusMessage* {
            if (incoming == FALSE)
                ++**static_cast<std::shared_ptr<std::atomic<int>>*>(count);
            return message;
        },
        new std::shared_ptr<std::atomic<int>>(outgoing),
        [](gpointer count) { delete static_cast<std::shared_ptr<std::atomic<int>>*>(count); });
    Answers<bool> grants;
    for (int request = 0; request < 5; ++request) {
        EXPECT_EQ(statusNow(), NotificationAuthorizationStatus::authorized);
        m_center->requestAuthorization([&](bool granted) { grants.add(granted); });
    }
    EXPECT_EQ(grants.waitFor(5), std::vector<bool>(5, true));
    g_dbus_connection_remove_filter(bus, filter);
    EXPECT_EQ(outgoing->load(), 0);
}

} // namespace
} // namespace velmora
