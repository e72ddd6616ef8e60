// The user's program end to end, on the virtual desktop: the pond started
// as the menu starts it, and again as the session starts it at login,
// through the autostart entry the library wrote. The test process hosts no
// library; it plays the tray host (a python3-dbusmock watcher, whose
// records tell which items registered, and the menu calls a host makes),
// the session manager (`gio launch` of the entry) and, through a GTK
// module loaded into the program (PanelAgent.c), the user's click on the
// launch-at-login switch. Windows are looked up on the X display.

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include <gio/gio.h>
#include <glib.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <sys/types.h>

#include "tests/VelmoraCore/TemporaryFolder.h"
#include "tests/VelmoraMac/Platform/Desktop/DesktopSession.h"

namespace velmora::test {
namespace {

namespace fs = std::filesystem;
using Bus = DesktopSession::Bus;
using json = nlohmann::json;
using namespace std::chrono_literals;

constexpr const char* watcher = "org.kde.StatusNotifierWatcher";

std::string fileText(const fs::path& path)
{
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

// Whether process `pid` runs (a zombie no longer does).
bool running(pid_t pid)
{
    const std::string stat = fileText(fs::path("/proc") / std::to_string(pid) / "stat");
    const std::size_t end = stat.rfind(')');
    return end != std::string::npos && end + 2 < stat.size() && stat[end + 2] != 'Z';
}

// The standard output of `command`, run to its end; none when it fails.
std::optional<std::string> outputOf(const std::vector<std::string>& command)
{
    std::vector<const char*> argv;
    argv.reserve(command.size() + 1);
    for (const std::string& word : command)
        argv.push_back(word.c_str());
    argv.push_back(nullptr);
    gchar* output = nullptr;
    gint status = 0;
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-const-cast): GLib only reads it
    gchar** words = const_cast<gchar**>(argv.data());
    const auto flags = static_cast<GSpawnFlags>(G_SPAWN_SEARCH_PATH | G_SPAWN_STDERR_TO_DEV_NULL);
    if (g_spawn_sync(nullptr, words, nullptr, flags, nullptr, nullptr, &output, nullptr, &status, nullptr) == FALSE)
        return std::nullopt;
    std::string text = output != nullptr ? output : "";
    g_free(output);
    if (g_spawn_check_wait_status(status, nullptr) == FALSE)
        return std::nullopt;
    return text;
}

// The windows of process `pid` that are on the screen now, by X id.
std::vector<std::string> shownWindowsOf(pid_t pid)
{
    const std::optional<std::string> found
        = outputOf({"xdotool", "search", "--all", "--onlyvisible", "--pid", std::to_string(pid), ".*"});
    std::vector<std::string> windows;
    std::istringstream lines(found.value_or(""));
    for (std::string line; std::getline(lines, line);) {
        if (!line.empty())
            windows.push_back(line);
    }
    return windows;
}

std::size_t shownWindows(pid_t pid)
{
    return shownWindowsOf(pid).size();
}

// A property of an X window as xprop prints it, "NAME(TYPE) = value".
std::string windowProperty(const std::string& window, const std::string& property)
{
    return outputOf({"xprop", "-id", window, property}).value_or("");
}

// A key of a desktop entry's main group, as its text stands.
std::string desktopKey(const fs::path& entry, const char* key)
{
    GKeyFile* file = g_key_file_new();
    gchar* value = nullptr;
    if (g_key_file_load_from_file(file, entry.c_str(), G_KEY_FILE_NONE, nullptr) != FALSE)
        value = g_key_file_get_string(file, G_KEY_FILE_DESKTOP_GROUP, key, nullptr);
    g_key_file_unref(file);
    std::string text = value != nullptr ? value : "";
    g_free(value);
    return text;
}

class ProgramEndToEnd : public ::testing::Test {
protected:
    void SetUp() override
    {
        const char* display = std::getenv("DISPLAY"); // NOLINT(concurrency-mt-unsafe): before any thread
        if (display == nullptr || *display == '\0')
            GTEST_SKIP() << "no display";
        // GTestDBus may clear DISPLAY as it points the session bus at itself.
        const std::string savedDisplay = display;
        m_session.emplace();
        g_setenv("DISPLAY", savedDisplay.c_str(), TRUE);
        g_setenv("XDG_DATA_HOME", dataHome().c_str(), TRUE);
        g_setenv("XDG_CONFIG_HOME", configHome().c_str(), TRUE);
        // The menu is looked up by its English titles.
        g_setenv("LANG", "C.UTF-8", TRUE);
        g_setenv("LANGUAGE", "en", TRUE);
        g_unsetenv("LC_ALL");
        g_unsetenv("LC_MESSAGES");
        g_unsetenv("VELMORA_LOGIN_LAUNCH");
        m_session->startTrayWatcher();
        m_session->startMock(Bus::session, "org.freedesktop.Notifications", {"--template", "notification_daemon"});
        m_session->startMock(Bus::system, "org.freedesktop.login1", {"--template", "logind"});
        m_session->startMock(Bus::system, "org.freedesktop.timedate1", {"--template", "timedated"});
        seedOnboardedUser();
    }

