#include "DesktopNotificationCenter.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "DBusSignalSubscription.h"
#include "GuardedCallback.h"
#include "VelmoraMac/Platform/Desktop/WallClockAlarm.h"
#include "VelmoraMac/Platform/GLibSignal.h"
#include "VelmoraMac/Platform/MainThread.h"
#include "VelmoraMac/Platform/Process/DedicatedMainThread.h"

namespace velmora {

namespace {

constexpr const char* serverName = "org.freedesktop.Notifications";
constexpr const char* serverPath = "/org/freedesktop/Notifications";
constexpr const char* serverInterface = "org.freedesktop.Notifications";
constexpr const char* busName = "org.freedesktop.DBus";
constexpr const char* busPath = "/org/freedesktop/DBus";
constexpr const char* busInterface = "org.freedesktop.DBus";
// What a click on a notification's body invokes.
constexpr const char* defaultAction = "default";
// The notification server's own sound for a message.
constexpr const char* soundName = "message-new-instant";

// A server the bus starts for our first notification takes a moment; one
// that hangs must not hold the answers back for long.
constexpr gint callTimeoutMilliseconds = 10000;

Instant wallClockNow()
{
    return std::chrono::time_point_cast<std::chrono::milliseconds>(std::chrono::system_clock::now());
}

// The reply of a call to the bus or the server; null when it failed.
GVariant* callSync(GDBusConnection* connection, const char* name, const char* path, const char* interfaceName,
    const char* method, GVariant* parameters, const GVariantType* replyType)
{
    GError* error = nullptr;
    GVariant* reply = g_dbus_connection_call_sync(connection, name, path, interfaceName, method, parameters, replyType,
        G_DBUS_CALL_FLAGS_NONE, callTimeoutMilliseconds, nullptr, &error);
    if (reply == nullptr)
        g_error_free(error);
    return reply;
}

} // namespace

DesktopNotificationCenter::DesktopNotificationCenter(GDBusConnection* sessionBus, FiringTime firingTime)
    : m_connection(Connection::share(sessionBus))
    , m_firingTime(std::move(firingTime))
    , m_thread(std::make_unique<DedicatedMainThread>())
{
    if (!m_firingTime)
        m_firingTime = [](const NotificationTrigger& trigger) { return trigger.instant(); };
    // Subscribed on the centre's thread, so that the signals come there.
    try {
        m_thread->submitSync([this] { start(); });
    } catch (...) {
        m_thread->stop();
        throw;
    }
}

NotNullShared<DesktopNotificationCenter> DesktopNotificationCenter::forThisSession()
{
    GError* error = nullptr;
    GDBusConnection* bus = g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, &error);
    if (bus == nullptr) {
        // No session bus: no server either, which the status reports.
        g_error_free(error);
    }
    auto center = NotNullShared<DesktopNotificationCenter>::make(bus);
    if (bus != nullptr)
        g_object_unref(bus);
    return center;
}

DesktopNotificationCenter::~DesktopNotificationCenter()
{
    // Ended on their own thread, so that no signal or alarm reaches this
    // object once the thread is gone.
    m_thread->submitSync([this] { stop(); });
    m_thread->stop();
}

void DesktopNotificationCenter::start()
{
    m_alarm = std::make_unique<WallClockAlarm>(
        g_main_context_get_thread_default(), [this](WallClockAlarm::Reason /*reason*/) {
            // Due or not, the clock is read again: after a clock change, what
            // has come is posted and the rest waits anew. Queued, as every
            // callback from GLib here is, so that a failure reaches the
            // thread's failure handler instead of unwinding through GLib.
            runGuarded([this] { enqueue([this] { postDue(); }); });
        });
    m_actionInvoked = std::make_unique<DBusSignalSubscription>(m_connection.get(),
        DBusSignalSubscription::Match{serverName, serverInterface, "ActionInvoked", serverPath, nullptr},
        &DesktopNotificationCenter::actionInvoked, this);
    m_notificationClosed = std::make_unique<DBusSignalSubscription>(m_connection.get(),
        DBusSignalSubscription::Match{serverName, serverInterface, "NotificationClosed", serverPath, nullptr},
        &DesktopNotificationCenter::notificationClosed, this);
    watchServer();
    watchGnomeSwitch();
}

