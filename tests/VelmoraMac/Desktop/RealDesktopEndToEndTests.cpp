// The library on desktops of real components, as a GTK rendering program
// uses it, where the others stand mocks in: nothing here was written for
// these tests. On Wayland (scripts/with-wayland.sh, VELMORA_DESKTOP=sway):
// sway headless with waybar's tray as the StatusNotifierItem host, the
// compositor's tiling and full screen, and the keyboard through wtype, a
// virtual keyboard. On X11 (scripts/with-desktop.sh, VELMORA_DESKTOP=xfce):
// xfce4-panel's tray and dunst as the notification server. Each fixture is
// skipped on the other desktop and anywhere else.

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <gdk/gdkwayland.h>
#include <gtest/gtest.h>
#include <gtk/gtk.h>
#include <nlohmann/json.hpp>
#include <unistd.h>

#include "examples/VelmoraFunctions.h"
#include "tests/VelmoraCore/TemporaryFolder.h"
#include "tests/VelmoraMac/Platform/Desktop/DesktopSession.h"

namespace velmora::test {
namespace {

namespace fs = std::filesystem;
using json = nlohmann::json;
using namespace std::chrono_literals;

constexpr const char* topic = "smoking";

void seedOnboardedUser(
    const fs::path& dataHome, bool reminderEnabled = false, int reminderHour = 20, int reminderMinute = 0)
{
    fs::create_directories(dataHome / "app.velmora.mac");
    const json state = {{"version", 1}, {"onboarded", true}, {"selected", {"doomscrolling", "phone", topic}},
        {"lotuses", {{topic, {{"moments", 12}}}}}, {"practiceDays", json::array()}, {"language", "system"},
        {"hintSeen", true}, {"reminderEnabled", reminderEnabled}, {"reminderHour", reminderHour},
        {"reminderMinute", reminderMinute}, {"waterSoundEnabled", false}, {"bellSoundEnabled", false}};
    std::ofstream(dataHome / "app.velmora.mac" / "practice.json") << state.dump();
}

// Runs a program of the desktop's and returns what it printed; fails the
// test when it does not end well.
std::string run(const std::vector<std::string>& command)
{
    std::vector<const char*> arguments;
    arguments.reserve(command.size() + 1);
    for (const std::string& argument : command)
        arguments.push_back(argument.c_str());
    arguments.push_back(nullptr);
    gchar* output = nullptr;
    gint status = 0;
    GError* error = nullptr;
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-const-cast): GLib's argv is not const
    gchar** words = const_cast<gchar**>(arguments.data());
    const bool ran = g_spawn_sync(nullptr, words, nullptr, G_SPAWN_SEARCH_PATH, nullptr, nullptr, &output, nullptr,
                         &status, &error)
        != FALSE;
    EXPECT_TRUE(ran && g_spawn_check_wait_status(status, nullptr) != FALSE)
        << command.front() << ": " << (error != nullptr ? error->message : "failed");
    if (error != nullptr)
        g_error_free(error);
    std::string text = output != nullptr ? output : "";
    g_free(output);
    return text;
}

// A call that may reach this very process (the library's item and menu
// answer on this thread): sent, then answered while the loop runs.
DesktopSession::VariantPointer callAndWait(
    const char* destination, const char* path, const char* interface, const char* method, GVariant* parameters)
{
    struct Answer {
        bool done = false;
        GVariant* value = nullptr;
    } answer;
    GDBusConnection* bus = g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr);
    g_dbus_connection_call(
        bus, destination, path, interface, method, parameters, nullptr, G_DBUS_CALL_FLAGS_NONE, 10000, nullptr,
        [](GObject* source, GAsyncResult* result, gpointer data) {
            auto& reply = *static_cast<Answer*>(data);
            reply.value = g_dbus_connection_call_finish(G_DBUS_CONNECTION(source), result, nullptr);
            reply.done = true;
        },
        &answer);
    EXPECT_TRUE(iterateUntil([&] { return answer.done; })) << method;
    g_object_unref(bus);
    return DesktopSession::VariantPointer::adopt(answer.value);
}