    void TearDown() override
    {
        // Whatever a failed test left running goes with it.
        for (const pid_t pid : m_programs) {
            if (running(pid))
                (void)::kill(pid, SIGKILL);
        }
        for (GSubprocess* process : m_started) {
            (void)g_subprocess_wait(process, nullptr, nullptr);
            g_object_unref(process);
        }
    }

    [[nodiscard]] fs::path dataHome() const { return m_home / "data"; }
    [[nodiscard]] fs::path configHome() const { return m_home / "config"; }
    [[nodiscard]] fs::path autostartEntry() const { return configHome() / "autostart" / "app.velmora.mac.desktop"; }

    void seedOnboardedUser() const
    {
        fs::create_directories(dataHome() / "app.velmora.mac");
        const json state
            = {{"version", 1}, {"onboarded", true}, {"selected", {"phone", "smoking"}}, {"lotuses", json::object()},
                {"practiceDays", json::array()}, {"language", "system"}, {"hintSeen", true}, {"reminderEnabled", false},
                {"reminderHour", 20}, {"reminderMinute", 0}, {"waterSoundEnabled", false}, {"bellSoundEnabled", false}};
        std::ofstream(dataHome() / "app.velmora.mac" / "practice.json") << state.dump();
    }

    // Starts `command` as the menu would, with `agent` loaded when set.
    void startFromTheMenu(const std::vector<std::string>& command, bool agent)
    {
        GSubprocessLauncher* launcher = g_subprocess_launcher_new(G_SUBPROCESS_FLAGS_NONE);
        if (agent)
            useAgent(launcher);
        std::vector<const char*> argv;
        argv.reserve(command.size() + 1);
        for (const std::string& word : command)
            argv.push_back(word.c_str());
        argv.push_back(nullptr);
        GError* error = nullptr;
        GSubprocess* process = g_subprocess_launcher_spawnv(launcher, argv.data(), &error);
        g_object_unref(launcher);
        ASSERT_NE(process, nullptr) << error->message;
        m_started.push_back(process);
        m_programs.push_back(static_cast<pid_t>(std::stol(g_subprocess_get_identifier(process))));
    }

    // Starts the autostart entry as a session manager does at login: its
    // Exec line, run by GLib's desktop-entry launcher.
    void startAtLogin(bool agent)
    {
        GSubprocessLauncher* launcher = g_subprocess_launcher_new(G_SUBPROCESS_FLAGS_NONE);
        if (agent)
            useAgent(launcher);
        GError* error = nullptr;
        GSubprocess* gio
            = g_subprocess_launcher_spawn(launcher, &error, "gio", "launch", autostartEntry().c_str(), nullptr);
        g_object_unref(launcher);
        ASSERT_NE(gio, nullptr) << error->message;
        ASSERT_TRUE(g_subprocess_wait_check(gio, nullptr, &error)) << error->message;
        g_object_unref(gio);
    }

    static void useAgent(GSubprocessLauncher* launcher)
    {
        g_subprocess_launcher_setenv(launcher, "GTK_MODULES", VELMORA_PANEL_AGENT, TRUE);
        g_subprocess_launcher_setenv(launcher, "VELMORA_TEST_AGENT", "click-login-switch", TRUE);
    }

    // The bus names of the items registered with the tray, in order.
    [[nodiscard]] std::vector<std::string> registeredItems() const
    {
        std::vector<std::string> items;
        for (const DesktopSession::MockCall& call :
            m_session->mockCalls(Bus::session, watcher, "/StatusNotifierWatcher", "RegisterStatusNotifierItem"))
            items.emplace_back(g_variant_get_string(call.arguments.at(0).get(), nullptr));
        return items;
    }

    // Waits for the `count`th item to register and gives its bus name.
    std::string awaitItem(std::size_t count)
    {
        std::vector<std::string> items;
        EXPECT_TRUE(iterateUntil([&] { return (items = registeredItems()).size() >= count; }, 30s))
            << "no tray item came";
        return items.size() >= count ? items[count - 1] : std::string();
    }

    // The process of an item, from its name org.kde.StatusNotifierItem-<pid>-<n>.
    static pid_t processOf(const std::string& item)
    {
        const std::size_t start = item.find('-');
        return start == std::string::npos ? 0 : static_cast<pid_t>(std::stol(item.substr(start + 1)));
    }

