#pragma once

#include <functional>
#include <memory>
#include <vector>

#include <libdbusmenu-glib/server.h>

#include "VelmoraMac/Platform/GLibPointer.h"
#include "VelmoraMac/Platform/StatusBar.h"

namespace velmora {

// The status item's menu as tray hosts read it over D-Bus
// (com.canonical.dbusmenu), served by libdbusmenu-glib at `objectPath` on
// the process's session-bus connection: the library always serves there.
//
// Hosts fetch the layout when they show the menu, so publishing only
// changes what the next showing offers. Publishing the same titles and
// separators again keeps the entries (and the ids a host may hold) and
// only swaps their actions.
//
// Guarantees: a host's Event(id, "clicked") hands the entry's action to
// `chosen`, and the root's about-to-show calls `aboutToShow` before the
// host reads the layout, so that it may publish afresh. Neither is called
// once the publisher has gone. `chosen` is called from inside
// libdbusmenu's dispatch: it should put the action off rather than run it.
// Main thread only: the thread iterating the default context.
class DbusMenuPublisher {
public:
    using AboutToShow = std::function<void()>;
    using Chosen = std::function<void(MenuItem::Action action)>;

    DbusMenuPublisher(const char* objectPath, AboutToShow aboutToShow, Chosen chosen);
    DbusMenuPublisher(const DbusMenuPublisher&) = delete;
    DbusMenuPublisher& operator=(const DbusMenuPublisher&) = delete;
    DbusMenuPublisher(DbusMenuPublisher&&) = delete;
    DbusMenuPublisher& operator=(DbusMenuPublisher&&) = delete;
    // Stops serving the menu.
    ~DbusMenuPublisher();

    // The menu's entries from now on, in order; key equivalents are not
    // shown, as nothing would answer them while the host's menu is open.
    void publish(const std::vector<MenuItem>& entries);

private:
    class Entry;
    using Server = GLibPointer<DbusmenuServer, g_object_ref, g_object_unref>;
    using Item = GLibPointer<DbusmenuMenuitem, g_object_ref, g_object_unref>;

    static gboolean rootAboutToShow(DbusmenuMenuitem* root, gpointer self);
    static void entryActivated(DbusmenuMenuitem* item, guint timestamp, gpointer self);
    [[nodiscard]] bool sameShape(const std::vector<MenuItem>& entries) const;

    AboutToShow m_aboutToShow;
    Chosen m_chosen;
    Item m_root;
    gulong m_aboutToShowHandler = 0;
    std::vector<std::unique_ptr<Entry>> m_entries;
    // Last: the server goes first, so no host reaches a half-gone menu.
    Server m_server;
};

} // namespace velmora