class RealDesktop : public ::testing::Test {
protected:
    enum class Desktop { sway, xfce };

    explicit RealDesktop(Desktop desktop)
        : m_desktop(desktop)
    {
    }

    void SetUp() override
    {
        g_setenv("XDG_DATA_HOME", (m_home / "data").c_str(), TRUE);
        g_setenv("XDG_CONFIG_HOME", (m_home / "config").c_str(), TRUE);
        const bool sway = m_desktop == Desktop::sway;
        if (g_strcmp0(g_getenv("VELMORA_DESKTOP"), sway ? "sway" : "xfce") != 0
            || gtk_init_check(nullptr, nullptr) == FALSE
            || GDK_IS_WAYLAND_DISPLAY(gdk_display_get_default()) != (sway ? TRUE : FALSE))
            GTEST_SKIP() << "not on the test command's "
                         << (sway ? "sway (scripts/with-wayland.sh)" : "xfce (scripts/with-desktop.sh)");
        m_mapHook = g_signal_add_emission_hook(
            g_signal_lookup("map", GTK_TYPE_WIDGET), 0, &RealDesktop::mapped, this, nullptr);
    }

    void TearDown() override
    {
        if (m_mapHook != 0)
            g_signal_remove_emission_hook(g_signal_lookup("map", GTK_TYPE_WIDGET), m_mapHook);
    }

    [[nodiscard]] fs::path dataHome() const { return m_home / "data"; }

    void start()
    {
        m_window = gtk_window_new(GTK_WINDOW_TOPLEVEL);
        gtk_window_set_default_size(GTK_WINDOW(m_window), 900, 600);
        m_area = gtk_drawing_area_new();
        gtk_container_add(GTK_CONTAINER(m_window), m_area);
        g_signal_connect(m_area, "draw", G_CALLBACK(+[](GtkWidget*, cairo_t* cairo, gpointer) {
            cairo_set_source_rgb(cairo, 0.09, 0.23, 0.29);
            cairo_paint(cairo);
            return FALSE;
        }),
            nullptr);
        gtk_widget_add_tick_callback(m_area, &RealDesktop::frame, this, nullptr);
        gtk_widget_show_all(m_window);
        m_library.start();
    }

    [[nodiscard]] bool pondVisible() const { return m_library.isPondVisible() != 0; }

    [[nodiscard]] json stateFile() const
    {
        std::ifstream file(dataHome() / "app.velmora.mac" / "practice.json");
        return json::parse(file, nullptr, false);
    }

    // Our windows as the compositor has them: its nodes of this process.
    static std::vector<json> ourNodes()
    {
        std::vector<json> found;
        const std::function<void(const json&)> visit = [&](const json& node) {
            if (node.value("pid", 0) == ::getpid())
                found.push_back(node);
            for (const char* children : {"nodes", "floating_nodes"}) {
                if (node.contains(children))
                    for (const json& child : node[children])
                        visit(child);
            }
        };
        visit(json::parse(run({"swaymsg", "-r", "-t", "get_tree"}), nullptr, false));
        return found;
    }

    // The pond's node, when it is the one window of ours on screen.
    static std::optional<json> pondNode()
    {
        const std::vector<json> nodes = ourNodes();
        if (nodes.size() != 1 || !nodes.front().value("visible", false))
            return std::nullopt;
        return nodes.front();
    }

    static bool fullScreenOnCompositor()
    {
        const std::optional<json> node = pondNode();
        return node && node->value("fullscreen_mode", 0) != 0;
    }

    static bool windowedOnCompositor()
    {
        const std::optional<json> node = pondNode();
        return node && node->value("fullscreen_mode", 0) == 0;
    }

    static void press(const std::vector<std::string>& command) { (void)run(command); }

