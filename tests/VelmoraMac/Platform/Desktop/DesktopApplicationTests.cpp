#include <atomic>
#include <chrono>
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

#include "VelmoraMac/Platform/Desktop/DesktopApplication.h"
#include "VelmoraMac/Platform/Desktop/DesktopEventMonitors.h"
#include "VelmoraMac/Platform/Desktop/SingleInstance.h"
#include "VelmoraMac/Platform/SystemNotificationHub.h"

namespace velmora {
namespace {

// Iterates the default context until `done` holds or ten seconds pass.
bool iterateUntil(const std::function<bool()>& done)
{
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!done()) {
        if (std::chrono::steady_clock::now() > deadline)
            return false;
        g_main_context_iteration(nullptr, FALSE);
    }
    return true;
}

// What the launch handler saw: each request, and whether it was the
// current one while handled.
struct LaunchLog {
    std::vector<LaunchEvent> events;
    bool allCurrent = true;

    Application::LaunchHandler handler(const Application& application)
    {
        return [this, &application](const LaunchEvent& event) {
            events.push_back(event);
            allCurrent = allCurrent && application.currentLaunchEvent() == event;
        };
    }
};

LaunchEvent openRequest()
{
    return {LaunchEvent::openApplication, std::nullopt};
}

LaunchEvent reopenRequest()
{
    return {LaunchEvent::reopenApplication, std::nullopt};
}

class DesktopApplicationTest : public testing::Test {
protected:
    void SetUp() override
    {
        if (gtk_init_check(nullptr, nullptr) == FALSE)
            GTEST_SKIP() << "no display";
        m_monitors = std::make_unique<DesktopEventMonitors>();
    }

    [[nodiscard]] std::unique_ptr<DesktopApplication> application(const std::vector<std::string>& arguments = {"renderer"}) const
    {
        return std::make_unique<DesktopApplication>(m_hub, *m_monitors, arguments);
    }

    std::shared_ptr<SystemNotificationHub> m_hub = std::make_shared<SystemNotificationHub>();
    std::unique_ptr<DesktopEventMonitors> m_monitors;
};

// A private session bus. GTestDBus also unsets DISPLAY, which later tests
// in this process (and the processes of death tests) still need.
class PrivateBus {
public:
    PrivateBus()
        : m_display(g_getenv("DISPLAY") != nullptr ? std::optional<std::string>(g_getenv("DISPLAY")) : std::nullopt)
    {
        g_test_dbus_up(m_bus);
    }
    PrivateBus(const PrivateBus&) = delete;
    PrivateBus& operator=(const PrivateBus&) = delete;
    PrivateBus(PrivateBus&&) = delete;
    PrivateBus& operator=(PrivateBus&&) = delete;
    ~PrivateBus()
    {
        g_test_dbus_down(m_bus);
        g_object_unref(m_bus);
        if (m_display)
            g_setenv("DISPLAY", m_display->c_str(), TRUE);
    }

    [[nodiscard]] GTestDBus* get() const { return m_bus; }

private:
    std::optional<std::string> m_display;
    GTestDBus* m_bus = g_test_dbus_new(G_TEST_DBUS_NONE);
};

// A connection to `bus` of a process of its own.
GDBusConnection* connect(GTestDBus* bus)
{
    const auto flags = static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT | G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
    return g_dbus_connection_new_for_address_sync(g_test_dbus_get_bus_address(bus), flags, nullptr, nullptr, nullptr);
}

// Another start of the program, on a thread that plays its process: it
// blocks on the first instance's answer, which this thread's loop gives.
class SecondStart {
public:
    explicit SecondStart(GTestDBus* bus)
        : m_thread([this, bus] {
            GMainContext* context = g_main_context_new();
            g_main_context_push_thread_default(context);
            GDBusConnection* connection = connect(bus);
            SingleInstance::Claim claimed = SingleInstance::Claim::unknown;
            (void)SingleInstance::claim(
                connection, [] {}, claimed);
            m_claimed = claimed;
            g_object_unref(connection);
            g_main_context_pop_thread_default(context);
            g_main_context_unref(context);
            m_done = true;
        })
    {
    }
    SecondStart(const SecondStart&) = delete;
    SecondStart& operator=(const SecondStart&) = delete;
    SecondStart(SecondStart&&) = delete;
    SecondStart& operator=(SecondStart&&) = delete;
    ~SecondStart()
    {
        if (m_thread.joinable())
            m_thread.join();
    }

