#pragma once

#include <functional>

namespace velmora {

// What a control of the panel does when used. An action stays safe to call
// after the view that made it is gone; it then does nothing.
using PanelAction = std::function<void()>;

} // namespace velmora