    // Keys through the compositor's virtual keyboard, as a user types them,
    // with the keymap every run of wtype here has (scripts/with-wayland.sh).
    static void type(const std::vector<std::string>& keys)
    {
        std::vector<std::string> command{"wtype"};
        gchar** keymap
            = g_strsplit(g_getenv("VELMORA_WTYPE_KEYMAP") != nullptr ? g_getenv("VELMORA_WTYPE_KEYMAP") : "", " ", -1);
        for (gchar** word = keymap; *word != nullptr; ++word) {
            if (**word != '\0')
                command.emplace_back(*word);
        }
        g_strfreev(keymap);
        command.insert(command.end(), keys.begin(), keys.end());
        (void)run(command);
    }
    static void pressFullScreenShortcut() { type({"-M", "ctrl", "-M", "logo", "-k", "f", "-m", "logo", "-m", "ctrl"}); }

    // A window loop shows as toplevels mapped again and again; one settled
    // state maps none. Watched over a stretch of time, since it is the
    // absence of events that is asserted.
    void expectNoWindowLoop(const char* after) const
    {
        const int before = m_maps;
        (void)iterateUntil([] { return false; }, 3s);
        EXPECT_LE(m_maps - before, 1) << "toplevels mapped within 3 s after " << after;
    }

    // The settings, wherever they are drawn.
    [[nodiscard]] bool settingsShown() const
    {
        if (panel() != nullptr)
            return true;
        GList* toplevels = gtk_window_list_toplevels();
        bool another = false;
        for (GList* item = toplevels; item != nullptr; item = item->next) {
            auto* widget = static_cast<GtkWidget*>(item->data);
            another = another
                || (widget != m_window && gtk_widget_get_visible(widget)
                    && gtk_window_get_window_type(GTK_WINDOW(widget)) == GTK_WINDOW_TOPLEVEL);
        }
        g_list_free(toplevels);
        return another;
    }

    // The settings panel: in the pond's own window on Wayland.
    [[nodiscard]] GtkWidget* panel() const
    {
        const auto found = widgets(m_window, [](GtkWidget* widget) {
            return gtk_style_context_has_class(gtk_widget_get_style_context(widget), "velmora-panel") != FALSE;
        });
        return found.empty() ? nullptr : found.front();
    }

    static std::vector<GtkWidget*> widgets(GtkWidget* root, const std::function<bool(GtkWidget*)>& wanted)
    {
        std::vector<GtkWidget*> found;
        if (root == nullptr)
            return found;
        const std::function<void(GtkWidget*)> visit = [&](GtkWidget* widget) {
            if (!gtk_widget_is_visible(widget))
                return;
            if (wanted(widget))
                found.push_back(widget);
            if (GTK_IS_CONTAINER(widget)) {
                GList* children = gtk_container_get_children(GTK_CONTAINER(widget));
                for (GList* child = children; child != nullptr; child = child->next)
                    visit(static_cast<GtkWidget*>(child->data));
                g_list_free(children);
            }
        };
        visit(root);
        return found;
    }

    static bool hasRole(GtkWidget* widget, AtkRole role)
    {
        AtkObject* accessible = gtk_widget_get_accessible(widget);
        return accessible != nullptr && atk_object_get_role(accessible) == role;
    }

    // The whole output, bar and tray included, for a person to look at.
    // Wayland lets no client read the screen: the compositor's grim does.
    static void screenshot(const std::string& name)
    {
        const char* folder = std::getenv("VELMORA_SCREENSHOT_DIR"); // NOLINT(concurrency-mt-unsafe): GTK's thread only
        if (folder == nullptr)
            return;
        // Whatever was asked of the window is drawn and on the output.
        (void)iterateUntil([] { return g_main_context_pending(nullptr) == FALSE; }, 5s);
        press({"grim", (fs::path(folder) / ("wayland-" + name + ".png")).string()});
    }