void DesktopNotificationCenter::watchServer()
{
    if (!m_connection)
        return;
    // Subscribed before asking: the bus handles our messages in order, so a
    // change after the answer is told by a signal, and one before it is
    // told by both, which agree.
    m_serverOwnerChanged = std::make_unique<DBusSignalSubscription>(m_connection.get(),
        DBusSignalSubscription::Match{busName, busInterface, "NameOwnerChanged", busPath, serverName},
        &DesktopNotificationCenter::serverOwnerChanged, this);
    if (GVariant* reply = callSync(m_connection.get(), busName, busPath, busInterface, "NameHasOwner",
            g_variant_new("(s)", serverName), G_VARIANT_TYPE("(b)"))) {
        gboolean owned = FALSE;
        g_variant_get(reply, "(b)", &owned);
        g_variant_unref(reply);
        m_serverOwned = owned != FALSE;
    }
    m_serverActivatable = serverActivatable();
}

void DesktopNotificationCenter::watchGnomeSwitch()
{
    // Looked up first because GSettings aborts the process on a schema that
    // is not installed; without one, there is no switch to turn us off.
    GSettingsSchemaSource* source = g_settings_schema_source_get_default();
    if (source == nullptr)
        return;
    GSettingsSchema* schema = g_settings_schema_source_lookup(source, gnomeSettingsSchema, TRUE);
    if (schema == nullptr)
        return;
    if (g_settings_schema_has_key(schema, "enable") != FALSE) {
        // Made on the centre's thread, so that its changes are told there.
        m_gnomeSettings = Settings::adopt(g_settings_new_full(schema, nullptr, gnomeSettingsPath));
        m_gnomeSwitchChanged = std::make_unique<GLibSignal>(
            m_gnomeSettings.get(), "changed::enable", G_CALLBACK(&DesktopNotificationCenter::gnomeSwitchChanged), this);
        m_gnomeAllows = g_settings_get_boolean(m_gnomeSettings.get(), "enable") != FALSE;
    }
    g_settings_schema_unref(schema);
}

void DesktopNotificationCenter::stop()
{
    m_gnomeSwitchChanged.reset();
    m_gnomeSettings.reset();
    m_serverOwnerChanged.reset();
    m_notificationClosed.reset();
    m_actionInvoked.reset();
    m_alarm.reset();
}

void DesktopNotificationCenter::enqueue(std::function<void()> operation)
{
    try {
        m_thread->submitAsync(std::move(operation));
    } catch (const MainThreadStopped&) {
        // Only while this centre is being destroyed, when nobody may call
        // it any more.
    }
}

void DesktopNotificationCenter::getAuthorizationStatus(StatusCompletion completion)
{
    enqueue([this, completion = std::move(completion)] {
        const NotificationAuthorizationStatus answer = status();
        if (completion)
            completion(answer);
    });
}

void DesktopNotificationCenter::requestAuthorization(AuthorizationCompletion completion)
{
    enqueue([this, completion = std::move(completion)] {
        const bool granted = status() == NotificationAuthorizationStatus::authorized;
        if (completion)
            completion(granted);
    });
}

void DesktopNotificationCenter::removeAllDelivered()
{
    enqueue([this] {
        for (const auto& [id, identifier] : m_delivered) {
            GVariant* reply = callSync(m_connection.get(), serverName, serverPath, serverInterface, "CloseNotification",
                g_variant_new("(u)", id), nullptr);
            // A notification the user closed meanwhile, or a server that has
            // gone, leaves nothing to close.
            if (reply != nullptr)
                g_variant_unref(reply);
        }
        m_delivered.clear();
    });
}

void DesktopNotificationCenter::removeAllPending()
{
    enqueue([this] {
        m_pending.clear();
        arm();
    });
}

