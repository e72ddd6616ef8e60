#include <filesystem>
#include <optional>
#include <string>

#include <glib.h>
#include <gtest/gtest.h>

#include "VelmoraMac/Platform/XdgBaseDirectory.h"

namespace velmora {
namespace {

namespace fs = std::filesystem;

// One environment variable, as the test sets it, given back afterwards.
class EnvironmentVariable {
public:
    explicit EnvironmentVariable(const char* name)
        : m_name(name)
        , m_saved(g_getenv(name) != nullptr ? std::optional<std::string>(g_getenv(name)) : std::nullopt)
    {
    }
    EnvironmentVariable(const EnvironmentVariable&) = delete;
    EnvironmentVariable& operator=(const EnvironmentVariable&) = delete;
    EnvironmentVariable(EnvironmentVariable&&) = delete;
    EnvironmentVariable& operator=(EnvironmentVariable&&) = delete;
    ~EnvironmentVariable() { set(m_saved ? m_saved->c_str() : nullptr); }

    // Unsets it for null.
    void set(const char* value) const
    {
        if (value != nullptr)
            g_setenv(m_name, value, TRUE);
        else
            g_unsetenv(m_name);
    }

private:
    const char* m_name;
    std::optional<std::string> m_saved;
};

TEST(XdgBaseDirectory, ForThisProcess_FallsBackToThePasswordDatabaseWhenHomeIsUnusable)
{
    const EnvironmentVariable configHome("XDG_CONFIG_HOME");
    const EnvironmentVariable home("HOME");
    const std::string databaseHome = XdgBaseDirectory::passwordDatabaseHome();
    const std::optional<fs::path> fromDatabase = fs::path(databaseHome).is_absolute()
        ? std::optional<fs::path>(fs::path(databaseHome) / ".config")
        : std::nullopt;

    configHome.set("/xdg");
    home.set(nullptr);
    EXPECT_EQ(XdgBaseDirectory::forThisProcess("XDG_CONFIG_HOME", ".config"), fs::path("/xdg"));
    configHome.set("relative");
    home.set("/home/me");
    EXPECT_EQ(XdgBaseDirectory::forThisProcess("XDG_CONFIG_HOME", ".config"), fs::path("/home/me/.config"));
    home.set("relative");
    EXPECT_EQ(XdgBaseDirectory::forThisProcess("XDG_CONFIG_HOME", ".config"), fromDatabase);
    configHome.set(nullptr);
    home.set(nullptr);
    EXPECT_EQ(XdgBaseDirectory::forThisProcess("XDG_CONFIG_HOME", ".config"), fromDatabase) << "started with neither";
}

} // namespace
} // namespace velmora
