#pragma once

#include <functional>
#include <string>

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

} // namespace velmora
