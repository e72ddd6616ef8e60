#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include <gio/gio.h>
#include <gtest/gtest.h>
#include <gtk/gtk.h>

#include "DesktopSession.h"
#include "VelmoraMac/Platform/Desktop/DesktopApplication.h"
#include "VelmoraMac/Platform/Desktop/DesktopEventMonitors.h"
#include "VelmoraMac/Platform/Desktop/SingleInstance.h"
#include "VelmoraMac/Platform/SystemNotificationHub.h"

namespace velmora {
namespace {

using test::iterateUntil;

// Another start of the program, on a thread that plays its process; this
// thread's loop answers it as the first instance.
SingleInstance::Claim startAgain(GTestDBus* bus)
{
    std::atomic<SingleInstance::Claim> claimed{SingleInstance::Claim::unknown};
    std::atomic<bool> done{false};
    std::thread second([&] {
        GMainContext* context = g_main_context_new();
        g_main_context_push_thread_default(context);
        const auto flags = static_cast<GDBusConnectionFlags>(
            G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT | G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
        GDBusConnection* connection = g_dbus_connection_new_for_address_sync(
            g_test_dbus_get_bus_address(bus), flags, nullptr, nullptr, nullptr);
        SingleInstance::Claim claim = SingleInstance::Claim::unknown;
        (void)SingleInstance::claim(
            connection, [] {}, claim);
        claimed = claim;
        g_object_unref(connection);
        g_main_context_pop_thread_default(context);
        g_main_context_unref(context);
        done = true;
    });
    EXPECT_TRUE(iterateUntil([&] { return done.load(); }));
    second.join();
    return claimed;
}

class DesktopApplicationTest : public testing::Test {
protected:
    void SetUp() override
    {
        if (gtk_init_check(nullptr, nullptr) == FALSE)
            GTEST_SKIP() << "no display";
        m_monitors = std::make_unique<DesktopEventMonitors>();
    }

    [[nodiscard]] std::unique_ptr<DesktopApplication> application() const
    {
        return std::make_unique<DesktopApplication>(m_hub, *m_monitors, std::nullopt);
    }

    // Records each request, and whether it was the current one meanwhile.
    static Application::LaunchHandler recorder(const Application& application, std::vector<LaunchEvent>& events)
    {
        return [&](const LaunchEvent& event) {
            if (application.currentLaunchEvent() == event)
                events.push_back(event);
        };
    }

    std::shared_ptr<SystemNotificationHub> m_hub = std::make_shared<SystemNotificationHub>();
    std::unique_ptr<DesktopEventMonitors> m_monitors;
};

TEST_F(DesktopApplicationTest, Launches_OpenOnceThenReopenForEveryLaterStart)
{
    // GTestDBus unsets DISPLAY, which later tests in this process need.
    const std::string display = g_getenv("DISPLAY") != nullptr ? g_getenv("DISPLAY") : "";
    GTestDBus* bus = g_test_dbus_new(G_TEST_DBUS_NONE);
    g_test_dbus_up(bus);
    GDBusConnection* connection = g_dbus_connection_new_for_address_sync(g_test_dbus_get_bus_address(bus),
        static_cast<GDBusConnectionFlags>(
            G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT | G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
        nullptr, nullptr, nullptr);
    ASSERT_TRUE(DesktopApplication::claimSingleInstance(connection));
    // A start while this one is still starting up is not lost.
    EXPECT_EQ(startAgain(bus), SingleInstance::Claim::reopenedOther);

    const LaunchEvent open{LaunchEvent::openApplication, std::nullopt};
    const LaunchEvent reopen{LaunchEvent::reopenApplication, std::nullopt};
    const auto app = application();
    std::vector<LaunchEvent> events;
    app->setLaunchHandler(recorder(*app, events));
    EXPECT_TRUE(events.empty()) << "delivered from the main loop, not from inside the call";
    ASSERT_TRUE(iterateUntil([&] { return events.size() == 2; }));
    EXPECT_EQ(events, (std::vector{open, reopen}));

    // A new handler gets later starts, not the open request again.
    std::vector<LaunchEvent> later;
    app->setLaunchHandler(recorder(*app, later));
    EXPECT_EQ(startAgain(bus), SingleInstance::Claim::reopenedOther);
    ASSERT_TRUE(iterateUntil([&] { return !later.empty(); }));
    EXPECT_EQ(later, std::vector{reopen});
    EXPECT_FALSE(app->currentLaunchEvent()) << "none outside the handler";

    DesktopApplication::releaseSingleInstance();
    EXPECT_EQ(startAgain(bus), SingleInstance::Claim::first) << "the name was given back";
    g_object_unref(connection);
    g_test_dbus_down(bus);
    g_object_unref(bus);
    if (!display.empty())
        g_setenv("DISPLAY", display.c_str(), TRUE);
}

// A shown window that the window manager never focuses by itself, so that
// only the focus changes the test makes reach it.
GtkWidget* unfocusedWindow()
{
    GtkWidget* window = gtk_window_new(GTK_WINDOW_TOPLEVEL);
    gtk_window_set_accept_focus(GTK_WINDOW(window), FALSE);
    gtk_window_set_focus_on_map(GTK_WINDOW(window), FALSE);
    gtk_widget_show(window);
    return window;
}

void putFocus(GtkWidget* window, bool in)
{
    GdkEvent* event = gdk_event_new(GDK_FOCUS_CHANGE);
    event->focus_change.window = GDK_WINDOW(g_object_ref(gtk_widget_get_window(window)));
    event->focus_change.in = in ? TRUE : FALSE;
    gdk_event_set_device(event, gdk_seat_get_keyboard(gdk_display_get_default_seat(gdk_display_get_default())));
    gdk_event_put(event);
    gdk_event_free(event);
}

TEST_F(DesktopApplicationTest, Activity_IsPostedOnceAcrossOurOwnWindows)
{
    GtkWidget* pond = unfocusedWindow();
    GtkWidget* panel = unfocusedWindow();
    const auto app = application();
    const std::vector<SystemNotification>& posted = m_hub->posted();
    using enum SystemNotification;

    putFocus(pond, true);
    ASSERT_TRUE(iterateUntil([&] { return posted.size() == 1; }));
    EXPECT_TRUE(app->isActive());

    // From the pond to the panel, then away: only leaving is posted.
    putFocus(pond, false);
    putFocus(panel, true);
    ASSERT_TRUE(iterateUntil([&] { return gtk_window_is_active(GTK_WINDOW(panel)) != FALSE; }));
    putFocus(panel, false);
    ASSERT_TRUE(iterateUntil([&] { return posted.size() == 2 && !app->isActive(); }));

    putFocus(panel, true);
    ASSERT_TRUE(iterateUntil([&] { return posted.size() == 3; }));
    EXPECT_EQ(
        posted, (std::vector{applicationDidBecomeActive, applicationDidResignActive, applicationDidBecomeActive}));
    gtk_widget_destroy(pond);
    gtk_widget_destroy(panel);
}

// Reads the alert's texts into `shown`, then answers with its one button.
gboolean answerAlert(gpointer shown)
{
    GList* toplevels = gtk_window_list_toplevels();
    GtkWidget* alert = nullptr;
    for (GList* item = toplevels; item != nullptr; item = item->next)
        alert = GTK_IS_MESSAGE_DIALOG(item->data) ? GTK_WIDGET(item->data) : alert;
    g_list_free(toplevels);
    if (alert == nullptr)
        return G_SOURCE_CONTINUE;
    gchar* text = nullptr;
    gchar* secondary = nullptr;
    g_object_get(alert, "text", &text, "secondary-text", &secondary, nullptr);
    GtkWidget* button = gtk_dialog_get_widget_for_response(GTK_DIALOG(alert), GTK_RESPONSE_ACCEPT);
    *static_cast<std::vector<std::string>*>(shown) = {text, secondary, gtk_button_get_label(GTK_BUTTON(button)),
        gtk_button_get_use_underline(GTK_BUTTON(button)) != FALSE ? "mnemonic" : "plain"};
    g_free(text);
    g_free(secondary);
    gtk_button_clicked(GTK_BUTTON(button));
    return G_SOURCE_REMOVE;
}

TEST_F(DesktopApplicationTest, Alert_ShowsTheTextsExactlyAndReturnsWhenAnswered)
{
    std::vector<std::string> shown;
    g_idle_add(&answerAlert, &shown);
    application()->runModalAlert("Velmora couldn’t start", "The <b>content</b> is missing.", "O_K");
    EXPECT_EQ(
        shown, (std::vector<std::string>{"Velmora couldn’t start", "The <b>content</b> is missing.", "O_K", "plain"}));
}

void reportExitHandlers()
{
    (void)std::fputs(" exit handlers ran", stderr);
}

TEST_F(DesktopApplicationTest, Terminate_HidesTheWindowsThenExitsNormallyFromTheLoop)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            GtkWidget* window = gtk_window_new(GTK_WINDOW_TOPLEVEL);
            gtk_widget_show(window);
            const auto app = application();
            (void)std::atexit(&reportExitHandlers);
            app->terminate();
            (void)std::fputs(gtk_widget_get_visible(window) ? "returned shown" : "returned hidden", stderr);
            // The loop runs the exit, which ends the process: nothing here
            // comes true, and only a lost exit meets the deadline.
            (void)iterateUntil([] { return false; });
            std::_Exit(3);
        },
        testing::ExitedWithCode(EXIT_SUCCESS), "returned hidden exit handlers ran");
}

} // namespace
} // namespace velmora
