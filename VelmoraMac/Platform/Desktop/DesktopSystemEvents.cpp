#include "DesktopSystemEvents.h"

#include <ctime>
#include <utility>

#include <gio/gunixfdlist.h>
#include <unicode/timezone.h>
#include <unistd.h>

#include "DBusSignalSubscription.h"
#include "GuardedCallback.h"
#include "VelmoraCore/UserCalendar.h"

namespace velmora {

namespace {

constexpr const char* logindName = "org.freedesktop.login1";
constexpr const char* logindPath = "/org/freedesktop/login1";
constexpr const char* logindManager = "org.freedesktop.login1.Manager";
constexpr const char* timedateName = "org.freedesktop.timedate1";
constexpr const char* timedatePath = "/org/freedesktop/timedate1";

// What logind shows the user about who delays the sleep, and why.
constexpr const char* inhibitorWho = "Velmora";
constexpr const char* inhibitorWhy = "Hiding the pond before the machine sleeps";

// The host's zone, as ICU reads it after the C library has read it anew.
std::unique_ptr<icu::TimeZone> hostZone()
{
    tzset();
    return std::unique_ptr<icu::TimeZone>(icu::TimeZone::detectHostTimeZone());
}

} // namespace

// A call to logind that takes an inhibitor. The answer may come after its
// owner has gone, which then leaves `owner` null for the answer to find.
struct DesktopSystemEvents::InhibitCall {
    DesktopSystemEvents* owner = nullptr;
    Cancellable cancellable = Cancellable::adopt(g_cancellable_new());
};

DesktopSystemEvents::DesktopSystemEvents(
    std::shared_ptr<SystemNotificationHub> hub, GDBusConnection* systemBus, GDBusConnection* sessionBus)
    : m_hub(std::move(hub))
    , m_systemBus(Connection::share(systemBus))
    , m_sessionBus(Connection::share(sessionBus))
{
    if (const auto zone = hostZone())
        m_zone = UserCalendar::identifierOf(*zone);

    // GLib calls back on the context that is thread-default when one
    // subscribes: made the default one here, whatever the caller pushed.
    g_main_context_push_thread_default(g_main_context_default());
    m_sleep = std::make_unique<DBusSignalSubscription>(systemBus,
        DBusSignalSubscription::Match{logindName, logindManager, "PrepareForSleep", logindPath, nullptr},
        &DesktopSystemEvents::prepareForSleep, this);
    m_gnomeScreenSaver = std::make_unique<DBusSignalSubscription>(sessionBus,
        DBusSignalSubscription::Match{
            "org.gnome.ScreenSaver", "org.gnome.ScreenSaver", "ActiveChanged", "/org/gnome/ScreenSaver", nullptr},
        &DesktopSystemEvents::screenSaverChanged, this);
    m_freedesktopScreenSaver = std::make_unique<DBusSignalSubscription>(sessionBus,
        DBusSignalSubscription::Match{
            "org.freedesktop.ScreenSaver", "org.freedesktop.ScreenSaver", "ActiveChanged", "/ScreenSaver", nullptr},
        &DesktopSystemEvents::screenSaverChanged, this);
    m_timedate = std::make_unique<DBusSignalSubscription>(systemBus,
        DBusSignalSubscription::Match{
            timedateName, "org.freedesktop.DBus.Properties", "PropertiesChanged", timedatePath, timedateName},
        &DesktopSystemEvents::timedatePropertiesChanged, this);
    watchLocaltime();
    takeInhibitor();
    g_main_context_pop_thread_default(g_main_context_default());
}

NotNullShared<DesktopSystemEvents> DesktopSystemEvents::forThisSession(std::shared_ptr<SystemNotificationHub> hub)
{
    // A bus that cannot be reached is null here: its events never come.
    GDBusConnection* systemBus = g_bus_get_sync(G_BUS_TYPE_SYSTEM, nullptr, nullptr);
    GDBusConnection* sessionBus = g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr);
    auto events = NotNullShared<DesktopSystemEvents>::make(std::move(hub), systemBus, sessionBus);
    if (systemBus != nullptr)
        g_object_unref(systemBus);
    if (sessionBus != nullptr)
        g_object_unref(sessionBus);
    return events;
}

