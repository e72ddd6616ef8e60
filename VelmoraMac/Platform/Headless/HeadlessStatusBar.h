#pragma once

#include <memory>
#include <vector>

#include "HeadlessStatusItem.h"
#include "VelmoraMac/Platform/StatusBar.h"

namespace velmora {

// A menu bar in memory, keeping every item made, with or without a button
// (a desktop without a tray host offers none).
// Main thread only.
class HeadlessStatusBar final : public StatusBar {
public:
    std::shared_ptr<StatusItem> statusItem(double length) override;

    // Items made from now on have no button.
    void withholdButtons() { m_buttons = HeadlessStatusItem::Button::absent; }

    // Every item made, in order.
    [[nodiscard]] const std::vector<std::shared_ptr<HeadlessStatusItem>>& items() const { return m_items; }

private:
    HeadlessStatusItem::Button m_buttons = HeadlessStatusItem::Button::present;
    std::vector<std::shared_ptr<HeadlessStatusItem>> m_items;
};

} // namespace velmora