    // Tabs through the page until `target` has the keyboard, then presses
    // Space on it, and waits until the page has gone or the pond has come.
    void activateByKeyboard(GtkWidget* target)
    {
        // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast): GLib's weak pointer
        auto* weak = reinterpret_cast<gpointer*>(&target);
        g_object_add_weak_pointer(G_OBJECT(target), weak);
        for (int tab = 0; tab < 40 && target != nullptr && gtk_widget_has_focus(target) == FALSE; ++tab) {
            GtkWidget* before = gtk_window_get_focus(GTK_WINDOW(m_window));
            type({"-k", "Tab"});
            (void)iterateUntil(
                [&] { return target == nullptr || gtk_window_get_focus(GTK_WINDOW(m_window)) != before; }, 5s);
        }
        if (target == nullptr)
            return; // The page was drawn again meanwhile; the caller looks again.
        ASSERT_TRUE(gtk_widget_has_focus(target)) << "Tab never reached " << gtk_widget_get_name(target);
        type({"-k", "space"});
        const bool changed = iterateUntil([&] { return target == nullptr || (pondVisible() && panel() == nullptr); });
        if (target != nullptr)
            g_object_remove_weak_pointer(G_OBJECT(target), weak);
        ASSERT_TRUE(changed) << "the key changed nothing";
    }

    // The item's name on the bus: this process's connection.
    static std::string itemAddress()
    {
        GDBusConnection* bus = g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr);
        std::string name = g_dbus_connection_get_unique_name(bus);
        g_object_unref(bus);
        return name;
    }

    // Whether the tray host's watcher lists this process's item.
    static bool itemRegistered()
    {
        const std::string address = itemAddress();
        const std::string process = "-" + std::to_string(::getpid()) + "-";
        const std::vector<std::string> items = registeredItems();
        return std::ranges::any_of(items, [&](const std::string& item) {
            return item.starts_with(address) || item.find(process) != std::string::npos;
        });
    }

    // The items the tray host's watcher lists.
    static std::vector<std::string> registeredItems()
    {
        std::vector<std::string> items;
        const auto value
            = callAndWait("org.kde.StatusNotifierWatcher", "/StatusNotifierWatcher", "org.freedesktop.DBus.Properties",
                "Get", g_variant_new("(ss)", "org.kde.StatusNotifierWatcher", "RegisteredStatusNotifierItems"));
        if (!value)
            return items;
        GVariant* inner = nullptr;
        g_variant_get(value.get(), "(v)", &inner);
        GVariantIter iter;
        g_variant_iter_init(&iter, inner);
        const gchar* item = nullptr;
        while (g_variant_iter_next(&iter, "&s", &item))
            items.emplace_back(item);
        g_variant_unref(inner);
        return items;
    }

    static void clickItem()
    {
        (void)callAndWait(itemAddress().c_str(), "/StatusNotifierItem", "org.kde.StatusNotifierItem", "Activate",
            g_variant_new("(ii)", 0, 0));
    }

    // Chooses the item's menu entry labelled `label`, as the tray host
    // does when it is clicked.
    static void chooseFromMenu(const std::string& label)
    {
        const std::string address = itemAddress();
        const auto menuProperty = callAndWait(address.c_str(), "/StatusNotifierItem", "org.freedesktop.DBus.Properties",
            "Get", g_variant_new("(ss)", "org.kde.StatusNotifierItem", "Menu"));
        ASSERT_TRUE(menuProperty);
        GVariant* inner = nullptr;
        g_variant_get(menuProperty.get(), "(v)", &inner);
        const std::string menu = g_variant_get_string(inner, nullptr);
        g_variant_unref(inner);
        const auto layout = callAndWait(address.c_str(), menu.c_str(), "com.canonical.dbusmenu", "GetLayout",
            g_variant_new("(ii@as)", 0, -1, g_variant_new_strv(nullptr, 0)));
        ASSERT_TRUE(layout);
        GVariant* root = g_variant_get_child_value(layout.get(), 1);
        GVariant* children = g_variant_get_child_value(root, 2);
        std::optional<gint32> id;
        for (gsize index = 0; index < g_variant_n_children(children) && !id; ++index) {
            GVariant* boxed = g_variant_get_child_value(children, index);
            GVariant* child = g_variant_get_variant(boxed);
            gint32 childID = 0;
            GVariant* properties = nullptr;
            g_variant_get_child(child, 0, "i", &childID);
            properties = g_variant_get_child_value(child, 1);
            const gchar* text = nullptr;
            if (g_variant_lookup(properties, "label", "&s", &text) && label == text)
                id = childID;
            g_variant_unref(properties);
            g_variant_unref(child);
            g_variant_unref(boxed);
        }
        g_variant_unref(children);
        g_variant_unref(root);
        ASSERT_TRUE(id) << "no entry " << label;
        (void)callAndWait(address.c_str(), menu.c_str(), "com.canonical.dbusmenu", "Event",
            g_variant_new("(isvu)", *id, "clicked", g_variant_new_int32(0), 0U));
    }

    TemporaryFolder m_home;
    VelmoraFunctions m_library = VelmoraFunctions::load(VELMORA_NATIVE_LIBRARY);
    GtkWidget* m_window = nullptr;
    GtkWidget* m_area = nullptr;
    int m_maps = 0;

