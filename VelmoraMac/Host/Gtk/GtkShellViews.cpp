#include "GtkShellViews.h"

#include "ChromeOverlayWidget.h"
#include "VelmoraMac/Host/PondChromeView.h"
#include "VelmoraMac/Panel/Gtk/PanelWidget.h"
#include "VelmoraMac/Panel/PanelContent.h"

namespace velmora {

std::unique_ptr<GtkViewFactory::View> GtkShellViews::contentView(const std::shared_ptr<WindowContent>& content)
{
    if (auto panel = std::dynamic_pointer_cast<PanelContent>(content))
        return std::make_unique<PanelWidget>(std::move(panel));
    return nullptr;
}

std::unique_ptr<GtkViewFactory::View> GtkShellViews::overlayView(const std::shared_ptr<OverlayView>& overlay)
{
    if (auto chrome = std::dynamic_pointer_cast<PondChromeView>(overlay))
        return std::make_unique<ChromeOverlayWidget>(std::move(chrome));
    return nullptr;
}

} // namespace velmora