    // Serves the first instance until the second has its answer.
    SingleInstance::Claim finish()
    {
        EXPECT_TRUE(iterateUntil([this] { return m_done.load(); }));
        m_thread.join();
        return m_claimed.load();
    }

private:
    std::atomic<bool> m_done{false};
    std::atomic<SingleInstance::Claim> m_claimed{SingleInstance::Claim::unknown};
    std::thread m_thread;
};

TEST_F(DesktopApplicationTest, Launches_OpenOnceThenReopenForEveryLaterStart)
{
    const PrivateBus privateBus;
    GTestDBus* bus = privateBus.get();
    GDBusConnection* connection = connect(bus);
    ASSERT_TRUE(DesktopApplication::claimSingleInstance(connection));
    EXPECT_TRUE(DesktopApplication::claimSingleInstance(connection)) << "claimed already";

    // A start while this one is still starting up is not lost.
    EXPECT_EQ(SecondStart(bus).finish(), SingleInstance::Claim::reopenedOther);

    const auto app = application();
    LaunchLog log;
    app->setLaunchHandler(log.handler(*app));
    EXPECT_TRUE(log.events.empty()) << "delivered from the main loop, not from inside the call";
    ASSERT_TRUE(iterateUntil([&] { return log.events.size() == 2; }));
    EXPECT_EQ(log.events, (std::vector<LaunchEvent>{openRequest(), reopenRequest()}));

    EXPECT_EQ(SecondStart(bus).finish(), SingleInstance::Claim::reopenedOther);
    ASSERT_TRUE(iterateUntil([&] { return log.events.size() == 3; }));
    EXPECT_EQ(log.events.back(), reopenRequest());
    EXPECT_TRUE(log.allCurrent);
    EXPECT_FALSE(app->currentLaunchEvent()) << "none outside the handler";

    // A new handler does not get the open request again.
    LaunchLog later;
    app->setLaunchHandler(later.handler(*app));
    EXPECT_EQ(SecondStart(bus).finish(), SingleInstance::Claim::reopenedOther);
    ASSERT_TRUE(iterateUntil([&] { return !later.events.empty(); }));
    EXPECT_EQ(later.events, std::vector<LaunchEvent>{reopenRequest()});

    // Given back, the name goes to the next start.
    DesktopApplication::releaseSingleInstance();
    EXPECT_EQ(SecondStart(bus).finish(), SingleInstance::Claim::first);

    g_object_unref(connection);
}

TEST_F(DesktopApplicationTest, Launches_TheLoginMarkerMakesALoginLaunch)
{
    struct LaunchCase {
        std::vector<std::string> arguments;
        std::optional<std::string> propertyData;
    };
    const LaunchCase cases[] = {
        {{"renderer", "--fullscreen"}, std::nullopt},
        {{"renderer", "--velmora-login"}, LaunchEvent::launchedAsLoginItem},
        // The program's own name is no argument.
        {{"--velmora-login"}, std::nullopt},
    };
    for (const LaunchCase& entry : cases) {
        SCOPED_TRACE(entry.arguments.back());
        const auto app = application(entry.arguments);
        LaunchLog log;
        app->setLaunchHandler(log.handler(*app));
        ASSERT_TRUE(iterateUntil([&] { return !log.events.empty(); }));
        EXPECT_EQ(log.events.front(), (LaunchEvent{LaunchEvent::openApplication, entry.propertyData}));
        EXPECT_TRUE(log.allCurrent);
    }
}

// A window the window manager never focuses by itself, so that only the
// focus changes the test makes reach it.
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
    const auto posted = [this] { return m_hub->posted(); };
    using enum SystemNotification;
    EXPECT_FALSE(app->isActive());

