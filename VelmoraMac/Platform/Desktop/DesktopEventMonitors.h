#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include <gdk/gdk.h>

#include "VelmoraMac/Platform/EventMonitorChain.h"
#include "VelmoraMac/Platform/EventMonitors.h"

namespace velmora {

class Window;

// The local event monitors of a GTK process: GDK's event handler
// (gdk_event_handler_set) sees every event of the process's windows before
// GTK dispatches it. Raw filters see the GdkEvent first (the window system's
// own clicks, focus tracking); then the event is translated once into our
// InputEvent record and shown to the monitors. An event a filter or a
// monitor consumes is not passed to gtk_main_do_event.
//
// Positions in the records are in the coordinates of the event's toplevel
// GdkWindow, origin at its lower left, y up; with client-side decorations
// that window includes them. The record's window is what the window lookup
// names for that toplevel (none until one is set).
//
// Nothing is allocated per event: the translation lives on the stack and
// neither the filters nor the chain copy anything. A filter or monitor that
// throws is reported with g_warning and the event goes on to GTK, since an
// exception must not unwind through GDK.
// Main thread only (GTK's); one instance per process, since GDK has one
// handler: it restores GTK's when it goes, and a second live instance is
// refused with std::logic_error.
class DesktopEventMonitors final : public EventMonitors {
public:
    // True consumes the event.
    using EventFilter = std::function<bool(GdkEvent* event)>;
    // The window of ours that a toplevel GdkWindow belongs to; null for
    // none.
    using WindowLookup = std::function<Window*(GdkWindow* toplevel)>;

    DesktopEventMonitors();
    DesktopEventMonitors(const DesktopEventMonitors&) = delete;
    DesktopEventMonitors& operator=(const DesktopEventMonitors&) = delete;
    DesktopEventMonitors(DesktopEventMonitors&&) = delete;
    DesktopEventMonitors& operator=(DesktopEventMonitors&&) = delete;
    ~DesktopEventMonitors() override;

    std::unique_ptr<PlatformToken> addLocalMonitor(std::uint64_t eventMask, Handler handler) override;
    // Runs `filter` on every GDK event, in the order filters were added,
    // before the monitors; removed when the token goes. A filter added while
    // an event is being filtered sees the next one.
    std::unique_ptr<PlatformToken> addEventFilter(EventFilter filter);

    // How the records name their window: the window system sets this once
    // it knows its windows. Replaces the lookup before; an empty one names
    // no window.
    void setWindowLookup(WindowLookup lookup);

    // What GDK's handler does with one event; public so that tests can feed
    // synthetic events. True when the event was consumed. Does not pass the
    // event on to GTK itself.
    bool handle(GdkEvent* event);

private:
    struct State;
    static void dispatchEvent(GdkEvent* event, gpointer self);

    std::unique_ptr<State> m_state;
};

} // namespace velmora