private:
    static gboolean mapped(GSignalInvocationHint* /*hint*/, guint count, const GValue* values, gpointer self)
    {
        if (count > 0) {
            auto* widget = static_cast<GtkWidget*>(g_value_get_object(&values[0]));
            if (GTK_IS_WINDOW(widget) && gtk_window_get_window_type(GTK_WINDOW(widget)) == GTK_WINDOW_TOPLEVEL)
                ++static_cast<RealDesktop*>(self)->m_maps;
        }
        return TRUE;
    }

    static gboolean frame(GtkWidget* /*widget*/, GdkFrameClock* /*clock*/, gpointer data)
    {
        auto& test = *static_cast<RealDesktop*>(data);
        while (char* event = test.m_library.copyEvent())
            test.m_library.freeEvent(event);
        return G_SOURCE_CONTINUE;
    }

    Desktop m_desktop;
    gulong m_mapHook = 0;
};

class WaylandDesktop : public RealDesktop {
protected:
    WaylandDesktop()
        : RealDesktop(Desktop::sway)
    {
    }
};

class XfceDesktop : public RealDesktop {
protected:
    XfceDesktop()
        : RealDesktop(Desktop::xfce)
    {
    }
};

TEST_F(WaylandDesktop, TrayItem_RegistersWithTheBarAndItsClickHidesAndShowsThePond)
{
    seedOnboardedUser(dataHome());
    start();
    ASSERT_TRUE(iterateUntil([&] { return pondVisible() && windowedOnCompositor(); }));
    EXPECT_TRUE(iterateUntil([&] { return itemRegistered(); }));
    screenshot("pond");

    clickItem();
    EXPECT_TRUE(iterateUntil([&] { return !pondVisible() && ourNodes().empty(); }));
    clickItem();
    EXPECT_TRUE(iterateUntil([&] { return pondVisible() && windowedOnCompositor(); }));
    expectNoWindowLoop("showing again");
}

