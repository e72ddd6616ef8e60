#include <algorithm>
#include <chrono>
#include <ctime>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <gio/gio.h>
#include <gtest/gtest.h>
#include <unicode/timezone.h>
#include <unicode/unistr.h>

#include "DesktopSession.h"
#include "VelmoraMac/Platform/Desktop/DesktopSystemEvents.h"

namespace velmora {
namespace {

using test::DesktopSession;
using Bus = DesktopSession::Bus;

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

// A session and a system bus of the test's own, with the services' mocks
// on them; the events are heard on this thread, which iterates GLib's
// default context while it waits.
class DesktopSystemEventsTest : public testing::Test {
protected:
    void startEvents()
    {
        m_events = std::make_unique<DesktopSystemEvents>(
            m_hub, m_session.connection(Bus::system), m_session.connection(Bus::session));
    }

    [[nodiscard]] std::size_t postedCount(SystemNotification notification) const
    {
        return static_cast<std::size_t>(std::ranges::count(m_hub->posted(), notification));
    }

    // The sleep inhibitors logind holds, as "what who mode".
    [[nodiscard]] std::vector<std::string> inhibitors() const
    {
        const auto reply
            = m_session.call(Bus::system, logindName, logindPath, logindManager, "ListInhibitors", nullptr);
        std::vector<std::string> held;
        GVariantIter* list = nullptr;
        g_variant_get(reply.get(), "(a(ssssuu))", &list);
        const gchar* what = nullptr;
        const gchar* who = nullptr;
        const gchar* mode = nullptr;
        while (g_variant_iter_next(list, "(&s&s&s&suu)", &what, &who, nullptr, &mode, nullptr, nullptr) != FALSE)
            held.push_back(std::string(what) + " " + who + " " + mode);
        g_variant_iter_free(list);
        return held;
    }

    static bool waitUntil(const std::function<bool()>& done)
    {
        return test::iterateUntil(done, std::chrono::seconds(20));
    }

