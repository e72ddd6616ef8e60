#pragma once

#include <gio/gio.h>

#include "VelmoraMac/Platform/GLibPointer.h"

namespace velmora {

// One subscription to a D-Bus signal, ended when the holder goes. GDBus
// calls `callback` on the context that was thread-default when the
// subscription was made, and looks the subscription up before every call,
// so once the holder has gone on that context's thread the callback never
// runs again and its `data` may die next. A null connection subscribes to
// nothing: a bus that is not there sends no signals either.
// Only on the thread of that context.
class DBusSignalSubscription {
public:
    // What a signal must match; a null field matches anything. The sender
    // may be a well-known name: the bus then delivers only what that name's
    // owner sends, so another client cannot pass for it.
    struct Match {
        const char* sender = nullptr;
        const char* interfaceName = nullptr;
        const char* member = nullptr;
        const char* path = nullptr;
        const char* arg0 = nullptr;
    };

    DBusSignalSubscription(GDBusConnection* connection, const Match& match, GDBusSignalCallback callback, gpointer data)
        : m_connection(Connection::share(connection))
    {
        if (connection != nullptr)
            m_id = g_dbus_connection_signal_subscribe(connection, match.sender, match.interfaceName, match.member,
                match.path, match.arg0, G_DBUS_SIGNAL_FLAGS_NONE, callback, data, nullptr);
    }

    DBusSignalSubscription(const DBusSignalSubscription&) = delete;
    DBusSignalSubscription& operator=(const DBusSignalSubscription&) = delete;
    DBusSignalSubscription(DBusSignalSubscription&&) = delete;
    DBusSignalSubscription& operator=(DBusSignalSubscription&&) = delete;

    ~DBusSignalSubscription()
    {
        if (m_id != 0)
            g_dbus_connection_signal_unsubscribe(m_connection.get(), m_id);
    }

private:
    using Connection = GLibPointer<GDBusConnection, g_object_ref, g_object_unref>;

    Connection m_connection;
    guint m_id = 0;
};

} // namespace velmora