    // The menu entries of `item` as a host reads them: id by label.
    [[nodiscard]] std::optional<int> menuEntry(const std::string& item, const std::string& label) const
    {
        GVariant* reply = g_dbus_connection_call_sync(m_session->connection(Bus::session), item.c_str(), "/MenuBar",
            "com.canonical.dbusmenu", "GetLayout", g_variant_new("(ii@as)", 0, -1, g_variant_new_strv(nullptr, 0)),
            G_VARIANT_TYPE("(u(ia{sv}av))"), G_DBUS_CALL_FLAGS_NONE, 5000, nullptr, nullptr);
        if (reply == nullptr)
            return std::nullopt;
        std::optional<int> found;
        GVariant* root = g_variant_get_child_value(reply, 1);
        GVariant* children = g_variant_get_child_value(root, 2);
        for (gsize index = 0; index < g_variant_n_children(children) && !found; ++index) {
            GVariant* boxed = g_variant_get_child_value(children, index);
            GVariant* child = g_variant_get_variant(boxed);
            gint32 id = 0;
            GVariant* properties = nullptr;
            g_variant_get_child(child, 0, "i", &id);
            properties = g_variant_get_child_value(child, 1);
            const gchar* text = nullptr;
            if (g_variant_lookup(properties, "label", "&s", &text) != FALSE && label == text)
                found = id;
            g_variant_unref(properties);
            g_variant_unref(child);
            g_variant_unref(boxed);
        }
        g_variant_unref(children);
        g_variant_unref(root);
        g_variant_unref(reply);
        return found;
    }

    // Chooses the entry labelled `label` in the item's menu, as a host
    // sends the user's choice: without waiting for an answer, which a
    // program that quits may not send.
    void chooseFromMenu(const std::string& item, const std::string& label) const
    {
        std::optional<int> entry;
        ASSERT_TRUE(iterateUntil([&] { return (entry = menuEntry(item, label)).has_value(); }, 20s))
            << "no menu entry " << label;
        g_dbus_connection_call(m_session->connection(Bus::session), item.c_str(), "/MenuBar", "com.canonical.dbusmenu",
            "Event", g_variant_new("(isvu)", *entry, "clicked", g_variant_new_int32(0), static_cast<guint32>(0)),
            nullptr, G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr, nullptr);
    }

    // A left click on the item, as a tray host sends it.
    void clickItem(const std::string& item) const
    {
        m_session->call(Bus::session, item, "/StatusNotifierItem", "org.kde.StatusNotifierItem", "Activate",
            g_variant_new("(ii)", 0, 0));
    }

    // Opens the settings panel from the item's menu, where the agent clicks
    // the launch-at-login switch, until the entry is `there` or not. The
    // start's own open request, which may come after the menu is up, puts
    // the pond in front of a panel opened too early; the user would open it
    // again, and so does this.
    void switchInThePanel(const std::string& item, bool there)
    {
        const auto openedAndSwitched = [&] {
            chooseFromMenu(item, "Settings");
            return iterateUntil([&] { return fs::exists(autostartEntry()) == there; }, 5s);
        };
        ASSERT_TRUE(iterateUntil(openedAndSwitched, 40s))
            << "launch at login was not switched " << (there ? "on" : "off");
    }

    // Runs the program as the menu starts it, switches launch at login on
    // in its settings panel, and quits it from the tray.
    void switchLaunchAtLoginOn()
    {
        ASSERT_NO_FATAL_FAILURE(startFromTheMenu({VELMORA_PROGRAM}, true));
        const std::string item = awaitItem(1);
        ASSERT_FALSE(item.empty());
        // The pond comes first: the user has onboarded.
        ASSERT_TRUE(iterateUntil([&] { return shownWindows(processOf(item)) > 0; }, 20s)) << "the pond did not show";
        ASSERT_NO_FATAL_FAILURE(switchInThePanel(item, true));
        ASSERT_NO_FATAL_FAILURE(chooseFromMenu(item, "Quit Velmora"));
        ASSERT_TRUE(iterateUntil([&] { return !running(processOf(item)); }, 20s)) << "the program did not quit";
    }

