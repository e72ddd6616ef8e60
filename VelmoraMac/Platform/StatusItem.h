#pragma once

#include <optional>

#include "Menu.h"
#include "StatusButton.h"

namespace velmora {

// An item in the menu bar. While a menu is attached, a click on the button
// opens the menu instead of sending the button's action.
// Main thread only.
class StatusItem {
public:
    StatusItem() = default;
    StatusItem(const StatusItem&) = delete;
    StatusItem& operator=(const StatusItem&) = delete;
    StatusItem(StatusItem&&) = delete;
    StatusItem& operator=(StatusItem&&) = delete;
    virtual ~StatusItem() = default;

    [[nodiscard]] virtual double length() const = 0;
    // None when the menu bar offers no button (no tray host is running).
    [[nodiscard]] virtual StatusButton* button() = 0;
    // None detaches the menu.
    virtual void setMenu(std::optional<Menu> menu) = 0;
};

} // namespace velmora
