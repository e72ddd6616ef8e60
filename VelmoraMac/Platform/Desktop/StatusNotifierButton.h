#pragma once

#include <cstdint>
#include <string>

#include "VelmoraMac/Platform/StatusBar.h"

namespace velmora {

class StatusNotifierItem;

// The button of a StatusNotifierItem: what it is told goes to its item,
// which shows it to the tray host.
// Main thread only.
class StatusNotifierButton final : public StatusButton {
public:
    explicit StatusNotifierButton(StatusNotifierItem& item)
        : m_item(item)
    {
    }

    void setTemplateImage(std::string png, Size size) override;
    void setToolTip(std::string toolTip) override;
    void setAccessibilityLabel(std::string label) override;
    void setAction(Action action) override;
    void sendActionOn(std::uint64_t eventMask) override;
    // Without a menu attached, a left click. With one, it publishes the
    // menu to the tray host and pops it up itself when GTK has a display
    // (see StatusNotifierItem).
    void performClick() override;

private:
    StatusNotifierItem& m_item;
};

} // namespace velmora