    std::optional<DesktopSession> m_session;
    TemporaryFolder m_home;
    std::vector<GSubprocess*> m_started;
    std::vector<pid_t> m_programs;
};

// Started from the menu, the program is the menu's entry to the desktop: its
// window has the entry's StartupWMClass and the entry's icon, which the
// installed icon theme holds, and the tray item names the same icon.
TEST_F(ProgramEndToEnd, FromTheMenu_TheWindowAndTheTrayItemCarryTheEntrysClassAndIcon)
{
    const fs::path installed = fs::path(VELMORA_PROGRAM).parent_path().parent_path() / "share";
    const fs::path entry = installed / "applications" / "app.velmora.mac.desktop";
    const std::string icon = desktopKey(entry, G_KEY_FILE_DESKTOP_KEY_ICON);
    ASSERT_EQ(icon, "app.velmora.mac");
    EXPECT_TRUE(fs::exists(installed / "icons" / "hicolor" / "scalable" / "apps" / (icon + ".svg")));
    // The installed data where a session looks for it.
    g_setenv("XDG_DATA_DIRS", (installed.string() + ":/usr/share").c_str(), TRUE);

    ASSERT_NO_FATAL_FAILURE(startFromTheMenu({VELMORA_PROGRAM}, false));
    const std::string item = awaitItem(1);
    ASSERT_FALSE(item.empty());
    const pid_t program = processOf(item);
    std::vector<std::string> windows;
    ASSERT_TRUE(iterateUntil([&] { return !(windows = shownWindowsOf(program)).empty(); }, 20s))
        << "the pond did not show";
    const std::string wmClass = desktopKey(entry, "StartupWMClass");
    EXPECT_EQ(
        windowProperty(windows.front(), "WM_CLASS"), "WM_CLASS(STRING) = \"" + wmClass + "\", \"" + wmClass + "\"\n");
    EXPECT_TRUE(windowProperty(windows.front(), "_NET_WM_ICON").starts_with("_NET_WM_ICON(CARDINAL) = "))
        << "the window has no icon";

    const DesktopSession::VariantPointer name = m_session->call(Bus::session, item, "/StatusNotifierItem",
        "org.freedesktop.DBus.Properties", "Get", g_variant_new("(ss)", "org.kde.StatusNotifierItem", "IconName"));
    GVariant* value = nullptr;
    g_variant_get(name.get(), "(v)", &value);
    EXPECT_EQ(std::string(g_variant_get_string(value, nullptr)), icon);
    g_variant_unref(value);

    ASSERT_NO_FATAL_FAILURE(chooseFromMenu(item, "Quit Velmora"));
    EXPECT_TRUE(iterateUntil([&] { return !running(program); }, 20s));
}

// The bug of issue 18: the entry ran the program with an argument of the
// library's, which the pond refused. Now it starts the program as it is,
// and the program waits in the tray until it is clicked.
TEST_F(ProgramEndToEnd, LaunchAtLogin_TheEntryStartsTheProgramHiddenInTheTray)
{
    ASSERT_NO_FATAL_FAILURE(switchLaunchAtLoginOn());
    EXPECT_EQ(desktopKey(autostartEntry(), G_KEY_FILE_DESKTOP_KEY_EXEC),
        std::string("env VELMORA_LOGIN_LAUNCH=1 ") + VELMORA_PROGRAM)
        << fileText(autostartEntry());

    ASSERT_NO_FATAL_FAILURE(startAtLogin(false));
    const std::string item = awaitItem(2);
    ASSERT_FALSE(item.empty());
    const pid_t program = processOf(item);
    m_programs.push_back(program);
    EXPECT_EQ(fs::read_symlink(fs::path("/proc") / std::to_string(program) / "exe"), fs::path(VELMORA_PROGRAM));
    // Started and left alone: nothing comes on the screen.
    (void)iterateUntil([] { return false; }, 2s);
    EXPECT_TRUE(running(program));
    EXPECT_EQ(shownWindows(program), 0U) << "a launch at login shows nothing";

    // The tray item works: a click brings the pond.
    clickItem(item);
    EXPECT_TRUE(iterateUntil([&] { return shownWindows(program) > 0; }, 20s)) << "the click on the item showed nothing";
    ASSERT_NO_FATAL_FAILURE(chooseFromMenu(item, "Quit Velmora"));
    EXPECT_TRUE(iterateUntil([&] { return !running(program); }, 20s));
}

// Launched at login, the user switches it off in the settings panel: the
// entry is gone, and the next login starts nothing.
TEST_F(ProgramEndToEnd, LaunchAtLogin_SwitchedOffInThePanel_TheEntryIsGone)
{
    ASSERT_NO_FATAL_FAILURE(switchLaunchAtLoginOn());
    ASSERT_NO_FATAL_FAILURE(startAtLogin(true));
    const std::string item = awaitItem(2);
    ASSERT_FALSE(item.empty());
    const pid_t program = processOf(item);
    m_programs.push_back(program);

    // Waiting in the tray until the user opens the settings.
    (void)iterateUntil([] { return false; }, 2s);
    EXPECT_EQ(shownWindows(program), 0U);
    ASSERT_NO_FATAL_FAILURE(switchInThePanel(item, false));
    EXPECT_TRUE(fs::is_directory(autostartEntry().parent_path())) << "only the entry goes";
    ASSERT_NO_FATAL_FAILURE(chooseFromMenu(item, "Quit Velmora"));
    EXPECT_TRUE(iterateUntil([&] { return !running(program); }, 20s));
}

} // namespace
} // namespace velmora::test
