#include <algorithm>
#include <ctime>
#include <memory>
#include <string>
#include <vector>

#include <gio/gio.h>
#include <gtest/gtest.h>
#include <unicode/timezone.h>
#include <unicode/unistr.h>

#include "DBusMockServer.h"
#include "VelmoraMac/Platform/Desktop/DesktopSystemEvents.h"

namespace velmora {
namespace {

constexpr const char* logindName = "org.freedesktop.login1";
constexpr const char* logindPath = "/org/freedesktop/login1";
constexpr const char* logindManager = "org.freedesktop.login1.Manager";
constexpr const char* timedateName = "org.freedesktop.timedate1";
constexpr const char* timedatePath = "/org/freedesktop/timedate1";

std::string defaultZone()
{
    std::unique_ptr<icu::TimeZone> zone(icu::TimeZone::createDefault());
    icu::UnicodeString identifier;
    zone->getID(identifier);
    std::string utf8;
    identifier.toUTF8String(utf8);
    return utf8;
}

GDBusConnection* connectTo(GTestDBus* bus)
{
    const auto flags = static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT | G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
    return g_dbus_connection_new_for_address_sync(g_test_dbus_get_bus_address(bus), flags, nullptr, nullptr, nullptr);
}

GVariant* variants(std::initializer_list<GVariant*> values)
{
    std::vector<GVariant*> boxed;
    for (GVariant* value : values)
        boxed.push_back(g_variant_new_variant(value));
    return g_variant_new_array(G_VARIANT_TYPE_VARIANT, boxed.data(), boxed.size());
}

// Two private buses, one playing the session's and one the system's, with
// the services' mocks on them; the events are heard on this thread, which
// iterates GLib's default context while it waits.
class DesktopSystemEventsTest : public testing::Test {
public:
    DesktopSystemEventsTest(const DesktopSystemEventsTest&) = delete;
    DesktopSystemEventsTest& operator=(const DesktopSystemEventsTest&) = delete;
    DesktopSystemEventsTest(DesktopSystemEventsTest&&) = delete;
    DesktopSystemEventsTest& operator=(DesktopSystemEventsTest&&) = delete;

protected:
    DesktopSystemEventsTest()
    {
        g_test_dbus_up(m_sessionBus);
        g_test_dbus_up(m_systemBus);
        m_session = connectTo(m_sessionBus);
        m_system = connectTo(m_systemBus);
    }

    ~DesktopSystemEventsTest() override
    {
        m_events.reset();
        m_mocks.clear();
        g_object_unref(m_system);
        g_object_unref(m_session);
        g_test_dbus_down(m_systemBus);
        g_test_dbus_down(m_sessionBus);
        g_object_unref(m_systemBus);
        g_object_unref(m_sessionBus);
    }

    DBusMockServer& startMock(GTestDBus* bus, DBusMockServer::BusKind kind, const char* name, const char* path, const std::vector<std::string>& arguments)
    {
        m_mocks.push_back(std::make_unique<DBusMockServer>(g_test_dbus_get_bus_address(bus), kind, name, path, arguments));
        return *m_mocks.back();
    }

    void startEvents()
    {
        m_events = std::make_unique<DesktopSystemEvents>(m_hub, m_system, m_session);
    }

    [[nodiscard]] std::size_t postedCount(SystemNotification notification) const
    {
        return static_cast<std::size_t>(std::ranges::count(m_hub->posted(), notification));
    }

    static bool waitUntil(const std::function<bool()>& done) { return velmora::waitUntil(done, g_main_context_default()); }