// The compositor tiles the pond, which GTK hears as maximized: that is no
// request for full screen. The user's shortcut is, both ways, and the
// compositor's own full screen is followed.
TEST_F(WaylandDesktop, FullScreen_OnlyWhenAskedAndBothWaysWithoutAWindowLoop)
{
    seedOnboardedUser(dataHome());
    start();
    ASSERT_TRUE(iterateUntil(
        [&] { return pondVisible() && windowedOnCompositor() && gtk_window_is_active(GTK_WINDOW(m_window)); }));
    expectNoWindowLoop("showing the pond");
    EXPECT_TRUE(windowedOnCompositor()) << "the pond went full screen by itself";

    pressFullScreenShortcut();
    EXPECT_TRUE(iterateUntil([&] { return fullScreenOnCompositor(); }));
    expectNoWindowLoop("entering full screen");
    EXPECT_TRUE(fullScreenOnCompositor() && pondVisible());

    pressFullScreenShortcut();
    EXPECT_TRUE(iterateUntil([&] { return windowedOnCompositor(); }));
    expectNoWindowLoop("leaving full screen");
    EXPECT_TRUE(windowedOnCompositor() && pondVisible()) << "the pond left the screen";

    // The compositor's own command, as its key binding sends it.
    const std::string criteria = "[pid=" + std::to_string(::getpid()) + "]";
    press({"swaymsg", criteria + " fullscreen enable"});
    EXPECT_TRUE(iterateUntil([&] { return fullScreenOnCompositor(); }));
    expectNoWindowLoop("the compositor's full screen");
    press({"swaymsg", criteria + " fullscreen disable"});
    EXPECT_TRUE(iterateUntil([&] { return windowedOnCompositor(); }));
    expectNoWindowLoop("the compositor's leaving full screen");
    EXPECT_TRUE(windowedOnCompositor() && pondVisible());

    // With the settings open: they come back over the pond each way.
    chooseFromMenu("Settings");
    ASSERT_TRUE(iterateUntil([&] { return settingsShown(); }));
    pressFullScreenShortcut();
    EXPECT_TRUE(iterateUntil([&] { return fullScreenOnCompositor() && settingsShown(); }));
    expectNoWindowLoop("entering full screen with the settings open");
    pressFullScreenShortcut();
    EXPECT_TRUE(iterateUntil([&] { return windowedOnCompositor() && settingsShown(); }));
    expectNoWindowLoop("leaving full screen with the settings open");
    EXPECT_NE(panel(), nullptr) << "the settings do not lie in the pond's window";
}

TEST_F(WaylandDesktop, Onboarding_ByKeyboard_EndsInAPondAndTheSettingsLieOverIt)
{
    start();
    ASSERT_TRUE(
        iterateUntil([&] { return panel() != nullptr && pondNode() && gtk_window_is_active(GTK_WINDOW(m_window)); }));
    // One window of ours, on the output, holding the panel.
    const json node = *pondNode();
    EXPECT_LE(node["rect"]["x"].get<int>() + node["rect"]["width"].get<int>(), 1440);
    EXPECT_LE(node["rect"]["y"].get<int>() + node["rect"]["height"].get<int>(), 900);
    expectNoWindowLoop("showing the welcome page");
    screenshot("onboarding-welcome");
    // Return begins at once.
    GtkWidget* begin = gtk_window_get_focus(GTK_WINDOW(m_window));
    EXPECT_TRUE(begin != nullptr && GTK_IS_BUTTON(begin) && gtk_widget_get_hexpand(begin))
        << "the welcome page's button does not have the keyboard";

    std::vector<std::string> chosen;
    bool loginSwitched = false;
    for (int page = 0; page < 30 && !(pondVisible() && panel() == nullptr); ++page) {
        GtkWidget* shown = panel();
        ASSERT_NE(shown, nullptr);
        // Each page gives the keyboard to one of its controls, never to
        // something that shows no focus.
        GtkWidget* focused = gtk_window_get_focus(GTK_WINDOW(m_window));
        EXPECT_TRUE(focused != nullptr && gtk_widget_is_ancestor(focused, shown) && GTK_IS_BUTTON(focused))
            << "page " << page;
        const auto topics = widgets(shown,
            [](GtkWidget* widget) { return std::string_view(gtk_widget_get_name(widget)).starts_with("topic."); });
        if (!topics.empty()) {
            std::string first = std::string(gtk_widget_get_name(topics.front())).substr(6);
            if (std::ranges::find(chosen, first) == chosen.end()) {
                ASSERT_NO_FATAL_FAILURE(activateByKeyboard(topics.front()));
                chosen.push_back(std::move(first));
                continue;
            }
        }
        const auto switches = widgets(
            shown, [](GtkWidget* widget) { return GTK_IS_BUTTON(widget) && hasRole(widget, ATK_ROLE_TOGGLE_BUTTON); });
        if (!switches.empty() && !loginSwitched) {
            ASSERT_NO_FATAL_FAILURE(activateByKeyboard(switches.front()));
            loginSwitched = true;
            continue;
        }
        const auto primary = widgets(shown, [](GtkWidget* widget) {
            return GTK_IS_BUTTON(widget) && hasRole(widget, ATK_ROLE_PUSH_BUTTON) && gtk_widget_get_hexpand(widget)
                && gtk_widget_is_sensitive(widget);
        });
        ASSERT_FALSE(primary.empty()) << "no way on from page " << page;
        ASSERT_NO_FATAL_FAILURE(activateByKeyboard(primary.back()));
    }
    ASSERT_TRUE(iterateUntil([&] { return pondVisible() && panel() == nullptr; }));
    EXPECT_EQ(stateFile()["onboarded"], true);
    EXPECT_FALSE(chosen.empty());
    expectNoWindowLoop("entering the pond");
    screenshot("pond-after-onboarding");

    // The settings from the tray's menu: over the pond, in its window, with
    // the keyboard; Escape returns to the pond.
    chooseFromMenu("Settings");
    ASSERT_TRUE(
        iterateUntil([&] { return panel() != nullptr && pondNode() && gtk_window_is_active(GTK_WINDOW(m_window)); }));
    expectNoWindowLoop("opening the settings");
    EXPECT_EQ(ourNodes().size(), 1U);
    screenshot("panel-over-pond");
    GtkWidget* focused = gtk_window_get_focus(GTK_WINDOW(m_window));
    EXPECT_TRUE(focused != nullptr && gtk_widget_is_ancestor(focused, panel()))
        << "the panel does not have the keyboard";
    type({"-k", "Escape"});
    EXPECT_TRUE(iterateUntil([&] { return panel() == nullptr && pondVisible() && windowedOnCompositor(); }));
    expectNoWindowLoop("returning to the pond");
}