    putFocus(pond, true);
    ASSERT_TRUE(iterateUntil([&] { return posted().size() == 1; }));
    EXPECT_EQ(posted(), std::vector{applicationDidBecomeActive});
    EXPECT_TRUE(app->isActive());

    // From the pond to the panel, then away: only leaving is posted.
    putFocus(pond, false);
    putFocus(panel, true);
    ASSERT_TRUE(iterateUntil([&] { return gtk_window_is_active(GTK_WINDOW(panel)) != FALSE; }));
    putFocus(panel, false);
    ASSERT_TRUE(iterateUntil([&] { return posted().size() == 2; }));
    EXPECT_EQ(posted(), (std::vector{applicationDidBecomeActive, applicationDidResignActive}));
    EXPECT_FALSE(app->isActive());

    putFocus(panel, true);
    ASSERT_TRUE(iterateUntil([&] { return posted().size() == 3; }));
    EXPECT_EQ(posted().back(), applicationDidBecomeActive);

    gtk_widget_destroy(pond);
    gtk_widget_destroy(panel);
}

// Finds the alert and answers it with its one button, recording what it
// showed.
struct AlertReader {
    std::string text;
    std::string secondaryText;
    std::string buttonLabel;
    bool underlined = true;

    static gboolean answer(gpointer self)
    {
        auto& reader = *static_cast<AlertReader*>(self);
        GList* toplevels = gtk_window_list_toplevels();
        GtkWidget* alert = nullptr;
        for (GList* item = toplevels; item != nullptr; item = item->next) {
            if (GTK_IS_MESSAGE_DIALOG(item->data))
                alert = GTK_WIDGET(item->data);
        }
        g_list_free(toplevels);
        if (alert == nullptr)
            return G_SOURCE_CONTINUE;
        gchar* text = nullptr;
        gchar* secondary = nullptr;
        g_object_get(alert, "text", &text, "secondary-text", &secondary, nullptr);
        reader.text = text != nullptr ? text : "";
        reader.secondaryText = secondary != nullptr ? secondary : "";
        g_free(text);
        g_free(secondary);
        GtkWidget* button = gtk_dialog_get_widget_for_response(GTK_DIALOG(alert), GTK_RESPONSE_ACCEPT);
        reader.buttonLabel = gtk_button_get_label(GTK_BUTTON(button));
        reader.underlined = gtk_button_get_use_underline(GTK_BUTTON(button)) != FALSE;
        gtk_button_clicked(GTK_BUTTON(button));
        return G_SOURCE_REMOVE;
    }
};

TEST_F(DesktopApplicationTest, Alert_ShowsTheTextsExactlyAndReturnsWhenAnswered)
{
    const auto app = application();
    AlertReader reader;
    g_idle_add(&AlertReader::answer, &reader);
    app->runModalAlert("Velmora couldn’t start", "The <b>content</b> is missing.", "O_K");
    EXPECT_EQ(reader.text, "Velmora couldn’t start");
    EXPECT_EQ(reader.secondaryText, "The <b>content</b> is missing.");
    EXPECT_EQ(reader.buttonLabel, "O_K");
    EXPECT_FALSE(reader.underlined) << "no mnemonic eats the underscore";
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
            (void)std::fputs("returned", stderr);
            if (!gtk_widget_get_visible(window))
                (void)std::fputs(" hidden", stderr);
            (void)iterateUntil([] { return false; });
            std::_Exit(3);
        },
        testing::ExitedWithCode(EXIT_SUCCESS), "returned hidden exit handlers ran");
}

} // namespace
} // namespace velmora
