#pragma once

#include <memory>

#include <gtk/gtk.h>

#include "VelmoraMac/Platform/GtkViewFactory.h"

namespace velmora {

class PanelContent;

// The settings panel's pages as GTK widgets: builds the page the content's
// view shows, styled from the panel's palette, rebuilds it whenever the view
// changes, and sends the user's clicks, switches and choices to the actions
// the view hands out. The widget fills the panel window's content area.
//
// The view announces a change before making it, so a rebuild waits for an
// idle turn of the default main context (GTK's loop), and any number of
// announcements before it make one rebuild. The page scrolls where it is
// taller than the window; it keeps its scroll position and the focused
// control across a rebuild of the same page, and starts at the top on
// another page.
//
// The style sheet is installed for the default screen while the widget
// lives, scoped to this widget alone. This object takes the view's display
// callback while it lives and clears it when it goes; it destroys its
// widgets then, which also ends every connection to the view's actions.
// Main thread only; needs GTK initialised with a display.
class PanelWidget final : public GtkViewFactory::View {
public:
    // The panel window's default size, in pixels at scale 1.
    static constexpr int defaultWidth = 780;
    static constexpr int defaultHeight = 640;

    // Builds the current page at once.
    explicit PanelWidget(std::shared_ptr<PanelContent> content);
    PanelWidget(const PanelWidget&) = delete;
    PanelWidget& operator=(const PanelWidget&) = delete;
    PanelWidget(PanelWidget&&) = delete;
    PanelWidget& operator=(PanelWidget&&) = delete;
    ~PanelWidget() override;

    // The top widget; this object holds a reference to it while it lives.
    [[nodiscard]] GtkWidget* widget() const override;

    // Gives the keyboard to the page's primary control, as a page just
    // shown does itself; for a panel moved into another window.
    void focusPrimary() override;

    // Rebuilds now if a change is waiting for its idle turn; for callers
    // that must draw at once, such as before taking a picture of the panel.
    void flush();

private:
    struct State;
    std::unique_ptr<State> m_state;
};

} // namespace velmora