void DesktopNotificationCenter::add(NotificationRequest request, AddCompletion completion)
{
    enqueue([this, request = std::move(request), completion = std::move(completion)]() mutable {
        addNow(std::move(request), completion);
    });
}

void DesktopNotificationCenter::setClickHandler(ClickHandler handler)
{
    ClickHandler previous;
    {
        std::unique_lock lock(m_clickMutex);
        previous = std::exchange(m_clickHandler, std::move(handler));
        // Replaced from inside a click, the click under way is the caller
        // itself, which cannot wait for its own end.
        if (!m_thread->isMainThread())
            m_clickFinished.wait(lock, [this] { return !m_clicking; });
    }
}

NotificationAuthorizationStatus DesktopNotificationCenter::status() const
{
    if (!m_gnomeAllows || !(m_serverOwned || m_serverActivatable))
        return NotificationAuthorizationStatus::denied;
    return NotificationAuthorizationStatus::authorized;
}

bool DesktopNotificationCenter::serverActivatable() const
{
    // Most desktops start their server only for the first notification.
    GVariant* reply = callSync(
        m_connection.get(), busName, busPath, busInterface, "ListActivatableNames", nullptr, G_VARIANT_TYPE("(as)"));
    if (reply == nullptr)
        return false;
    bool activatable = false;
    GVariantIter* names = nullptr;
    g_variant_get(reply, "(as)", &names);
    const gchar* name = nullptr;
    while (!activatable && g_variant_iter_next(names, "&s", &name) != FALSE)
        activatable = g_strcmp0(name, serverName) == 0;
    g_variant_iter_free(names);
    g_variant_unref(reply);
    return activatable;
}

void DesktopNotificationCenter::addNow(NotificationRequest request, const AddCompletion& completion)
{
    const std::optional<Instant> firesAt = m_firingTime(request.trigger);
    std::optional<std::string> error;
    if (!firesAt) {
        error = "the trigger of \"" + request.identifier + "\" names no time";
    } else {
        std::erase_if(
            m_pending, [&](const Pending& pending) { return pending.request.identifier == request.identifier; });
        m_pending.push_back({std::move(request), *firesAt > wallClockNow() ? firesAt : std::nullopt, m_nextOrder++});
        arm();
    }
    if (completion)
        completion(error);
}

void DesktopNotificationCenter::arm()
{
    // Work queued before the centre stopped runs after its alarm is gone.
    if (!m_alarm)
        return;
    std::optional<Instant> next;
    for (const Pending& pending : m_pending) {
        if (pending.firesAt && (!next || *pending.firesAt < *next))
            next = pending.firesAt;
    }
    if (next)
        m_alarm->arm(*next);
    else
        m_alarm->disarm();
}

void DesktopNotificationCenter::postDue()
{
    const Instant now = wallClockNow();
    std::vector<Pending> due;
    std::vector<Pending> waiting;
    for (Pending& pending : m_pending)
        (pending.firesAt && *pending.firesAt <= now ? due : waiting).push_back(std::move(pending));
    m_pending = std::move(waiting);
    std::ranges::sort(due, [](const Pending& a, const Pending& b) {
        return *a.firesAt != *b.firesAt ? *a.firesAt < *b.firesAt : a.order < b.order;
    });
    for (const Pending& fired : due)
        post(fired.request);
    arm();
}

