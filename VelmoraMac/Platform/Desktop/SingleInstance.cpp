#include "SingleInstance.h"

#include <utility>

namespace velmora {

namespace {

constexpr const char* introspection = "<node>"
                                      "  <interface name='app.velmora.mac.Instance'>"
                                      "    <method name='Reopen'/>"
                                      "  </interface>"
                                      "</node>";

// RequestName's flag and answers, from the D-Bus specification.
constexpr guint doNotQueue = 4;
constexpr guint primaryOwner = 1;
constexpr guint alreadyOwner = 4;

// Long enough for a busy first instance, short enough that a hung one does
// not keep the second start waiting for long.
constexpr gint callTimeoutMilliseconds = 5000;

// The answer of a call that returns one unsigned number; none on failure.
bool callForNumber(GDBusConnection* connection, const char* method, GVariant* parameters, guint& number)
{
    GError* error = nullptr;
    GVariant* reply = g_dbus_connection_call_sync(connection, "org.freedesktop.DBus", "/org/freedesktop/DBus",
        "org.freedesktop.DBus", method, parameters, G_VARIANT_TYPE("(u)"), G_DBUS_CALL_FLAGS_NONE,
        callTimeoutMilliseconds, nullptr, &error);
    if (reply == nullptr) {
        g_error_free(error);
        return false;
    }
    g_variant_get(reply, "(u)", &number);
    g_variant_unref(reply);
    return true;
}

} // namespace

SingleInstance::SingleInstance(GDBusConnection* connection, ReopenHandler handler)
    : m_connection(Connection::share(connection))
    , m_handler(std::move(handler))
{
}

std::unique_ptr<SingleInstance> SingleInstance::claim(
    GDBusConnection* connection, ReopenHandler handler, Claim& claimed)
{
    claimed = Claim::unknown;
    if (connection == nullptr)
        return nullptr;
    std::unique_ptr<SingleInstance> instance(new SingleInstance(connection, std::move(handler)));

    // Answering before holding the name: a second start that sees the name
    // must find Reopen there.
    GDBusNodeInfo* node = g_dbus_node_info_new_for_xml(introspection, nullptr);
    static const GDBusInterfaceVTable table = {&SingleInstance::methodCalled, nullptr, nullptr, {}};
    instance->m_registration = g_dbus_connection_register_object(
        connection, objectPath, node->interfaces[0], &table, instance.get(), nullptr, nullptr);
    g_dbus_node_info_unref(node);
    if (instance->m_registration == 0)
        return nullptr;

    guint answer = 0;
    if (!callForNumber(connection, "RequestName", g_variant_new("(su)", busName, doNotQueue), answer))
        return nullptr;
    if (answer == primaryOwner || answer == alreadyOwner) {
        instance->m_ownsName = true;
        claimed = Claim::first;
        return instance;
    }
    GError* error = nullptr;
    GVariant* reply = g_dbus_connection_call_sync(connection, busName, objectPath, interfaceName, "Reopen", nullptr,
        nullptr, G_DBUS_CALL_FLAGS_NONE, callTimeoutMilliseconds, nullptr, &error);
    if (reply == nullptr) {
        // The other one holds the name but does not answer: this one runs,
        // rather than leave the user with nothing.
        g_error_free(error);
        return nullptr;
    }
    g_variant_unref(reply);
    claimed = Claim::reopenedOther;
    return nullptr;
}

SingleInstance::~SingleInstance()
{
    if (m_registration != 0)
        g_dbus_connection_unregister_object(m_connection.get(), m_registration);
    if (m_ownsName) {
        guint answer = 0;
        // The bus gives the name back when the connection closes anyway.
        (void)callForNumber(m_connection.get(), "ReleaseName", g_variant_new("(s)", busName), answer);
    }
}

void SingleInstance::methodCalled(GDBusConnection* /*connection*/, const gchar* /*sender*/, const gchar* /*path*/,
    const gchar* /*interface*/, const gchar* /*method*/, GVariant* /*parameters*/, GDBusMethodInvocation* invocation,
    gpointer self)
{
    // Reopen is the interface's only method; GDBus refuses any other.
    g_dbus_method_invocation_return_value(invocation, nullptr);
    const ReopenHandler handler = static_cast<SingleInstance*>(self)->m_handler;
    if (handler)
        handler();
}

} // namespace velmora
