#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <gio/gio.h>

#include "DbusMenuPublisher.h"
#include "StatusNotifierButton.h"
#include "StatusNotifierIdleQueue.h"
#include "VelmoraMac/Platform/GLibPointer.h"
#include "VelmoraMac/Platform/StatusBar.h"

namespace velmora {

// The status item as a StatusNotifierItem: the object /StatusNotifierItem
// under a name of its own, org.kde.StatusNotifierItem-<pid>-<n>, made known
// to the tray host through org.kde.StatusNotifierWatcher, with its menu
// served at /MenuBar.
//
// Guarantees:
// - The button exists from the start. The item registers with the watcher
//   whenever one appears (again), and stays exported while none runs, so
//   a tray host started later still finds it.
// - Activate is a left click and ContextMenu a right click: each sends the
//   button's action with leftMouseUp or rightMouseUp when the action mask
//   holds it, after the host's call has been answered. SecondaryActivate
//   and Scroll do nothing.
// - Some hosts (GNOME's) open the menu on every click and never call
//   Activate or ContextMenu, so everything must be in reach from the menu:
//   its first entry, titled with the tool tip, is a left click; then a
//   separator and the entries of the last menu the shell attached. When a
//   host is about to show the menu, the item asks the shell for a fresh one
//   by sending its action as a right click: the shell attaches its menu and
//   performs a click, which then only publishes the entries, since the host
//   is showing the menu itself. It also asks once up front, when the shell
//   first sets the button's action, for hosts that show the menu they hold
//   before refreshing it. A chosen entry's action runs from the main loop,
//   after the host's call returned.
// - performClick with a menu attached otherwise (the shell answering a
//   right click) publishes the entries and, when GTK has an X11 display,
//   pops the menu up at the pointer and returns once it is dismissed; the
//   chosen entry's action runs afterwards, from the main loop.
// - Dropping the item unexports it and gives its name back; nothing it
//   queued runs after that.
//
// The bus is the process's session-bus connection (the menu library always
// serves there, and a host asks for the menu where the item is); null for
// none, and then only the button's own clicks work. Only one item per
// connection is exported at a time: a second one made while the first
// lives keeps a working button but is not shown.
//
// Caveat: the item must outlive a performClick that pops the menu up, as
// the nested main loop runs inside it.
// Main thread only: the thread whose thread-default context was current
// when it was made, normally GTK's with the default context.
class StatusNotifierItem final : public StatusItem {
public:
    static constexpr const char* objectPath = "/StatusNotifierItem";
    static constexpr const char* interfaceName = "org.kde.StatusNotifierItem";
    static constexpr const char* menuPath = "/MenuBar";
    static constexpr const char* watcherName = "org.kde.StatusNotifierWatcher";
    static constexpr const char* watcherPath = "/StatusNotifierWatcher";
    static constexpr const char* id = "app.velmora.mac";
    // The installed application's icon in the icon theme, which hosts that
    // find it draw at any scale; the others draw the pixmaps.
    static constexpr const char* iconName = "app.velmora.mac";

    StatusNotifierItem(GDBusConnection* bus, double length);
    StatusNotifierItem(const StatusNotifierItem&) = delete;
    StatusNotifierItem& operator=(const StatusNotifierItem&) = delete;
    StatusNotifierItem(StatusNotifierItem&&) = delete;
    StatusNotifierItem& operator=(StatusNotifierItem&&) = delete;
    ~StatusNotifierItem() override;

    [[nodiscard]] double length() const override { return m_length; }
    [[nodiscard]] StatusButton* button() override { return &m_button; }
    void setMenu(std::optional<Menu> menu) override { m_menu = std::move(menu); }

    // The well-known name the item holds, or asks for, on its bus.
    [[nodiscard]] const std::string& busName() const { return m_busName; }

private:
    friend class StatusNotifierButton;
    using Connection = GLibPointer<GDBusConnection, g_object_ref, g_object_unref>;
    using Variant = GLibPointer<GVariant, g_variant_ref, g_variant_unref>;

    // What the item's own notes say about the click being handled.
    enum class MenuShowing : std::uint8_t {
        byUs,
        byHost,
    };

    void setIcon(std::string_view png, Size size);
    void setToolTip(std::string toolTip);
    void setAccessibilityLabel(std::string label);
    void setAction(StatusButton::Action action);
    void setActionMask(std::uint64_t mask);
    void performClick();

    void sendAction(InputEventType trigger);
    void refreshMenuForHost();
    void publishMenu();
    void emitSignal(const char* name, GVariant* parameters);
    void registerWithWatcher();

    [[nodiscard]] std::string title() const;
    [[nodiscard]] GVariant* property(std::string_view name) const;
    static void methodCalled(GDBusConnection* connection, const gchar* sender, const gchar* path,
        const gchar* interface, const gchar* method, GVariant* parameters, GDBusMethodInvocation* invocation,
        gpointer self) noexcept;
    static GVariant* propertyRead(GDBusConnection* connection, const gchar* sender, const gchar* path,
        const gchar* interface, const gchar* name, GError** error, gpointer self) noexcept;
    static void nameAcquired(GDBusConnection* connection, const gchar* name, gpointer self) noexcept;
    static void nameLost(GDBusConnection* connection, const gchar* name, gpointer self) noexcept;
    static void watcherAppeared(
        GDBusConnection* connection, const gchar* name, const gchar* owner, gpointer self) noexcept;
    static void watcherVanished(GDBusConnection* connection, const gchar* name, gpointer self) noexcept;

    double m_length;
    StatusNotifierButton m_button{*this};
    Connection m_bus;
    std::string m_busName;
    std::string m_toolTip;
    std::string m_accessibilityLabel;
    Variant m_icon;
    StatusButton::Action m_action;
    // The window system's default: left mouse up only.
    std::uint64_t m_actionMask = eventMaskBit(InputEventType::leftMouseUp);
    std::optional<Menu> m_menu;
    // The entries of the last menu the shell attached, which the served
    // menu keeps offering after the shell detached it.
    std::vector<MenuItem> m_hostEntries;
    MenuShowing m_menuShowing = MenuShowing::byUs;
    bool m_poppedUp = false;
    bool m_ownsName = false;
    bool m_watcherPresent = false;
    guint m_registration = 0;
    guint m_nameOwnership = 0;
    guint m_watcherWatch = 0;
    StatusNotifierIdleQueue m_queue;
    std::unique_ptr<DbusMenuPublisher> m_publisher;
};

} // namespace velmora