TEST_F(XfceDesktop, TrayItem_RegistersWithThePanelsTrayAndItsClickHidesThePond)
{
    seedOnboardedUser(dataHome());
    start();
    ASSERT_TRUE(iterateUntil([&] { return pondVisible(); }));
    EXPECT_TRUE(iterateUntil([&] { return itemRegistered(); }));
    clickItem();
    EXPECT_TRUE(iterateUntil([&] { return !pondVisible() && !gtk_widget_get_mapped(m_window); }));
    clickItem();
    EXPECT_TRUE(iterateUntil([&] { return pondVisible() && gtk_widget_get_mapped(m_window); }));
}

// dunst shows the reminder at its minute; its default action, as a click
// on it sends, opens the pond.
TEST_F(XfceDesktop, Reminder_IsShownByDunstAndItsActionOpensThePond)
{
    const std::time_t due = std::time(nullptr) + 60;
    std::tm local{};
    localtime_r(&due, &local);
    seedOnboardedUser(dataHome(), true, local.tm_hour, local.tm_min);
    start();
    ASSERT_TRUE(iterateUntil([&] { return pondVisible() && itemRegistered(); }));
    clickItem();
    ASSERT_TRUE(iterateUntil([&] { return !pondVisible(); }));
    const auto displayed = [] { return std::atoi(run({"dunstctl", "count", "displayed"}).c_str()); };
    ASSERT_TRUE(iterateUntil([&] { return displayed() > 0; }, 90s)) << "dunst showed no reminder";
    press({"dunstctl", "action", "0"});
    EXPECT_TRUE(iterateUntil([&] { return pondVisible(); }));
    // Shown under the library's name.
    press({"dunstctl", "close-all"});
    EXPECT_NE(run({"dunstctl", "history"}).find("Velmora"), std::string::npos);
}

} // namespace
} // namespace velmora::test
