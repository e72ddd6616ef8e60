#pragma once

#include "VelmoraMac/Platform/GtkViewFactory.h"

namespace velmora {

// How the shell looks on the desktop: the settings panel's pages
// (PanelContent) as a PanelWidget, and the pond's chrome (PondChromeView) as
// a ChromeOverlayWidget. Handed to the desktop platform at its start.
// Main thread only (GTK's).
class GtkShellViews final : public GtkViewFactory {
public:
    [[nodiscard]] std::unique_ptr<View> contentView(const std::shared_ptr<WindowContent>& content) override;
    [[nodiscard]] std::unique_ptr<View> overlayView(const std::shared_ptr<OverlayView>& overlay) override;
};

} // namespace velmora
