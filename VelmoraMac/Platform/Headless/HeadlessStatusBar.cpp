#include "HeadlessStatusBar.h"

namespace velmora {

void HeadlessStatusButton::setTemplateImage(std::string png, Size size)
{
    m_imagePNG = std::move(png);
    m_imageSize = size;
    m_hasImage = true;
}

void HeadlessStatusButton::performClick()
{
    m_item.click(InputEventType::leftMouseUp);
}

HeadlessStatusItem::HeadlessStatusItem(double length, Button button)
    : m_length(length)
    , m_button(button == Button::present ? std::make_unique<HeadlessStatusButton>(*this) : nullptr)
{
}

void HeadlessStatusItem::click(InputEventType click)
{
    if (m_menu) {
        popUpMenu();
        return;
    }
    if (!m_button || (m_button->m_actionMask & eventMaskBit(click)) == 0 || !m_button->m_action)
        return;
    // A copy: the action may replace itself.
    const StatusButton::Action action = m_button->m_action;
    action(click);
}

void HeadlessStatusItem::popUpMenu()
{
    // Copies: choosing an item may change the menu, the tracker or the
    // record.
    const Menu shown = *m_menu;
    m_poppedMenus.push_back(shown);
    if (m_menuTracker) {
        const MenuTracker tracker = m_menuTracker;
        tracker(shown);
    }
}

std::shared_ptr<StatusItem> HeadlessStatusBar::statusItem(double length)
{
    auto item = std::make_shared<HeadlessStatusItem>(length, m_buttons);
    m_items.push_back(item);
    return item;
}

} // namespace velmora
