#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include <gio/gio.h>

#include "VelmoraMac/Platform/GLibPointer.h"

namespace velmora {

// One Velmora per user session. Without a tray to click (a desktop with no
// status-item host), starting the program again is how a user gets back to
// it: the first instance holds the well-known name "app.velmora.mac" on the
// session bus and answers Reopen; a later one finds the name held, asks
// the holder to reopen (the reopen request, "rapp"), and is told to end.
//
// Reopen is answered on the context that was thread-default when the
// instance claimed the name: the main thread's.
class SingleInstance {
public:
    static constexpr const char* busName = "app.velmora.mac";
    static constexpr const char* objectPath = "/app/velmora/mac";
    static constexpr const char* interfaceName = "app.velmora.mac.Instance";

    enum class Claim : std::uint8_t {
        // This is the first instance; it now answers Reopen.
        first,
        // Another instance runs and was asked to reopen: end this one.
        reopenedOther,
        // No bus, or it would not say: run alone, as a desktop without a
        // bus has no other way in anyway.
        unknown,
    };

    using ReopenHandler = std::function<void()>;

    // Claims the name on `connection` (a message-bus connection), blocking
    // for the bus's answers. `claimed` says how it went; the object returned
    // keeps the name and the Reopen handler while it lives (for anything
    // but `first` it holds nothing).
    static std::unique_ptr<SingleInstance> claim(GDBusConnection* connection, ReopenHandler handler, Claim& claimed);

    SingleInstance(const SingleInstance&) = delete;
    SingleInstance& operator=(const SingleInstance&) = delete;
    SingleInstance(SingleInstance&&) = delete;
    SingleInstance& operator=(SingleInstance&&) = delete;
    // Gives the name back and stops answering.
    ~SingleInstance();

private:
    using Connection = GLibPointer<GDBusConnection, g_object_ref, g_object_unref>;

    SingleInstance(GDBusConnection* connection, ReopenHandler handler);
    static void methodCalled(GDBusConnection* connection, const gchar* sender, const gchar* path,
        const gchar* interface, const gchar* method, GVariant* parameters, GDBusMethodInvocation* invocation,
        gpointer self);

    Connection m_connection;
    ReopenHandler m_handler;
    guint m_registration = 0;
    bool m_ownsName = false;
};

} // namespace velmora
