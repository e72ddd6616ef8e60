#include "StatusNotifierButton.h"

#include <utility>

#include "StatusNotifierItem.h"

namespace velmora {

void StatusNotifierButton::setTemplateImage(std::string png, Size size)
{
    m_item.setIcon(png, size);
}

void StatusNotifierButton::setToolTip(std::string toolTip)
{
    m_item.setToolTip(std::move(toolTip));
}

void StatusNotifierButton::setAccessibilityLabel(std::string label)
{
    m_item.setAccessibilityLabel(std::move(label));
}

void StatusNotifierButton::setAction(Action action)
{
    m_item.setAction(std::move(action));
}

void StatusNotifierButton::sendActionOn(std::uint64_t eventMask)
{
    m_item.setActionMask(eventMask);
}

void StatusNotifierButton::performClick()
{
    m_item.performClick();
}

} // namespace velmora
