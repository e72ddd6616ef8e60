#include "AutostartEntry.h"

#include <stdexcept>

#include <glib.h>

#include "VelmoraMac/Platform/GLibPointer.h"

namespace velmora {

namespace {

using KeyFile = GLibPointer<GKeyFile, g_key_file_ref, g_key_file_unref>;

constexpr const char* group = G_KEY_FILE_DESKTOP_GROUP;

// The characters that oblige an argument to be quoted.
constexpr std::string_view reserved = " \t\n\"'\\><~|&;$*?#()`";
// Inside quotes these still need a backslash.
constexpr std::string_view escapedInQuotes = "\"`$\\";

// A boolean key, or `absent` when it is missing or not a boolean.
bool booleanKey(GKeyFile* file, const char* key, bool absent)
{
    GError* error = nullptr;
    const gboolean value = g_key_file_get_boolean(file, group, key, &error);
    if (error != nullptr) {
        // Missing or malformed: the session managers fall back the same way.
        g_error_free(error);
        return absent;
    }
    return value != FALSE;
}

} // namespace

std::string AutostartEntry::execArgument(std::string_view argument)
{
    std::string percentDoubled;
    for (const char character : argument) {
        percentDoubled += character;
        if (character == '%')
            percentDoubled += '%';
    }
    if (!percentDoubled.empty() && percentDoubled.find_first_of(reserved) == std::string::npos)
        return percentDoubled;
    std::string quoted = "\"";
    for (const char character : percentDoubled) {
        if (escapedInQuotes.find(character) != std::string_view::npos)
            quoted += '\\';
        quoted += character;
    }
    quoted += '"';
    return quoted;
}

std::string AutostartEntry::render(const std::vector<std::string>& command)
{
    if (command.empty())
        throw std::invalid_argument("an autostart entry needs a program to start");
    std::string exec;
    for (const std::string& argument : command) {
        if (!exec.empty())
            exec += ' ';
        exec += execArgument(argument);
    }
    const KeyFile file = KeyFile::adopt(g_key_file_new());
    g_key_file_set_string(file.get(), group, G_KEY_FILE_DESKTOP_KEY_TYPE, G_KEY_FILE_DESKTOP_TYPE_APPLICATION);
    g_key_file_set_string(file.get(), group, G_KEY_FILE_DESKTOP_KEY_NAME, "Velmora");
    g_key_file_set_string(file.get(), group, G_KEY_FILE_DESKTOP_KEY_COMMENT, "Waits in the tray from login");
    // The installed application's icon, which the desktop's list of
    // programs started at login shows beside the name.
    g_key_file_set_string(file.get(), group, G_KEY_FILE_DESKTOP_KEY_ICON, "app.velmora.mac");
    // Sets the string escapes (backslashes and line breaks) over the Exec
    // quoting, as the desktop entry rules layer them.
    g_key_file_set_string(file.get(), group, G_KEY_FILE_DESKTOP_KEY_EXEC, exec.c_str());
    g_key_file_set_boolean(file.get(), group, G_KEY_FILE_DESKTOP_KEY_NO_DISPLAY, TRUE);
    g_key_file_set_boolean(file.get(), group, "X-GNOME-Autostart-enabled", TRUE);
    // Started a moment after the panel, so that the tray is there to take
    // the item.
    g_key_file_set_string(file.get(), group, "X-GNOME-Autostart-Delay", "3");
    g_key_file_set_string(file.get(), group, "X-KDE-autostart-after", "panel");
    gsize length = 0;
    gchar* data = g_key_file_to_data(file.get(), &length, nullptr);
    std::string text(data, length);
    g_free(data);
    return text;
}

bool AutostartEntry::launches(std::string_view text)
{
    const KeyFile file = KeyFile::adopt(g_key_file_new());
    GError* error = nullptr;
    if (g_key_file_load_from_data(file.get(), text.data(), text.size(), G_KEY_FILE_NONE, &error) == FALSE) {
        // Not a key file at all: nothing a session would start.
        g_error_free(error);
        return false;
    }
    if (g_key_file_has_group(file.get(), group) == FALSE)
        return false;
    return !booleanKey(file.get(), G_KEY_FILE_DESKTOP_KEY_HIDDEN, false)
        && booleanKey(file.get(), "X-GNOME-Autostart-enabled", true);
}

} // namespace velmora