void DesktopNotificationCenter::post(const NotificationRequest& request)
{
    if (!m_connection)
        return;
    GVariantBuilder actions;
    g_variant_builder_init(&actions, G_VARIANT_TYPE("as"));
    g_variant_builder_add(&actions, "s", defaultAction);
    // The label of the default action is never shown; the body is the
    // button.
    g_variant_builder_add(&actions, "s", "");
    GVariantBuilder hints;
    g_variant_builder_init(&hints, G_VARIANT_TYPE("a{sv}"));
    g_variant_builder_add(&hints, "{sv}", "desktop-entry", g_variant_new_string(desktopEntry));
    if (request.sound != NotificationSound::none)
        g_variant_builder_add(&hints, "{sv}", "sound-name", g_variant_new_string(soundName));
    GVariant* parameters = g_variant_new("(susssasa{sv}i)", applicationName, 0U, iconName, request.title.c_str(),
        request.body.c_str(), &actions, &hints, -1);
    GVariant* reply = callSync(
        m_connection.get(), serverName, serverPath, serverInterface, "Notify", parameters, G_VARIANT_TYPE("(u)"));
    // Without a server the reminder is lost; the status already says so.
    if (reply == nullptr)
        return;
    guint32 id = 0;
    g_variant_get(reply, "(u)", &id);
    g_variant_unref(reply);
    m_delivered.insert_or_assign(id, request.identifier);
}

void DesktopNotificationCenter::clicked(std::uint32_t id)
{
    const auto delivered = m_delivered.find(id);
    if (delivered == m_delivered.end())
        return;
    ClickHandler handler;
    {
        const std::scoped_lock lock(m_clickMutex);
        handler = m_clickHandler;
        m_clicking = true;
    }
    // Nothing on this desktop waits for the handler to finish.
    const std::function<void()> complete = [] {};
    if (handler)
        handler(delivered->second, complete);
    // The handler's copy goes before the click counts as over, so that
    // setClickHandler() can promise nothing of the old handler is left.
    handler = nullptr;
    {
        const std::scoped_lock lock(m_clickMutex);
        m_clicking = false;
    }
    m_clickFinished.notify_all();
}

void DesktopNotificationCenter::actionInvoked(GDBusConnection* /*connection*/, const gchar* /*sender*/,
    const gchar* /*path*/, const gchar* /*interfaceName*/, const gchar* /*signal*/, GVariant* parameters, gpointer self)
{
    if (g_variant_is_of_type(parameters, G_VARIANT_TYPE("(us)")) == FALSE)
        return;
    guint32 id = 0;
    const gchar* action = nullptr;
    g_variant_get(parameters, "(u&s)", &id, &action);
    if (g_strcmp0(action, defaultAction) != 0)
        return;
    auto* center = static_cast<DesktopNotificationCenter*>(self);
    runGuarded([center, id] { center->enqueue([center, id] { center->clicked(id); }); });
}

void DesktopNotificationCenter::notificationClosed(GDBusConnection* /*connection*/, const gchar* /*sender*/,
    const gchar* /*path*/, const gchar* /*interfaceName*/, const gchar* /*signal*/, GVariant* parameters, gpointer self)
{
    if (g_variant_is_of_type(parameters, G_VARIANT_TYPE("(uu)")) == FALSE)
        return;
    guint32 id = 0;
    guint32 reason = 0;
    g_variant_get(parameters, "(uu)", &id, &reason);
    // Erasing from a map throws nothing.
    static_cast<DesktopNotificationCenter*>(self)->m_delivered.erase(id);
}

void DesktopNotificationCenter::serverOwnerChanged(GDBusConnection* /*connection*/, const gchar* /*sender*/,
    const gchar* /*path*/, const gchar* /*interfaceName*/, const gchar* /*signal*/, GVariant* parameters, gpointer self)
{
    if (g_variant_is_of_type(parameters, G_VARIANT_TYPE("(sss)")) == FALSE)
        return;
    const gchar* newOwner = nullptr;
    g_variant_get_child(parameters, 2, "&s", &newOwner);
    auto* center = static_cast<DesktopNotificationCenter*>(self);
    center->m_serverOwned = *newOwner != '\0';
    // A server gone leaves the question whether the bus can start another;
    // the list may have changed since it was last asked.
    if (!center->m_serverOwned)
        center->m_serverActivatable = center->serverActivatable();
}

void DesktopNotificationCenter::gnomeSwitchChanged(GSettings* settings, const gchar* /*key*/, gpointer self)
{
    static_cast<DesktopNotificationCenter*>(self)->m_gnomeAllows = g_settings_get_boolean(settings, "enable") != FALSE;
}

} // namespace velmora
