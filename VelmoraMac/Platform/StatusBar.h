#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "EventMonitors.h"
#include "VelmoraCore/Size.h"

namespace velmora {

// One entry of a Menu: a titled item with its action and key equivalent, or
// a separator line.
struct MenuItem {
    using Action = std::function<void()>;

    std::string title;
    // The key that chooses the item while the menu is open (",", "q");
    // empty for none.
    std::string keyEquivalent;
    Action action;
    bool separator = false;

    static MenuItem item(std::string title, std::string keyEquivalent, Action action)
    {
        return MenuItem{std::move(title), std::move(keyEquivalent), std::move(action), false};
    }
    static MenuItem separatorItem() { return MenuItem{{}, {}, {}, true}; }
};

// A pop-up menu, built anew each time it is shown. A plain value.
struct Menu {
    std::vector<MenuItem> items;
};

// The clickable part of a status item in the menu bar.
// Main thread only.
class StatusButton {
public:
    // Receives the type of the click that triggered it (left or right
    // mouse up), since the two mean different things.
    using Action = std::function<void(InputEventType trigger)>;

    StatusButton() = default;
    StatusButton(const StatusButton&) = delete;
    StatusButton& operator=(const StatusButton&) = delete;
    StatusButton(StatusButton&&) = delete;
    StatusButton& operator=(StatusButton&&) = delete;
    virtual ~StatusButton() = default;

    // A template image: only its shape counts, the menu bar tints it for
    // light and dark bars. `png` holds the bytes of a PNG file; bytes that
    // are no image (empty ones included) show an empty image of `size`.
    virtual void setTemplateImage(std::string png, Size size) = 0;
    virtual void setToolTip(std::string toolTip) = 0;
    virtual void setAccessibilityLabel(std::string label) = 0;
    virtual void setAction(Action action) = 0;
    // The clicks that send the action, as an event mask (eventMaskBit).
    virtual void sendActionOn(std::uint64_t eventMask) = 0;
    // Clicks the button as the user would: with a menu attached to the
    // item, pops the menu up and returns when it has been dismissed.
    virtual void performClick() = 0;
};

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

// The system's menu bar, where the application's status item lives.
// Main thread only.
class StatusBar {
public:
    StatusBar() = default;
    StatusBar(const StatusBar&) = delete;
    StatusBar& operator=(const StatusBar&) = delete;
    StatusBar(StatusBar&&) = delete;
    StatusBar& operator=(StatusBar&&) = delete;
    virtual ~StatusBar() = default;

    // A new item `length` points wide; it stays in the bar while the
    // returned item lives.
    virtual std::shared_ptr<StatusItem> statusItem(double length) = 0;
};

} // namespace velmora
