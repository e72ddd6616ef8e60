#pragma once

#include <memory>

#include <gio/gio.h>

#include "VelmoraMac/Platform/GLibPointer.h"
#include "VelmoraMac/Platform/NotNullShared.h"
#include "VelmoraMac/Platform/StatusBar.h"

namespace velmora {

// The desktop's tray: each item is a StatusNotifierItem of its own (see
// StatusNotifierItem), shown by whichever tray host the session runs, or
// by the next one to start.
// Main thread only (GTK's).
class DesktopStatusBar final : public StatusBar {
public:
    // Items go on `bus`, which must be the process's session-bus connection
    // (GIO's shared one, as g_bus_get gives it): the menu library serves
    // there and nowhere else, and a host asks for the menu where the item
    // is. Null for none: items keep working buttons that nobody sees.
    explicit DesktopStatusBar(GDBusConnection* bus);

    // On the session bus; on none when the session has no bus.
    static NotNullShared<DesktopStatusBar> onSessionBus();

    std::shared_ptr<StatusItem> statusItem(double length) override;

private:
    using Connection = GLibPointer<GDBusConnection, g_object_ref, g_object_unref>;

    Connection m_bus;
};

} // namespace velmora