    GTestDBus* m_sessionBus = g_test_dbus_new(G_TEST_DBUS_NONE);
    GTestDBus* m_systemBus = g_test_dbus_new(G_TEST_DBUS_NONE);
    GDBusConnection* m_session = nullptr;
    GDBusConnection* m_system = nullptr;
    std::vector<std::unique_ptr<DBusMockServer>> m_mocks;
    std::shared_ptr<SystemNotificationHub> m_hub = std::make_shared<SystemNotificationHub>();
    std::unique_ptr<DesktopSystemEvents> m_events;
};

// The sleep inhibitors logind holds, as (what, who, mode).
std::vector<std::string> inhibitors(const DBusMockServer& logind)
{
    std::vector<std::string> held;
    GVariant* reply = logind.call(logindManager, "ListInhibitors", nullptr);
    if (reply == nullptr)
        return held;
    GVariantIter* list = nullptr;
    g_variant_get(reply, "(a(ssssuu))", &list);
    const gchar* what = nullptr;
    const gchar* who = nullptr;
    const gchar* mode = nullptr;
    while (g_variant_iter_next(list, "(&s&s&s&suu)", &what, &who, nullptr, &mode, nullptr, nullptr) != FALSE)
        held.push_back(std::string(what) + " " + who + " " + mode);
    g_variant_iter_free(list);
    g_variant_unref(reply);
    return held;
}

TEST_F(DesktopSystemEventsTest, Sleep_IsDelayedUntilTheObserversHaveRunAndAnnouncedAgainOnWaking)
{
    const DBusMockServer& logind = startMock(m_systemBus, DBusMockServer::BusKind::system, logindName, logindPath, {"--template", "logind"});
    std::vector<std::vector<std::string>> heldWhileObserving;
    const auto observer = m_hub->addObserver(SystemNotification::workspaceWillSleep, [&](Window* /*window*/) { heldWhileObserving.push_back(inhibitors(logind)); });
    startEvents();
    const std::vector<std::string> delaying{"sleep Velmora delay"};
    ASSERT_TRUE(waitUntil([&] { return inhibitors(logind) == delaying; }));

    logind.emit(logindManager, "PrepareForSleep", "b", variants({g_variant_new_boolean(TRUE)}));
    ASSERT_TRUE(waitUntil([&] { return postedCount(SystemNotification::workspaceWillSleep) == 1 && inhibitors(logind).empty(); }));
    EXPECT_EQ(heldWhileObserving, std::vector<std::vector<std::string>>{delaying}) << "let go only once the observers had run";

    logind.emit(logindManager, "PrepareForSleep", "b", variants({g_variant_new_boolean(FALSE)}));
    ASSERT_TRUE(waitUntil([&] { return postedCount(SystemNotification::workspaceDidWake) == 1 && inhibitors(logind) == delaying; }));
    EXPECT_EQ(m_hub->posted(), (std::vector<SystemNotification>{SystemNotification::workspaceWillSleep, SystemNotification::workspaceDidWake}));
}

TEST_F(DesktopSystemEventsTest, ScreenSaverComingOn_PostsScreensDidSleepFromEitherScreenSaver)
{
    const DBusMockServer& gnome = startMock(m_sessionBus, DBusMockServer::BusKind::session, "org.gnome.ScreenSaver", "/org/gnome/ScreenSaver", {"--template", "gnome_screensaver"});
    const DBusMockServer& freedesktop = startMock(m_sessionBus, DBusMockServer::BusKind::session, "org.freedesktop.ScreenSaver", "/ScreenSaver", {"--session", "org.freedesktop.ScreenSaver", "/ScreenSaver", "org.freedesktop.ScreenSaver"});
    startEvents();

    gnome.callAndForget("org.gnome.ScreenSaver", "SetActive", g_variant_new("(b)", FALSE));
    gnome.callAndForget("org.gnome.ScreenSaver", "SetActive", g_variant_new("(b)", TRUE));
    ASSERT_TRUE(waitUntil([&] { return postedCount(SystemNotification::workspaceScreensDidSleep) == 1; }));
    freedesktop.emit("org.freedesktop.ScreenSaver", "ActiveChanged", "b", variants({g_variant_new_boolean(FALSE)}));
    freedesktop.emit("org.freedesktop.ScreenSaver", "ActiveChanged", "b", variants({g_variant_new_boolean(TRUE)}));
    ASSERT_TRUE(waitUntil([&] { return postedCount(SystemNotification::workspaceScreensDidSleep) == 2; }));
    EXPECT_EQ(m_hub->posted().size(), 2U) << "the screen saver going off posts nothing";
}

void countSignal(GDBusConnection* /*connection*/, const gchar* /*sender*/, const gchar* /*path*/, const gchar* /*interfaceName*/, const gchar* /*signal*/, GVariant* /*parameters*/, gpointer count)
{
    ++*static_cast<int*>(count);
}

TEST_F(DesktopSystemEventsTest, ZoneSetThroughTimedated_IsAdoptedAndPostedOncePerChange)
{
    g_setenv("TZ", "Europe/Berlin", TRUE);
    const DBusMockServer& timedate = startMock(m_systemBus, DBusMockServer::BusKind::system, timedateName, timedatePath, {"--template", "timedated"});
    std::vector<std::string> zonesObserved;
    const auto observer = m_hub->addObserver(SystemNotification::systemTimeZoneDidChange, [&](Window* /*window*/) { zonesObserved.push_back(defaultZone()); });
    startEvents();
    // Told on the same connection and context, after the events' own
    // subscription: once this has heard a signal, so have they.
    int heard = 0;
    const guint subscription = g_dbus_connection_signal_subscribe(m_system, timedateName, "org.freedesktop.DBus.Properties", "PropertiesChanged", timedatePath, nullptr, G_DBUS_SIGNAL_FLAGS_NONE, &countSignal, &heard, nullptr);

    // As timedated does: the zone changes first, then the bus tells of it;
    // a second word of the same change, and one of another property, do
    // not count.
    g_setenv("TZ", "Asia/Tokyo", TRUE);
    timedate.callAndForget(timedateName, "SetTimezone", g_variant_new("(sb)", "Asia/Tokyo", FALSE));
    timedate.callAndForget(timedateName, "SetTimezone", g_variant_new("(sb)", "Asia/Tokyo", FALSE));
    timedate.callAndForget(timedateName, "SetNTP", g_variant_new("(bb)", FALSE, FALSE));
    ASSERT_TRUE(waitUntil([&] { return heard >= 3; }));
    EXPECT_EQ(zonesObserved, std::vector<std::string>{"Asia/Tokyo"}) << "adopted before the observers ran";

    const std::time_t instant = 1'700'000'000;
    std::tm local{};
    localtime_r(&instant, &local);
    EXPECT_EQ(local.tm_gmtoff, 9 * 3600) << "the C library follows too";

    g_setenv("TZ", "America/New_York", TRUE);
    timedate.callAndForget(timedateName, "SetTimezone", g_variant_new("(sb)", "America/New_York", FALSE));
    ASSERT_TRUE(waitUntil([&] { return zonesObserved.size() == 2; }));
    EXPECT_EQ(zonesObserved.back(), "America/New_York");
    g_dbus_connection_signal_unsubscribe(m_system, subscription);
}

TEST_F(DesktopSystemEventsTest, NoBusesAtAll_IsNotAFailure)
{
    DesktopSystemEvents events(m_hub, nullptr, nullptr);
    EXPECT_TRUE(m_hub->posted().empty());
}

} // namespace
} // namespace velmora
