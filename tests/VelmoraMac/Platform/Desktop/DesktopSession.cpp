#include "DesktopSession.h"

#include <chrono>
#include <csignal>
#include <stdexcept>
#include <string>
#include <thread>

namespace velmora::test {

namespace {

constexpr auto serviceDeadline = std::chrono::seconds(20);

std::runtime_error errorFrom(const std::string& what, GError* error)
{
    std::string message = what + ": " + (error != nullptr ? error->message : "unknown error");
    g_clear_error(&error);
    return std::runtime_error(message);
}

// Ends `process` now. GLib's force_exit only queues the signal for its
// worker thread, which a process about to end never gets to send, and a
// child left behind keeps the test runner's output pipe open.
void killNow(GSubprocess* process)
{
    if (const char* identifier = g_subprocess_get_identifier(process))
        (void)::kill(static_cast<pid_t>(std::stol(identifier)), SIGKILL);
    (void)g_subprocess_wait(process, nullptr, nullptr);
}

} // namespace

bool iterateUntil(const std::function<bool()>& done, std::chrono::milliseconds patience, GMainContext* context)
{
    const auto deadline = std::chrono::steady_clock::now() + patience;
    while (!done()) {
        if (std::chrono::steady_clock::now() > deadline)
            return false;
        if (g_main_context_iteration(context, FALSE) == FALSE)
            g_usleep(1000);
    }
    return true;
}

DesktopSession::DesktopSession()
    : m_sessionBus(g_test_dbus_new(G_TEST_DBUS_NONE))
{
    g_test_dbus_up(m_sessionBus);
    GError* error = nullptr;
    m_session = ObjectPointer<GDBusConnection>::adopt(
        g_dbus_connection_new_for_address_sync(g_test_dbus_get_bus_address(m_sessionBus),
            static_cast<GDBusConnectionFlags>(
                G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT | G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
            nullptr, nullptr, &error));
    if (!m_session)
        throw errorFrom("session bus", error);

    // A second daemon with the session configuration stands in for the
    // system bus: the services the library watches there are mocks too.
    const char* const daemonArguments[] = {"dbus-daemon", "--session", "--nofork", "--print-address=1", nullptr};
    m_systemBusDaemon
        = ObjectPointer<GSubprocess>::adopt(g_subprocess_newv(daemonArguments, G_SUBPROCESS_FLAGS_STDOUT_PIPE, &error));
    if (!m_systemBusDaemon)
        throw errorFrom("system bus", error);
    GDataInputStream* lines = g_data_input_stream_new(g_subprocess_get_stdout_pipe(m_systemBusDaemon.get()));
    gsize length = 0;
    char* address = g_data_input_stream_read_line(lines, &length, nullptr, &error);
    g_object_unref(lines);
    if (address == nullptr)
        throw errorFrom("system bus address", error);
    g_setenv("DBUS_SYSTEM_BUS_ADDRESS", address, TRUE);
    m_system = ObjectPointer<GDBusConnection>::adopt(g_dbus_connection_new_for_address_sync(address,
        static_cast<GDBusConnectionFlags>(
            G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT | G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
        nullptr, nullptr, &error));
    g_free(address);
    if (!m_system)
        throw errorFrom("system bus connection", error);
}

DesktopSession::~DesktopSession()
{
    // The library holds the process's shared connections to both buses,
    // which end the process when their bus goes away; these buses go now.
    for (const GBusType type : {G_BUS_TYPE_SESSION, G_BUS_TYPE_SYSTEM}) {
        if (GDBusConnection* shared = g_bus_get_sync(type, nullptr, nullptr)) {
            g_dbus_connection_set_exit_on_close(shared, FALSE);
            g_object_unref(shared);
        }
    }
    stopMocks();
    m_system.reset();
    m_session.reset();
    if (m_systemBusDaemon)
        killNow(m_systemBusDaemon.get());
    // Stopped, not brought down: bringing it down waits for the shared
    // session connection to go, which the library keeps for the process's
    // life. Kept reachable, so that it is no leak.
    g_test_dbus_stop(m_sessionBus);
    static GTestDBus* stoppedBus = nullptr;
    if (stoppedBus != nullptr)
        g_object_unref(stoppedBus);
    stoppedBus = m_sessionBus;
}

GDBusConnection* DesktopSession::connection(Bus bus) const
{
    return bus == Bus::session ? m_session.get() : m_system.get();
}

void DesktopSession::startMock(Bus bus, const std::string& name, const std::vector<std::string>& arguments)
{
    std::vector<const char*> argv{"/usr/bin/python3", "-m", "dbusmock", bus == Bus::session ? "--session" : "--system"};
    for (const std::string& argument : arguments)
        argv.push_back(argument.c_str());
    argv.push_back(nullptr);
    GError* error = nullptr;
    auto mock
        = ObjectPointer<GSubprocess>::adopt(g_subprocess_newv(argv.data(), G_SUBPROCESS_FLAGS_STDOUT_SILENCE, &error));
    if (!mock)
        throw errorFrom("dbusmock", error);
    m_mocks.push_back(std::move(mock));
    const auto deadline = std::chrono::steady_clock::now() + serviceDeadline;
    while (!hasOwner(bus, name)) {
        if (std::chrono::steady_clock::now() > deadline)
            throw std::runtime_error("mock " + name + " did not come");
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
}

void DesktopSession::stopMocks()
{
    for (const auto& mock : m_mocks)
        killNow(mock.get());
    m_mocks.clear();
}

bool DesktopSession::hasOwner(Bus bus, const std::string& name) const
{
    GVariant* reply = g_dbus_connection_call_sync(connection(bus), "org.freedesktop.DBus", "/org/freedesktop/DBus",
        "org.freedesktop.DBus", "NameHasOwner", g_variant_new("(s)", name.c_str()), G_VARIANT_TYPE("(b)"),
        G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr);
    if (reply == nullptr)
        return false;
    gboolean owned = FALSE;
    g_variant_get(reply, "(b)", &owned);
    g_variant_unref(reply);
    return owned != FALSE;
}

void DesktopSession::startTrayWatcher()
{
    const std::string name = "org.kde.StatusNotifierWatcher";
    startMock(Bus::session, name, {name, "/StatusNotifierWatcher", name});
    call(Bus::session, name, "/StatusNotifierWatcher", "org.freedesktop.DBus.Mock", "AddMethod",
        g_variant_new("(sssss)", "", "RegisterStatusNotifierItem", "s", "", ""));
    call(Bus::session, name, "/StatusNotifierWatcher", "org.freedesktop.DBus.Mock", "AddProperty",
        g_variant_new("(ssv)", "", "IsStatusNotifierHostRegistered", g_variant_new_boolean(TRUE)));
}

DesktopSession::VariantPointer DesktopSession::call(Bus bus, const std::string& name, const std::string& path,
    const std::string& interface, const std::string& method, GVariant* parameters) const
{
    GError* error = nullptr;
    GVariant* reply = g_dbus_connection_call_sync(connection(bus), name.c_str(), path.c_str(), interface.c_str(),
        method.c_str(), parameters, nullptr, G_DBUS_CALL_FLAGS_NONE, -1, nullptr, &error);
    if (reply == nullptr)
        throw errorFrom(method, error);
    return VariantPointer::adopt(reply);
}

std::vector<DesktopSession::MockCall> DesktopSession::mockCalls(
    Bus bus, const std::string& name, const std::string& path, const std::string& method) const
{
    const VariantPointer reply
        = call(bus, name, path, "org.freedesktop.DBus.Mock", "GetMethodCalls", g_variant_new("(s)", method.c_str()));
    GVariantIter* list = nullptr;
    g_variant_get(reply.get(), "(a(tav))", &list);
    std::vector<MockCall> calls;
    guint64 time = 0;
    GVariantIter* arguments = nullptr;
    while (g_variant_iter_next(list, "(tav)", &time, &arguments) != FALSE) {
        MockCall& recorded = calls.emplace_back(MockCall{.time = time, .arguments = {}});
        GVariant* argument = nullptr;
        while (g_variant_iter_next(arguments, "v", &argument) != FALSE)
            recorded.arguments.push_back(VariantPointer::adopt(argument));
        g_variant_iter_free(arguments);
    }
    g_variant_iter_free(list);
    return calls;
}

void DesktopSession::emit(Bus bus, const std::string& name, const std::string& path, const char* interface,
    const char* signal, const char* signature, GVariant* arguments) const
{
    call(bus, name, path, "org.freedesktop.DBus.Mock", "EmitSignal",
        g_variant_new("(sss@av)", interface, signal, signature, arguments));
}

} // namespace velmora::test