DesktopSystemEvents::~DesktopSystemEvents()
{
    if (m_localtimeHandler != 0)
        g_signal_handler_disconnect(m_localtime.get(), m_localtimeHandler);
    if (m_localtime)
        g_file_monitor_cancel(m_localtime.get());
    if (m_inhibitCall != nullptr) {
        m_inhibitCall->owner = nullptr;
        g_cancellable_cancel(m_inhibitCall->cancellable.get());
    }
    releaseInhibitor();
}

void DesktopSystemEvents::watchLocaltime()
{
    GFile* file = g_file_new_for_path(localtimePath);
    GError* error = nullptr;
    m_localtime = FileMonitor::adopt(g_file_monitor_file(file, G_FILE_MONITOR_NONE, nullptr, &error));
    g_object_unref(file);
    if (!m_localtime) {
        // No file monitoring here: timedated still tells of its changes.
        g_error_free(error);
        return;
    }
    m_localtimeHandler
        = g_signal_connect(m_localtime.get(), "changed", G_CALLBACK(&DesktopSystemEvents::localtimeChanged), this);
}

void DesktopSystemEvents::takeInhibitor()
{
    if (!m_systemBus || m_inhibitor >= 0 || m_inhibitCall != nullptr)
        return;
    m_inhibitCall = new InhibitCall{this}; // NOLINT(cppcoreguidelines-owning-memory): the answer deletes it
    g_dbus_connection_call_with_unix_fd_list(m_systemBus.get(), logindName, logindPath, logindManager, "Inhibit",
        g_variant_new("(ssss)", "sleep", inhibitorWho, inhibitorWhy, "delay"), G_VARIANT_TYPE("(h)"),
        G_DBUS_CALL_FLAGS_NONE, -1, nullptr, m_inhibitCall->cancellable.get(), &DesktopSystemEvents::inhibitAnswered,
        m_inhibitCall);
}

void DesktopSystemEvents::releaseInhibitor()
{
    if (m_inhibitor < 0)
        return;
    // Closing the descriptor is what lets logind go on.
    ::close(m_inhibitor);
    m_inhibitor = -1;
}

void DesktopSystemEvents::inhibitAnswered(GObject* connection, GAsyncResult* result, gpointer call)
{
    auto* inhibit = static_cast<InhibitCall*>(call);
    GUnixFDList* descriptors = nullptr;
    GError* error = nullptr;
    GVariant* reply
        = g_dbus_connection_call_with_unix_fd_list_finish(G_DBUS_CONNECTION(connection), &descriptors, result, &error);
    int descriptor = -1;
    if (reply == nullptr) {
        // No logind, or one that refuses: sleep comes unannounced by us,
        // and the pond is hidden on waking instead.
        g_error_free(error);
    } else {
        gint32 index = -1;
        g_variant_get(reply, "(h)", &index);
        g_variant_unref(reply);
        if (descriptors != nullptr && index >= 0 && index < g_unix_fd_list_get_length(descriptors))
            descriptor = g_unix_fd_list_get(descriptors, index, nullptr);
    }
    if (descriptors != nullptr)
        g_object_unref(descriptors);

    DesktopSystemEvents* owner = inhibit->owner;
    delete inhibit; // NOLINT(cppcoreguidelines-owning-memory): made for this answer alone
    if (owner == nullptr) {
        if (descriptor >= 0)
            ::close(descriptor);
        return;
    }
    owner->m_inhibitCall = nullptr;
    owner->m_inhibitor = descriptor;
}

