#include <string>
#include <vector>

#include <glib.h>
#include <gtest/gtest.h>

#include "VelmoraMac/Platform/Desktop/AutostartEntry.h"

namespace velmora {
namespace {

// The command a session manager would run for an entry: the Exec key read
// as a string, field-code percents undone, then split by the quoting rules
// (GLib's shell rules agree with the Exec rules on double quotes).
std::vector<std::string> commandOf(const std::string& text)
{
    GKeyFile* file = g_key_file_new();
    EXPECT_TRUE(g_key_file_load_from_data(file, text.data(), text.size(), G_KEY_FILE_NONE, nullptr));
    gchar* exec = g_key_file_get_string(file, G_KEY_FILE_DESKTOP_GROUP, G_KEY_FILE_DESKTOP_KEY_EXEC, nullptr);
    g_key_file_unref(file);
    std::string line = exec == nullptr ? std::string() : exec;
    g_free(exec);
    std::string unescaped;
    for (std::size_t index = 0; index < line.size(); ++index) {
        unescaped += line[index];
        if (line[index] == '%' && index + 1 < line.size() && line[index + 1] == '%')
            ++index;
    }
    gchar** argv = nullptr;
    std::vector<std::string> command;
    if (g_shell_parse_argv(unescaped.c_str(), nullptr, &argv, nullptr) != FALSE) {
        for (gchar** argument = argv; *argument != nullptr; ++argument)
            command.emplace_back(*argument);
        g_strfreev(argv);
    }
    return command;
}

TEST(AutostartEntry, Render_RunsEveryArgumentLiterally)
{
    const std::vector<std::vector<std::string>> commands = {
        {"env", "VELMORA_LOGIN_LAUNCH=1", "/usr/bin/velmora"},
        {"/home/me/My Programs/pond", "--title=Lotus pond"},
        {"/opt/pond", "say \"hi\"", "$HOME", "`date`", "back\\slash", "100%", "%u"},
        {"/opt/pond", "it's", "a;b", "x|y", "(z)", "#tag", "~"},
        {"/opt/пруд/pond", "ü", ""},
    };
    for (const auto& command : commands) {
        SCOPED_TRACE(command.back());
        const std::string text = AutostartEntry::render(command);
        EXPECT_EQ(commandOf(text), command);
        EXPECT_TRUE(AutostartEntry::launches(text));
    }
    EXPECT_THROW((void)AutostartEntry::render({}), std::invalid_argument);
}

TEST(AutostartEntry, Launches_UnlessHiddenSwitchedOffOrNoEntry)
{
    struct EntryCase {
        const char* name = nullptr;
        const char* text = nullptr;
        bool launches = false;
    };
    const EntryCase cases[] = {
        {"plain", "[Desktop Entry]\nType=Application\nExec=pond\n", true},
        {"switched off", "[Desktop Entry]\nExec=pond\nX-GNOME-Autostart-enabled=false\n", false},
        {"hidden", "[Desktop Entry]\nExec=pond\nHidden=true\n", false},
        {"not hidden", "[Desktop Entry]\nExec=pond\nHidden=false\n", true},
        {"malformed switch counts as absent", "[Desktop Entry]\nExec=pond\nHidden=maybe\n", true},
        {"another group only", "[Something]\nExec=pond\n", false},
        {"empty", "", false},
        {"not a key file", "\xff\xfe garbage", false},
    };
    for (const EntryCase& entry : cases) {
        SCOPED_TRACE(entry.name);
        EXPECT_EQ(AutostartEntry::launches(entry.text), entry.launches);
    }
}

} // namespace
} // namespace velmora
