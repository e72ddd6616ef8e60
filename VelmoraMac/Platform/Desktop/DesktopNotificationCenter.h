#pragma once

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include <gio/gio.h>

#include "VelmoraMac/Platform/GLibPointer.h"
#include "VelmoraMac/Platform/NotNullShared.h"
#include "VelmoraMac/Platform/NotificationCenter.h"

namespace velmora {

class DBusSignalSubscription;
class GLibSignal;
class DedicatedMainThread;
class WallClockAlarm;

// The reminders of a Linux desktop, shown by the session's notification
// server (org.freedesktop.Notifications).
//
// The protocol only shows a notification now, so the pending requests are
// kept here and each one is posted with Notify when its minute comes, by a
// wall-clock alarm: it rings on time after a suspend (late, at the resume,
// for a minute slept through) and is set again when the system clock is
// set, so a minute the clock jumps over is posted at once. A change of the
// system's time zone moves no trigger, since each names its own zone; the
// reminders follow a new zone when they are scheduled again. A trigger
// whose minute has already come when it is added never fires, as a minute
// that has passed does not come again.
//
// Permission has no protocol either: notifications are authorized while a
// notification server holds its name on the bus or the bus can start one,
// unless GNOME's per-application switch for this application is off, and
// denied otherwise. Nobody is ever asked, so the status is never "not
// determined", and requestAuthorization grants exactly when authorized.
// The shell asks on every noticing, so the answer comes from what the
// centre keeps watching rather than from a round trip: the name's owner
// (the bus tells of every change), whether the bus can start a server
// (asked at the start and whenever a server goes away, as one started by
// the bus for our first notification may end again), and the switch
// (GSettings tells of its changes). Asking sends no message and reads no
// file.
//
// A click on the body of one of ours reaches the click handler with the
// request's identifier. Every client hears every click (ActionInvoked is
// broadcast), so only the ids of our own delivered notifications count;
// an id leaves when the server says the notification was closed.
//
// Threading: as the interface asks. The centre runs on a thread of its own,
// iterating a GLib context of its own; every operation is queued there in
// the order of the calls, and answers and clicks come from there. The calls
// to the server and the bus are synchronous on that thread, so a server
// that hangs delays the answers, up to a time-out, never the caller. A
// server that cannot be reached loses the notification: there is nobody to
// tell.
class DesktopNotificationCenter final : public NotificationCenter {
public:
    // When a trigger fires; none for a trigger that names no time.
    using FiringTime = std::function<std::optional<Instant>(const NotificationTrigger& trigger)>;

    static constexpr const char* applicationName = "Velmora";
    // The desktop entry the server shows our notifications under, and the
    // application id GNOME keeps our switch under.
    static constexpr const char* desktopEntry = "app.velmora.mac";
    // The application's icon in the icon theme, which the server shows
    // beside the notification.
    static constexpr const char* iconName = "app.velmora.mac";
    // GNOME's per-application settings live at the desktop entry's id in
    // lower case, with every character other than a letter, a digit or a
    // dash turned into a dash.
    static constexpr const char* gnomeSettingsSchema = "org.gnome.desktop.notifications.application";
    static constexpr const char* gnomeSettingsPath = "/org/gnome/desktop/notifications/application/app-velmora-mac/";

    // Talks to the server on `sessionBus` (a message-bus connection; null
    // means no bus, so denied and nothing is shown). `firingTime` defaults
    // to the trigger's own instant. Throws std::system_error when the
    // kernel gives no timer.
    explicit DesktopNotificationCenter(GDBusConnection* sessionBus, FiringTime firingTime = {});
    // On the session bus of this process; with no bus, as above.
    static NotNullShared<DesktopNotificationCenter> forThisSession();

    DesktopNotificationCenter(const DesktopNotificationCenter&) = delete;
    DesktopNotificationCenter& operator=(const DesktopNotificationCenter&) = delete;
    DesktopNotificationCenter(DesktopNotificationCenter&&) = delete;
    DesktopNotificationCenter& operator=(DesktopNotificationCenter&&) = delete;
    // Runs the operations already queued, then ends the thread; what is
    // pending is forgotten, what is shown stays. Not from inside an answer
    // or a click.
    ~DesktopNotificationCenter() override;

    void getAuthorizationStatus(StatusCompletion completion) override;
    void requestAuthorization(AuthorizationCompletion completion) override;
    // Closes, on the server, every notification of ours still shown.
    void removeAllDelivered() override;
    void removeAllPending() override;
    // Fails, keeping nothing, for a trigger that names no time.
    void add(NotificationRequest request, AddCompletion completion) override;
    void setClickHandler(ClickHandler handler) override;

private:
    using Connection = GLibPointer<GDBusConnection, g_object_ref, g_object_unref>;
    using Settings = GLibPointer<GSettings, g_object_ref, g_object_unref>;

    struct Pending {
        NotificationRequest request;
        // None once the minute has passed: it will never fire.
        std::optional<Instant> firesAt;
        std::uint64_t order = 0;
    };

    // The operations on the centre's thread.
    void start();
    void stop();
    void watchServer();
    void watchGnomeSwitch();
    [[nodiscard]] NotificationAuthorizationStatus status() const;
    [[nodiscard]] bool serverActivatable() const;
    void addNow(NotificationRequest request, const AddCompletion& completion);
    void arm();
    void postDue();
    void post(const NotificationRequest& request);
    void clicked(std::uint32_t id);

    static void actionInvoked(GDBusConnection* connection, const gchar* sender, const gchar* path,
        const gchar* interfaceName, const gchar* signal, GVariant* parameters, gpointer self);
    static void notificationClosed(GDBusConnection* connection, const gchar* sender, const gchar* path,
        const gchar* interfaceName, const gchar* signal, GVariant* parameters, gpointer self);
    static void serverOwnerChanged(GDBusConnection* connection, const gchar* sender, const gchar* path,
        const gchar* interfaceName, const gchar* signal, GVariant* parameters, gpointer self);
    static void gnomeSwitchChanged(GSettings* settings, const gchar* key, gpointer self);

    // Queues `operation` on the centre's thread.
    void enqueue(std::function<void()> operation);

    Connection m_connection;
    FiringTime m_firingTime;

    // The centre's thread only.
    std::unique_ptr<WallClockAlarm> m_alarm;
    std::unique_ptr<DBusSignalSubscription> m_actionInvoked;
    std::unique_ptr<DBusSignalSubscription> m_notificationClosed;
    std::unique_ptr<DBusSignalSubscription> m_serverOwnerChanged;
    // What the status is made of, kept current by the watches.
    bool m_serverOwned = false;
    bool m_serverActivatable = false;
    bool m_gnomeAllows = true;
    // GNOME's switch, where its schema is installed.
    Settings m_gnomeSettings;
    std::unique_ptr<GLibSignal> m_gnomeSwitchChanged;
    std::vector<Pending> m_pending;
    std::uint64_t m_nextOrder = 0;
    // Our notifications on screen: the server's id, the request's identifier.
    std::map<std::uint32_t, std::string> m_delivered;

    // Any thread, under m_clickMutex.
    std::mutex m_clickMutex;
    std::condition_variable m_clickFinished;
    ClickHandler m_clickHandler;
    bool m_clicking = false;

    // Last: it starts once everything above is ready, and goes first.
    std::unique_ptr<DedicatedMainThread> m_thread;
};

} // namespace velmora
