#pragma once

#include <memory>
#include <string>

#include <gio/gio.h>

#include "VelmoraMac/Platform/GLibPointer.h"
#include "VelmoraMac/Platform/NotNullShared.h"
#include "VelmoraMac/Platform/SystemNotificationHub.h"

namespace velmora {

class DBusSignalSubscription;

// The machine's events that the host reacts to, as a Linux desktop tells
// them, posted to the hub:
//  - workspaceWillSleep and workspaceDidWake, from logind's PrepareForSleep
//    on the system bus. A delay inhibitor is held while awake, so that the
//    pond is hidden before the machine sleeps: it is let go once the
//    observers of workspaceWillSleep have run, and taken again on waking.
//  - workspaceScreensDidSleep, when the screen saver comes on (GNOME's, or
//    any that implements org.freedesktop.ScreenSaver) on the session bus.
//  - systemTimeZoneDidChange, when the system's time zone is set through
//    timedated or /etc/localtime is replaced. The C library and ICU's
//    default zone are switched to the new zone before the observers run.
//    One change tells several times (the file, then the bus); it is posted
//    once, and a touch that leaves the zone as it was not at all.
// A bus, a service or the file that is not there is not a failure: its
// events simply never come, as a machine without logind never sleeps
// through it.
//
// Main thread only: made and destroyed on the thread iterating GLib's
// default context, where the hub hears of every event.
class DesktopSystemEvents {
public:
    static constexpr const char* localtimePath = "/etc/localtime";

    // Listens on `systemBus` and `sessionBus` (message-bus connections;
    // either may be null).
    DesktopSystemEvents(
        std::shared_ptr<SystemNotificationHub> hub, GDBusConnection* systemBus, GDBusConnection* sessionBus);
    // On the buses of this process; on none where a bus cannot be reached.
    static NotNullShared<DesktopSystemEvents> forThisSession(std::shared_ptr<SystemNotificationHub> hub);

    DesktopSystemEvents(const DesktopSystemEvents&) = delete;
    DesktopSystemEvents& operator=(const DesktopSystemEvents&) = delete;
    DesktopSystemEvents(DesktopSystemEvents&&) = delete;
    DesktopSystemEvents& operator=(DesktopSystemEvents&&) = delete;
    // Stops listening and lets the inhibitor go.
    ~DesktopSystemEvents();

private:
    using Connection = GLibPointer<GDBusConnection, g_object_ref, g_object_unref>;
    using Cancellable = GLibPointer<GCancellable, g_object_ref, g_object_unref>;
    using FileMonitor = GLibPointer<GFileMonitor, g_object_ref, g_object_unref>;
    struct InhibitCall;

    void takeInhibitor();
    void releaseInhibitor();
    void sleepAnnounced(bool beforeSleep);
    void zoneMayHaveChanged();
    void watchLocaltime();

    static void inhibitAnswered(GObject* connection, GAsyncResult* result, gpointer call);
    static void prepareForSleep(GDBusConnection* connection, const gchar* sender, const gchar* path,
        const gchar* interfaceName, const gchar* signal, GVariant* parameters, gpointer self);
    static void screenSaverChanged(GDBusConnection* connection, const gchar* sender, const gchar* path,
        const gchar* interfaceName, const gchar* signal, GVariant* parameters, gpointer self);
    static void timedatePropertiesChanged(GDBusConnection* connection, const gchar* sender, const gchar* path,
        const gchar* interfaceName, const gchar* signal, GVariant* parameters, gpointer self);
    static void localtimeChanged(
        GFileMonitor* monitor, GFile* file, GFile* otherFile, GFileMonitorEvent event, gpointer self);

    std::shared_ptr<SystemNotificationHub> m_hub;
    Connection m_systemBus;
    Connection m_sessionBus;
    // The zone last told to the observers (or found at the start).
    std::string m_zone;

    // The logind inhibitor: its descriptor while held, and the call taking
    // one while it is under way.
    int m_inhibitor = -1;
    InhibitCall* m_inhibitCall = nullptr;

    std::unique_ptr<DBusSignalSubscription> m_sleep;
    std::unique_ptr<DBusSignalSubscription> m_gnomeScreenSaver;
    std::unique_ptr<DBusSignalSubscription> m_freedesktopScreenSaver;
    std::unique_ptr<DBusSignalSubscription> m_timedate;
    FileMonitor m_localtime;
    gulong m_localtimeHandler = 0;
};

} // namespace velmora
