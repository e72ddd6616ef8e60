#include "DBusMockServer.h"

#include <csignal>
#include <stdexcept>
#include <thread>
#include <utility>

#include <gtest/gtest.h>
#include <sys/wait.h>

namespace velmora {

namespace {

constexpr const char* mockInterface = "org.freedesktop.DBus.Mock";

bool nameHasOwner(GDBusConnection* connection, const std::string& name)
{
    GVariant* reply = g_dbus_connection_call_sync(connection, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "NameHasOwner", g_variant_new("(s)", name.c_str()), G_VARIANT_TYPE("(b)"), G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr);
    if (reply == nullptr)
        return false;
    gboolean owned = FALSE;
    g_variant_get(reply, "(b)", &owned);
    g_variant_unref(reply);
    return owned != FALSE;
}

} // namespace

DBusMockServer::DBusMockServer(const std::string& address, BusKind kind, std::string name, std::string path, const std::vector<std::string>& arguments)
    : m_name(std::move(name))
    , m_path(std::move(path))
{
    const auto flags = static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT | G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
    m_connection = g_dbus_connection_new_for_address_sync(address.c_str(), flags, nullptr, nullptr, nullptr);
    if (m_connection == nullptr)
        throw std::runtime_error("cannot connect to the test bus");

    std::vector<std::string> command{"/usr/bin/python3", "-m", "dbusmock"};
    command.insert(command.end(), arguments.begin(), arguments.end());
    std::vector<gchar*> argv;
    argv.reserve(command.size() + 1);
    for (std::string& argument : command)
        argv.push_back(argument.data());
    argv.push_back(nullptr);
    gchar** environment = g_get_environ();
    environment = g_environ_setenv(environment, kind == BusKind::session ? "DBUS_SESSION_BUS_ADDRESS" : "DBUS_SYSTEM_BUS_ADDRESS", address.c_str(), TRUE);
    const auto spawnFlags = static_cast<GSpawnFlags>(G_SPAWN_DO_NOT_REAP_CHILD | G_SPAWN_STDOUT_TO_DEV_NULL);
    const gboolean started = g_spawn_async(nullptr, argv.data(), environment, spawnFlags, nullptr, nullptr, &m_process, nullptr);
    g_strfreev(environment);
    if (started == FALSE)
        m_process = 0;
    if (m_process == 0 || !waitUntil([this] { return nameHasOwner(m_connection, m_name); })) {
        stop();
        throw std::runtime_error("python3-dbusmock did not come up as " + m_name);
    }
}

DBusMockServer::~DBusMockServer()
{
    stop();
}

void DBusMockServer::stop()
{
    if (m_process > 0) {
        ::kill(m_process, SIGTERM);
        int status = 0;
        ::waitpid(m_process, &status, 0);
        g_spawn_close_pid(m_process);
        m_process = 0;
    }
    if (m_connection != nullptr) {
        g_dbus_connection_close_sync(m_connection, nullptr, nullptr);
        g_object_unref(m_connection);
        m_connection = nullptr;
    }
}

GVariant* DBusMockServer::call(const char* interfaceName, const char* method, GVariant* parameters) const
{
    GError* error = nullptr;
    GVariant* reply = g_dbus_connection_call_sync(m_connection, m_name.c_str(), m_path.c_str(), interfaceName, method, parameters, nullptr, G_DBUS_CALL_FLAGS_NONE, -1, nullptr, &error);
    if (reply == nullptr) {
        ADD_FAILURE() << "calling the mock's " << method << ": " << error->message;
        g_error_free(error);
    }
    return reply;
}

void DBusMockServer::callAndForget(const char* interfaceName, const char* method, GVariant* parameters) const
{
    if (GVariant* reply = call(interfaceName, method, parameters))
        g_variant_unref(reply);
}

void DBusMockServer::emit(const char* interfaceName, const char* signal, const char* signature, GVariant* arguments) const
{
    callAndForget(mockInterface, "EmitSignal", g_variant_new("(sss@av)", interfaceName, signal, signature, arguments));
}

std::vector<std::vector<GVariant*>> DBusMockServer::methodCalls(const char* method) const
{
    std::vector<std::vector<GVariant*>> calls;
    GVariant* reply = call(mockInterface, "GetMethodCalls", g_variant_new("(s)", method));
    if (reply == nullptr)
        return calls;
    GVariant* list = g_variant_get_child_value(reply, 0);
    for (gsize index = 0; index < g_variant_n_children(list); ++index) {
        GVariant* entry = g_variant_get_child_value(list, index);
        GVariant* arguments = g_variant_get_child_value(entry, 1);
        std::vector<GVariant*> call;
        for (gsize argument = 0; argument < g_variant_n_children(arguments); ++argument) {
            GVariant* boxed = g_variant_get_child_value(arguments, argument);
            call.push_back(g_variant_get_variant(boxed));
            g_variant_unref(boxed);
        }
        calls.push_back(std::move(call));
        g_variant_unref(arguments);
        g_variant_unref(entry);
    }
    g_variant_unref(list);
    g_variant_unref(reply);
    return calls;
}

std::vector<std::uint64_t> DBusMockServer::methodCallTimes(const char* method) const
{
    std::vector<std::uint64_t> times;
    GVariant* reply = call(mockInterface, "GetMethodCalls", g_variant_new("(s)", method));
    if (reply == nullptr)
        return times;
    GVariantIter* list = nullptr;
    g_variant_get(reply, "(a(tav))", &list);
    guint64 time = 0;
    while (g_variant_iter_next(list, "(tav)", &time, nullptr) != FALSE)
        times.push_back(time);
    g_variant_iter_free(list);
    g_variant_unref(reply);
    return times;
}

void freeCalls(std::vector<std::vector<GVariant*>>& calls)
{
    for (auto& call : calls) {
        for (GVariant* argument : call)
            g_variant_unref(argument);
    }
    calls.clear();
}

bool waitUntil(const std::function<bool()>& done, GMainContext* context, std::chrono::seconds patience)
{
    const auto deadline = std::chrono::steady_clock::now() + patience;
    for (;;) {
        if (context != nullptr) {
            while (g_main_context_iteration(context, FALSE) != FALSE) {
            }
        }
        if (done())
            return true;
        if (std::chrono::steady_clock::now() >= deadline)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
}

} // namespace velmora
