#include "DesktopStatusBar.h"

#include "StatusNotifierItem.h"

namespace velmora {

DesktopStatusBar::DesktopStatusBar(GDBusConnection* bus)
    : m_bus(Connection::share(bus))
{
}

NotNullShared<DesktopStatusBar> DesktopStatusBar::onSessionBus()
{
    GError* error = nullptr;
    const Connection bus = Connection::adopt(g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, &error));
    // No session bus: no tray host could be reached either, and the items'
    // buttons still work for the shell.
    if (error != nullptr)
        g_error_free(error);
    return NotNullShared<DesktopStatusBar>::make(bus.get());
}

std::shared_ptr<StatusItem> DesktopStatusBar::statusItem(double length)
{
    return std::make_shared<StatusNotifierItem>(m_bus.get(), length);
}

} // namespace velmora
