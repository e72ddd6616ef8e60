#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include <gio/gio.h>

#include "VelmoraMac/Platform/GLibPointer.h"

namespace velmora::test {

// Iterates `context` (GLib's default one, GTK's, unless told) without
// blocking until `done` holds, resting a millisecond whenever nothing is
// pending; false once `patience` has passed first. A predicate that never
// holds makes it run the loop for `patience`.
bool iterateUntil(const std::function<bool()>& done, std::chrono::milliseconds patience = std::chrono::seconds(20),
    GMainContext* context = nullptr);

// A desktop session of the test process's own: a private session bus
// (GTestDBus, which also points DBUS_SESSION_BUS_ADDRESS at it), a private
// system bus (a dbus-daemon child, exported as DBUS_SYSTEM_BUS_ADDRESS),
// and python3-dbusmock servers on them, each in a process of its own since
// a synchronous call to a mock served on the calling thread would deadlock.
// Everything goes with the session. Build it before anything connects to a
// bus: GLib keeps the shared connection of each kind (g_bus_get) while
// anyone holds it, so a test that takes it must let it go, and wait until
// it is gone, before the next session comes.
class DesktopSession {
public:
    template <typename T> using ObjectPointer = GLibPointer<T, g_object_ref, g_object_unref>;
    using VariantPointer = GLibPointer<GVariant, g_variant_ref, g_variant_unref>;

    enum class Bus { session, system };

    DesktopSession();
    DesktopSession(const DesktopSession&) = delete;
    DesktopSession& operator=(const DesktopSession&) = delete;
    DesktopSession(DesktopSession&&) = delete;
    DesktopSession& operator=(DesktopSession&&) = delete;
    ~DesktopSession();

    // Starts `python3 -m dbusmock <arguments>` on `bus` and waits until it
    // owns `name`. Throws when it does not come.
    void startMock(Bus bus, const std::string& name, const std::vector<std::string>& arguments);
    // The StatusNotifierWatcher a tray host serves, recording every item
    // that registers.
    void startTrayWatcher();
    // Ends every mock at once, as a crash would.
    void stopMocks();
    [[nodiscard]] bool hasOwner(Bus bus, const std::string& name) const;

    // A blocking call to a service of another process (a mock); throws with
    // the D-Bus error.
    VariantPointer call(Bus bus, const std::string& name, const std::string& path, const std::string& interface,
        const std::string& method, GVariant* parameters) const;
    // One call a mock recorded: when it came, in whole seconds since the
    // epoch, and its arguments.
    struct MockCall {
        std::uint64_t time = 0;
        std::vector<VariantPointer> arguments;
    };
    // The calls of `method` a mock recorded, in order.
    [[nodiscard]] std::vector<MockCall> mockCalls(
        Bus bus, const std::string& name, const std::string& path, const std::string& method) const;
    // Sends a signal from a mock's object; `arguments` is its "av".
    void emit(Bus bus, const std::string& name, const std::string& path, const char* interface, const char* signal,
        const char* signature, GVariant* arguments) const;

    [[nodiscard]] GDBusConnection* connection(Bus bus) const;

private:
    GTestDBus* m_sessionBus = nullptr;
    ObjectPointer<GSubprocess> m_systemBusDaemon;
    ObjectPointer<GDBusConnection> m_session;
    ObjectPointer<GDBusConnection> m_system;
    std::vector<ObjectPointer<GSubprocess>> m_mocks;
};

} // namespace velmora::test
