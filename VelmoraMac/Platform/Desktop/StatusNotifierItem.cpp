#include "StatusNotifierItem.h"

#include <atomic>
#include <string_view>
#include <utility>
#include <vector>

#include <gtk/gtk.h>
#include <unistd.h>

#include "StatusNotifierIcon.h"
#include "StatusNotifierPopupMenu.h"

namespace velmora {

namespace {

constexpr const char* introspection = "<node>"
                                      "  <interface name='org.kde.StatusNotifierItem'>"
                                      "    <property name='Category' type='s' access='read'/>"
                                      "    <property name='Id' type='s' access='read'/>"
                                      "    <property name='Title' type='s' access='read'/>"
                                      "    <property name='Status' type='s' access='read'/>"
                                      "    <property name='WindowId' type='i' access='read'/>"
                                      "    <property name='IconName' type='s' access='read'/>"
                                      "    <property name='IconPixmap' type='a(iiay)' access='read'/>"
                                      "    <property name='ToolTip' type='(sa(iiay)ss)' access='read'/>"
                                      "    <property name='ItemIsMenu' type='b' access='read'/>"
                                      "    <property name='Menu' type='o' access='read'/>"
                                      "    <method name='Activate'>"
                                      "      <arg name='x' type='i' direction='in'/>"
                                      "      <arg name='y' type='i' direction='in'/>"
                                      "    </method>"
                                      "    <method name='ContextMenu'>"
                                      "      <arg name='x' type='i' direction='in'/>"
                                      "      <arg name='y' type='i' direction='in'/>"
                                      "    </method>"
                                      "    <method name='SecondaryActivate'>"
                                      "      <arg name='x' type='i' direction='in'/>"
                                      "      <arg name='y' type='i' direction='in'/>"
                                      "    </method>"
                                      "    <method name='Scroll'>"
                                      "      <arg name='delta' type='i' direction='in'/>"
                                      "      <arg name='orientation' type='s' direction='in'/>"
                                      "    </method>"
                                      "    <signal name='NewTitle'/>"
                                      "    <signal name='NewIcon'/>"
                                      "    <signal name='NewToolTip'/>"
                                      "    <signal name='NewStatus'>"
                                      "      <arg name='status' type='s'/>"
                                      "    </signal>"
                                      "  </interface>"
                                      "</node>";

// Until the shell sets its image, an empty one of a panel icon's size
// keeps the item's place.
constexpr Size emptyIconSize{22, 22};

std::string nextBusName()
{
    // Several items of one process need names of their own.
    static std::atomic<unsigned> made{0};
    return "org.kde.StatusNotifierItem-" + std::to_string(::getpid()) + "-" + std::to_string(++made);
}

GVariant* iconVariant(std::string_view png, Size size)
{
    return g_variant_ref_sink(StatusNotifierIcon::fromTemplate(png, size).toVariant());
}

} // namespace

StatusNotifierItem::StatusNotifierItem(GDBusConnection* bus, double length)
    : m_length(length)
    , m_bus(Connection::share(bus))
    , m_busName(nextBusName())
    , m_icon(Variant::adopt(iconVariant({}, emptyIconSize)))
    , m_queue(g_main_context_get_thread_default())
{
    if (bus == nullptr)
        return;
    GDBusNodeInfo* node = g_dbus_node_info_new_for_xml(introspection, nullptr);
    static const GDBusInterfaceVTable table
        = {&StatusNotifierItem::methodCalled, &StatusNotifierItem::propertyRead, nullptr, {}};
    GError* error = nullptr;
    m_registration
        = g_dbus_connection_register_object(bus, objectPath, node->interfaces[0], &table, this, nullptr, &error);
    g_dbus_node_info_unref(node);
    if (m_registration == 0) {
        // Another item of ours is shown on this connection; this one keeps
        // a working button, as documented, and nobody is to be told.
        g_error_free(error);
        return;
    }
    m_publisher = std::make_unique<DbusMenuPublisher>(
        menuPath, [this] { refreshMenuForHost(); },
        [this](MenuItem::Action action) { m_queue.post(std::move(action)); });
    publishMenu();
    m_nameOwnership = g_bus_own_name_on_connection(bus, m_busName.c_str(), G_BUS_NAME_OWNER_FLAGS_NONE,
        &StatusNotifierItem::nameAcquired, &StatusNotifierItem::nameLost, this, nullptr);
    m_watcherWatch = g_bus_watch_name_on_connection(bus, watcherName, G_BUS_NAME_WATCHER_FLAGS_NONE,
        &StatusNotifierItem::watcherAppeared, &StatusNotifierItem::watcherVanished, this, nullptr);
}

StatusNotifierItem::~StatusNotifierItem()
{
    // No callback of GDBus reaches the item once these return.
    if (m_watcherWatch != 0)
        g_bus_unwatch_name(m_watcherWatch);
    if (m_nameOwnership != 0)
        g_bus_unown_name(m_nameOwnership);
    m_publisher.reset();
    if (m_registration != 0)
        g_dbus_connection_unregister_object(m_bus.get(), m_registration);
}

void StatusNotifierItem::setIcon(std::string_view png, Size size)
{
    m_icon = Variant::adopt(iconVariant(png, size));
    emitSignal("NewIcon", nullptr);
}

void StatusNotifierItem::setToolTip(std::string toolTip)
{
    m_toolTip = std::move(toolTip);
    emitSignal("NewTitle", nullptr);
    emitSignal("NewToolTip", nullptr);
    publishMenu();
}

void StatusNotifierItem::setAccessibilityLabel(std::string label)
{
    m_accessibilityLabel = std::move(label);
    if (m_toolTip.empty()) {
        emitSignal("NewTitle", nullptr);
        publishMenu();
    }
}

void StatusNotifierItem::setAction(StatusButton::Action action)
{
    const bool first = !m_action;
    m_action = std::move(action);
    // The menu's entries come from the shell only when it answers a right
    // click. Asking once up front serves hosts that show the menu they have
    // before refreshing it; put off, so that the shell has finished setting
    // the button up.
    if (first && m_action && m_publisher)
        m_queue.post([this] { refreshMenuForHost(); });
}

void StatusNotifierItem::setActionMask(std::uint64_t mask)
{
    m_actionMask = mask;
}

void StatusNotifierItem::performClick()
{
    if (!m_menu) {
        sendAction(InputEventType::leftMouseUp);
        return;
    }
    m_hostEntries = m_menu->items;
    publishMenu();
    // While a pop-up of ours is open, a second one would stack on it.
    if (m_menuShowing == MenuShowing::byHost || m_poppedUp || gdk_display_get_default() == nullptr)
        return;
    // A copy: the shell may attach another menu while this one is open.
    const std::vector<MenuItem> entries = m_menu->items;
    m_poppedUp = true;
    const std::optional<std::size_t> chosen = StatusNotifierPopupMenu::run(entries);
    m_poppedUp = false;
    if (chosen && entries[*chosen].action)
        m_queue.post(entries[*chosen].action);
}

void StatusNotifierItem::sendAction(InputEventType trigger)
{
    if ((m_actionMask & eventMaskBit(trigger)) == 0 || !m_action)
        return;
    // A copy: the action may replace itself.
    const StatusButton::Action action = m_action;
    action(trigger);
}

void StatusNotifierItem::refreshMenuForHost()
{
    m_menuShowing = MenuShowing::byHost;
    sendAction(InputEventType::rightMouseUp);
    m_menuShowing = MenuShowing::byUs;
}

void StatusNotifierItem::publishMenu()
{
    if (!m_publisher)
        return;
    std::vector<MenuItem> entries;
    entries.reserve(m_hostEntries.size() + 2);
    entries.push_back(MenuItem::item(title(), {}, [this] { sendAction(InputEventType::leftMouseUp); }));
    if (!m_hostEntries.empty()) {
        entries.push_back(MenuItem::separatorItem());
        entries.insert(entries.end(), m_hostEntries.begin(), m_hostEntries.end());
    }
    m_publisher->publish(entries);
}

std::string StatusNotifierItem::title() const
{
    // Hosts name the item by its title for assistive technology too.
    return m_toolTip.empty() ? m_accessibilityLabel : m_toolTip;
}

void StatusNotifierItem::emitSignal(const char* name, GVariant* parameters)
{
    if (m_registration == 0)
        return;
    // Fails only on a closed connection, where nobody listens.
    (void)g_dbus_connection_emit_signal(m_bus.get(), nullptr, objectPath, interfaceName, name, parameters, nullptr);
}

void StatusNotifierItem::registerWithWatcher()
{
    if (!m_ownsName || !m_watcherPresent)
        return;
    // No answer is awaited: a watcher that refuses leaves nothing to do,
    // and one that comes back is asked again.
    g_dbus_connection_call(m_bus.get(), watcherName, watcherPath, watcherName, "RegisterStatusNotifierItem",
        g_variant_new("(s)", m_busName.c_str()), nullptr, G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr, nullptr);
}

GVariant* StatusNotifierItem::property(std::string_view name) const
{
    if (name == "Category")
        return g_variant_new_string("ApplicationStatus");
    if (name == "Id")
        return g_variant_new_string(id);
    if (name == "Title")
        return g_variant_new_string(title().c_str());
    if (name == "Status")
        return g_variant_new_string("Active");
    if (name == "WindowId")
        return g_variant_new_int32(0);
    if (name == "IconName")
        return g_variant_new_string(iconName);
    if (name == "IconPixmap")
        return g_variant_ref(m_icon.get());
    if (name == "ToolTip")
        return g_variant_new(
            "(s@a(iiay)ss)", "", g_variant_new_array(G_VARIANT_TYPE("(iiay)"), nullptr, 0), m_toolTip.c_str(), "");
    if (name == "ItemIsMenu")
        return g_variant_new_boolean(FALSE);
    if (name == "Menu")
        return g_variant_new_object_path(m_publisher ? menuPath : "/");
    return nullptr;
}

void StatusNotifierItem::methodCalled(GDBusConnection* /*connection*/, const gchar* /*sender*/, const gchar* /*path*/,
    const gchar* /*interface*/, const gchar* method, GVariant* /*parameters*/, GDBusMethodInvocation* invocation,
    gpointer self) noexcept
{
    auto* item = static_cast<StatusNotifierItem*>(self);
    // Answered first: the host must not wait for a menu the click may pop
    // up, and the action must not run inside GDBus's dispatch.
    g_dbus_method_invocation_return_value(invocation, nullptr);
    const std::string_view called(method);
    if (called == "Activate")
        item->m_queue.post([item] { item->sendAction(InputEventType::leftMouseUp); });
    else if (called == "ContextMenu")
        item->m_queue.post([item] { item->sendAction(InputEventType::rightMouseUp); });
    // SecondaryActivate (a middle click) and Scroll mean nothing to the
    // pond; GDBus refuses methods the interface does not have.
}

GVariant* StatusNotifierItem::propertyRead(GDBusConnection* /*connection*/, const gchar* /*sender*/,
    const gchar* /*path*/, const gchar* /*interface*/, const gchar* name, GError** error, gpointer self) noexcept
{
    GVariant* value = static_cast<const StatusNotifierItem*>(self)->property(name);
    if (value == nullptr)
        g_set_error(error, G_DBUS_ERROR, G_DBUS_ERROR_UNKNOWN_PROPERTY, "No property %s", name);
    return value;
}

void StatusNotifierItem::nameAcquired(GDBusConnection* /*connection*/, const gchar* /*name*/, gpointer self) noexcept
{
    auto* item = static_cast<StatusNotifierItem*>(self);
    item->m_ownsName = true;
    item->registerWithWatcher();
}

void StatusNotifierItem::nameLost(GDBusConnection* /*connection*/, const gchar* /*name*/, gpointer self) noexcept
{
    static_cast<StatusNotifierItem*>(self)->m_ownsName = false;
}

void StatusNotifierItem::watcherAppeared(
    GDBusConnection* /*connection*/, const gchar* /*name*/, const gchar* /*owner*/, gpointer self) noexcept
{
    auto* item = static_cast<StatusNotifierItem*>(self);
    item->m_watcherPresent = true;
    item->registerWithWatcher();
}

void StatusNotifierItem::watcherVanished(GDBusConnection* /*connection*/, const gchar* /*name*/, gpointer self) noexcept
{
    static_cast<StatusNotifierItem*>(self)->m_watcherPresent = false;
}

} // namespace velmora
