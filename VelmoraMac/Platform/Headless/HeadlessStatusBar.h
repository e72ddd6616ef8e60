#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "VelmoraMac/Platform/StatusBar.h"

namespace velmora {

class HeadlessStatusItem;

// The button of a HeadlessStatusItem; it records what the shell set.
// Main thread only.
class HeadlessStatusButton final : public StatusButton {
public:
    explicit HeadlessStatusButton(HeadlessStatusItem& item)
        : m_item(item)
    {
    }

    void setTemplateImage(std::string png, Size size) override;
    void setToolTip(std::string toolTip) override { m_toolTip = std::move(toolTip); }
    void setAccessibilityLabel(std::string label) override { m_accessibilityLabel = std::move(label); }
    void setAction(Action action) override { m_action = std::move(action); }
    void sendActionOn(std::uint64_t eventMask) override { m_actionMask = eventMask; }
    // As a left click.
    void performClick() override;

    // The bytes set, empty for an empty image.
    [[nodiscard]] const std::string& imagePNG() const { return m_imagePNG; }
    [[nodiscard]] Size imageSize() const { return m_imageSize; }
    // Whether a template image has been set at all.
    [[nodiscard]] bool hasImage() const { return m_hasImage; }
    [[nodiscard]] const std::string& toolTip() const { return m_toolTip; }
    [[nodiscard]] const std::string& accessibilityLabel() const { return m_accessibilityLabel; }
    [[nodiscard]] std::uint64_t actionMask() const { return m_actionMask; }
    [[nodiscard]] bool hasAction() const { return static_cast<bool>(m_action); }

private:
    friend class HeadlessStatusItem;

    HeadlessStatusItem& m_item;
    std::string m_imagePNG;
    Size m_imageSize;
    bool m_hasImage = false;
    std::string m_toolTip;
    std::string m_accessibilityLabel;
    Action m_action;
    // The window system's default: left mouse up only.
    std::uint64_t m_actionMask = eventMaskBit(InputEventType::leftMouseUp);
};

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
