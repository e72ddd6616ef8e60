#pragma once

#include <memory>

#include <gtk/gtk.h>

namespace velmora {

class PanelContent;

// The settings panel's pages as GTK widgets: builds the page the content's
// view shows, styled from the panel's palette, rebuilds it whenever the view
// changes, and sends the user's clicks, switches and choices to the actions
// the view hands out. The widget fills the panel window's content area.
// Main thread only.
class PanelWidget {
public:
    explicit PanelWidget(std::shared_ptr<PanelContent> content);
    PanelWidget(const PanelWidget&) = delete;
    PanelWidget& operator=(const PanelWidget&) = delete;
    PanelWidget(PanelWidget&&) = delete;
    PanelWidget& operator=(PanelWidget&&) = delete;
    ~PanelWidget();

    // The top widget; this object holds a reference to it while it lives.
    [[nodiscard]] GtkWidget* widget() const;

private:
    struct State;
    std::unique_ptr<State> m_state;
};

} // namespace velmora
