#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "HeadlessStatusButton.h"
#include "VelmoraMac/Platform/StatusBar.h"

namespace velmora {

// A status item in memory. click() plays the user: with a menu attached it
// pops the menu up, otherwise the button sends its action for the clicks
// it was told to. A popped-up menu is recorded, and a test may choose one
// of its items while it is open (setMenuChoice()), as the user would before
// the pop-up returns.
// Main thread only.
class HeadlessStatusItem final : public StatusItem {
public:
    // Given the menu while it is open.
    using MenuTracker = std::function<void(const Menu& menu)>;

    enum class Button : std::uint8_t {
        present,
        absent,
    };

    HeadlessStatusItem(double length, Button button);

    [[nodiscard]] double length() const override { return m_length; }
    [[nodiscard]] StatusButton* button() override { return m_button.get(); }
    void setMenu(std::optional<Menu> menu) override { m_menu = std::move(menu); }

    // The user releases `click` (leftMouseUp or rightMouseUp) on the item.
    void click(InputEventType click);

    // Called while each later menu is open; an empty tracker dismisses it.
    void setMenuTracker(MenuTracker tracker) { m_menuTracker = std::move(tracker); }

    [[nodiscard]] HeadlessStatusButton* headlessButton() const { return m_button.get(); }
    [[nodiscard]] const std::optional<Menu>& menu() const { return m_menu; }
    // Every menu that popped up, in order.
    [[nodiscard]] const std::vector<Menu>& poppedMenus() const { return m_poppedMenus; }

private:
    friend class HeadlessStatusButton;

    void popUpMenu();

    double m_length;
    std::unique_ptr<HeadlessStatusButton> m_button;
    std::optional<Menu> m_menu;
    MenuTracker m_menuTracker;
    std::vector<Menu> m_poppedMenus;
};

} // namespace velmora