void DesktopSystemEvents::sleepAnnounced(bool beforeSleep)
{
    if (beforeSleep) {
        m_hub->post(SystemNotification::workspaceWillSleep);
        releaseInhibitor();
    } else {
        m_hub->post(SystemNotification::workspaceDidWake);
        takeInhibitor();
    }
}

void DesktopSystemEvents::zoneMayHaveChanged()
{
    std::unique_ptr<icu::TimeZone> zone = hostZone();
    if (!zone)
        return;
    std::string identifier = UserCalendar::identifierOf(*zone);
    if (identifier == m_zone)
        return;
    m_zone = std::move(identifier);
    icu::TimeZone::adoptDefault(zone.release());
    m_hub->post(SystemNotification::systemTimeZoneDidChange);
}

void DesktopSystemEvents::prepareForSleep(GDBusConnection* /*connection*/, const gchar* /*sender*/,
    const gchar* /*path*/, const gchar* /*interfaceName*/, const gchar* /*signal*/, GVariant* parameters, gpointer self)
{
    if (g_variant_is_of_type(parameters, G_VARIANT_TYPE("(b)")) == FALSE)
        return;
    gboolean beforeSleep = FALSE;
    g_variant_get(parameters, "(b)", &beforeSleep);
    runGuarded([&] { static_cast<DesktopSystemEvents*>(self)->sleepAnnounced(beforeSleep != FALSE); });
}

void DesktopSystemEvents::screenSaverChanged(GDBusConnection* /*connection*/, const gchar* /*sender*/,
    const gchar* /*path*/, const gchar* /*interfaceName*/, const gchar* /*signal*/, GVariant* parameters, gpointer self)
{
    if (g_variant_is_of_type(parameters, G_VARIANT_TYPE("(b)")) == FALSE)
        return;
    gboolean active = FALSE;
    g_variant_get(parameters, "(b)", &active);
    if (active != FALSE)
        runGuarded([&] {
            static_cast<DesktopSystemEvents*>(self)->m_hub->post(SystemNotification::workspaceScreensDidSleep);
        });
}

void DesktopSystemEvents::timedatePropertiesChanged(GDBusConnection* /*connection*/, const gchar* /*sender*/,
    const gchar* /*path*/, const gchar* /*interfaceName*/, const gchar* /*signal*/, GVariant* parameters, gpointer self)
{
    if (g_variant_is_of_type(parameters, G_VARIANT_TYPE("(sa{sv}as)")) == FALSE)
        return;
    GVariant* changed = g_variant_get_child_value(parameters, 1);
    GVariant* invalidated = g_variant_get_child_value(parameters, 2);
    GVariant* zone = g_variant_lookup_value(changed, "Timezone", nullptr);
    bool zoneChanged = zone != nullptr;
    if (zone != nullptr)
        g_variant_unref(zone);
    const gchar* name = nullptr;
    GVariantIter names;
    g_variant_iter_init(&names, invalidated);
    while (!zoneChanged && g_variant_iter_next(&names, "&s", &name) != FALSE)
        zoneChanged = g_strcmp0(name, "Timezone") == 0;
    g_variant_unref(invalidated);
    g_variant_unref(changed);
    if (zoneChanged)
        runGuarded([&] { static_cast<DesktopSystemEvents*>(self)->zoneMayHaveChanged(); });
}

void DesktopSystemEvents::localtimeChanged(
    GFileMonitor* /*monitor*/, GFile* /*file*/, GFile* /*otherFile*/, GFileMonitorEvent event, gpointer self)
{
    // The link or file replaced, written or removed; its permissions say
    // nothing about the zone.
    if (event == G_FILE_MONITOR_EVENT_ATTRIBUTE_CHANGED || event == G_FILE_MONITOR_EVENT_PRE_UNMOUNT
        || event == G_FILE_MONITOR_EVENT_UNMOUNTED)
        return;
    runGuarded([&] { static_cast<DesktopSystemEvents*>(self)->zoneMayHaveChanged(); });
}

} // namespace velmora