    DesktopSession m_session;
    std::shared_ptr<SystemNotificationHub> m_hub = std::make_shared<SystemNotificationHub>();
    std::unique_ptr<DesktopSystemEvents> m_events;
};

TEST_F(DesktopSystemEventsTest, Sleep_IsDelayedUntilTheObserversHaveRunAndAnnouncedAgainOnWaking)
{
    m_session.startMock(Bus::system, logindName, {"--template", "logind"});
    std::vector<std::vector<std::string>> heldWhileObserving;
    const auto observer = m_hub->addObserver(SystemNotification::workspaceWillSleep,
        [&](Window* /*window*/) { heldWhileObserving.push_back(inhibitors()); });
    startEvents();
    const std::vector<std::string> delaying{"sleep Velmora delay"};
    ASSERT_TRUE(waitUntil([&] { return inhibitors() == delaying; }));

    const auto prepareForSleep = [&](gboolean sleeping) {
        m_session.emit(Bus::system, logindName, logindPath, logindManager, "PrepareForSleep", "b",
            g_variant_new_parsed("[<%b>]", sleeping));
    };
    prepareForSleep(TRUE);
    ASSERT_TRUE(
        waitUntil([&] { return postedCount(SystemNotification::workspaceWillSleep) == 1 && inhibitors().empty(); }));
    EXPECT_EQ(heldWhileObserving, std::vector<std::vector<std::string>>{delaying})
        << "let go only once the observers had run";

    prepareForSleep(FALSE);
    ASSERT_TRUE(
        waitUntil([&] { return postedCount(SystemNotification::workspaceDidWake) == 1 && inhibitors() == delaying; }));
    EXPECT_EQ(m_hub->posted(),
        (std::vector<SystemNotification>{
            SystemNotification::workspaceWillSleep, SystemNotification::workspaceDidWake}));
}

TEST_F(DesktopSystemEventsTest, ScreenSaverComingOn_PostsScreensDidSleepFromEitherScreenSaver)
{
    const char* gnome = "org.gnome.ScreenSaver";
    const char* freedesktop = "org.freedesktop.ScreenSaver";
    m_session.startMock(Bus::session, gnome, {"--template", "gnome_screensaver"});
    m_session.startMock(Bus::session, freedesktop, {freedesktop, "/ScreenSaver", freedesktop});
    startEvents();

    for (const gboolean active : {gboolean{FALSE}, gboolean{TRUE}})
        (void)m_session.call(
            Bus::session, gnome, "/org/gnome/ScreenSaver", gnome, "SetActive", g_variant_new("(b)", active));
    ASSERT_TRUE(waitUntil([&] { return postedCount(SystemNotification::workspaceScreensDidSleep) == 1; }));
    for (const gboolean active : {gboolean{FALSE}, gboolean{TRUE}})
        m_session.emit(Bus::session, freedesktop, "/ScreenSaver", freedesktop, "ActiveChanged", "b",
            g_variant_new_parsed("[<%b>]", active));
    ASSERT_TRUE(waitUntil([&] { return postedCount(SystemNotification::workspaceScreensDidSleep) == 2; }));
    EXPECT_EQ(m_hub->posted().size(), 2U) << "the screen saver going off posts nothing";
}

void countSignal(GDBusConnection* /*connection*/, const gchar* /*sender*/, const gchar* /*path*/,
    const gchar* /*interfaceName*/, const gchar* /*signal*/, GVariant* /*parameters*/, gpointer count)
{
    ++*static_cast<int*>(count);
}

TEST_F(DesktopSystemEventsTest, ZoneSetThroughTimedated_IsAdoptedAndPostedOncePerChange)
{
    g_setenv("TZ", "Europe/Berlin", TRUE);
    m_session.startMock(Bus::system, timedateName, {"--template", "timedated"});
    const auto setZone = [&](const char* zone) {
        g_setenv("TZ", zone, TRUE);
        (void)m_session.call(
            Bus::system, timedateName, timedatePath, timedateName, "SetTimezone", g_variant_new("(sb)", zone, FALSE));
    };
    std::vector<std::string> zonesObserved;
    const auto observer = m_hub->addObserver(SystemNotification::systemTimeZoneDidChange,
        [&](Window* /*window*/) { zonesObserved.push_back(defaultZone()); });
    startEvents();
    // Told on the same connection and context, after the events' own
    // subscription: once this has heard a signal, so have they.
    int heard = 0;
    GDBusConnection* system = m_session.connection(Bus::system);
    const guint subscription
        = g_dbus_connection_signal_subscribe(system, timedateName, "org.freedesktop.DBus.Properties",
            "PropertiesChanged", timedatePath, nullptr, G_DBUS_SIGNAL_FLAGS_NONE, &countSignal, &heard, nullptr);

    // As timedated does: the zone changes first, then the bus tells of it;
    // a second word of the same change, and one of another property, do
    // not count.
    setZone("Asia/Tokyo");
    setZone("Asia/Tokyo");
    (void)m_session.call(
        Bus::system, timedateName, timedatePath, timedateName, "SetNTP", g_variant_new("(bb)", FALSE, FALSE));
    ASSERT_TRUE(waitUntil([&] { return heard >= 3; }));
    EXPECT_EQ(zonesObserved, std::vector<std::string>{"Asia/Tokyo"}) << "adopted before the observers ran";

    const std::time_t instant = 1'700'000'000;
    std::tm local{};
    localtime_r(&instant, &local);
    EXPECT_EQ(local.tm_gmtoff, 9 * 3600) << "the C library follows too";

    setZone("America/New_York");
    ASSERT_TRUE(waitUntil([&] { return zonesObserved.size() == 2; }));
    EXPECT_EQ(zonesObserved.back(), "America/New_York");
    g_dbus_connection_signal_unsubscribe(system, subscription);
}

TEST_F(DesktopSystemEventsTest, NoBusesAtAll_IsNotAFailure)
{
    DesktopSystemEvents events(m_hub, nullptr, nullptr);
    EXPECT_TRUE(m_hub->posted().empty());
}

} // namespace
} // namespace velmora
