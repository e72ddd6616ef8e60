#pragma once

#include <memory>
#include <optional>
#include <vector>

#include <gtk/gtk.h>

#include "DesktopWindow.h"
#include "VelmoraMac/Platform/GLibSignal.h"
#include "VelmoraMac/Platform/WindowSystem.h"

namespace velmora {

class DesktopEventMonitors;
class SystemNotificationHub;

// The windows of a GTK process and the monitors of its display.
//
// The renderer's window is the first GTK toplevel (in the order they were
// made) that is a normal window, not one of our panels, and has a child
// widget; it is looked for whenever windows() is asked until there is one,
// and dropped from windows() once GTK destroys it (a later one may then be
// adopted). Our panels stay for the life of this object. windows() lists
// them front to back as far as GTK lets us tell: by the last time each was
// brought to the front or took the keyboard, the renderer's window first
// among equals.
//
// Screens are GDK's monitors, the primary one first, with their work areas
// as visible frames; a change of monitors or of the desktop's size posts
// applicationDidChangeScreenParameters. The main screen is the one holding
// the middle of the key window, else the primary.
//
// Panels get an RGBA visual when the screen is composited, so that their
// clear background shows what lies beneath; without a compositor (a bare X
// server) they are opaque.
// What panels show and what is drawn over the renderer's window is drawn by
// the widgets of the shell's view factory.
// Main thread only (GTK's), and only once GTK is initialised.
class DesktopWindowSystem final : public WindowSystem {
public:
    DesktopWindowSystem(std::shared_ptr<SystemNotificationHub> notifications, DesktopEventMonitors& monitors,
        NotNullShared<GtkViewFactory> views);
    DesktopWindowSystem(const DesktopWindowSystem&) = delete;
    DesktopWindowSystem& operator=(const DesktopWindowSystem&) = delete;
    DesktopWindowSystem(DesktopWindowSystem&&) = delete;
    DesktopWindowSystem& operator=(DesktopWindowSystem&&) = delete;
    ~DesktopWindowSystem() override;

    [[nodiscard]] std::vector<std::shared_ptr<Window>> windows() const override;
    [[nodiscard]] std::vector<Screen> screens() const override;
    [[nodiscard]] std::optional<Screen> mainScreen() const override;
    std::shared_ptr<Window> createPanel(const Rect& frame, const WindowAttributes& attributes) override;

    // Which of our windows a toplevel GDK window belongs to: what the event
    // monitors name in their records (set as their lookup while this
    // lives). None for a window that is not ours.
    [[nodiscard]] Window* windowFor(GdkWindow* toplevel) const;

private:
    static void screenChanged(GdkScreen* screen, gpointer self);

    // Adopts the renderer's window if there is none yet (or it is gone).
    void adoptRendererWindow() const;
    [[nodiscard]] bool isPanel(GtkWindow* window) const;
    [[nodiscard]] std::vector<std::shared_ptr<DesktopWindow>> liveWindows() const;

    std::shared_ptr<SystemNotificationHub> m_notifications;
    DesktopEventMonitors& m_monitors;
    NotNullShared<GtkViewFactory> m_views;
    // Adopted on demand, from the const windows().
    mutable std::shared_ptr<DesktopWindow> m_adopted;
    std::vector<std::shared_ptr<DesktopWindow>> m_panels;
    // Last: disconnected first.
    std::vector<std::unique_ptr<GLibSignal>> m_signals;
};

} // namespace velmora
