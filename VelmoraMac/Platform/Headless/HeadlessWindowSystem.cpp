#include "HeadlessWindowSystem.h"

#include <algorithm>
#include <utility>

#include "VelmoraMac/Platform/SystemNotificationHub.h"

namespace velmora {

HeadlessWindowSystem::HeadlessWindowSystem(
    std::shared_ptr<MainThread> mainThread, std::shared_ptr<SystemNotificationHub> notifications)
    : m_mainThread(std::move(mainThread))
    , m_notifications(std::move(notifications))
{
}

std::vector<std::shared_ptr<Window>> HeadlessWindowSystem::windows() const
{
    return {m_windows.begin(), m_windows.end()};
}

std::optional<Screen> HeadlessWindowSystem::mainScreen() const
{
    if (!m_mainIndex || *m_mainIndex >= m_screens.size())
        return std::nullopt;
    return m_screens[*m_mainIndex];
}

std::shared_ptr<Window> HeadlessWindowSystem::createPanel(const Rect& frame, const WindowAttributes& attributes)
{
    auto panel = add(HeadlessWindow::Kind::panel, frame,
        std::make_unique<HeadlessContentView>(
            Rect(0, 0, frame.width(), frame.height()), HeadlessContentView::Orientation::standard));
    panel->setAttributes(attributes);
    return panel;
}

std::shared_ptr<HeadlessWindow> HeadlessWindowSystem::addWindow(
    Rect frame, HeadlessContentView::Orientation orientation)
{
    return add(HeadlessWindow::Kind::window, frame,
        std::make_unique<HeadlessContentView>(Rect(0, 0, frame.width(), frame.height()), orientation));
}

std::shared_ptr<HeadlessWindow> HeadlessWindowSystem::addWindowWithoutContent(Rect frame)
{
    return add(HeadlessWindow::Kind::window, frame, nullptr);
}

std::shared_ptr<HeadlessWindow> HeadlessWindowSystem::add(
    HeadlessWindow::Kind kind, Rect frame, std::unique_ptr<HeadlessContentView> contentView)
{
    auto window = std::make_shared<HeadlessWindow>(weak_from_this(), kind, frame, std::move(contentView));
    m_windows.push_back(window);
    return window;
}

void HeadlessWindowSystem::setScreens(std::vector<Screen> screens, std::optional<std::size_t> mainIndex)
{
    m_screens = std::move(screens);
    m_mainIndex = mainIndex;
    m_notifications->post(SystemNotification::applicationDidChangeScreenParameters);
}

void HeadlessWindowSystem::resignKeyWindow()
{
    if (m_keyWindow != nullptr)
        resignKey(m_keyWindow);
}

std::vector<std::shared_ptr<HeadlessWindow>> HeadlessWindowSystem::panels() const
{
    std::vector<std::shared_ptr<HeadlessWindow>> panels;
    std::ranges::copy_if(m_windows, std::back_inserter(panels), [](const auto& window) { return window->isPanel(); });
    return panels;
}

void HeadlessWindowSystem::makeKey(HeadlessWindow* window)
{
    if (m_keyWindow == window)
        return;
    if (m_keyWindow != nullptr)
        resignKey(m_keyWindow);
    m_keyWindow = window;
}

void HeadlessWindowSystem::resignKey(HeadlessWindow* window)
{
    if (m_keyWindow != window || window == nullptr)
        return;
    m_keyWindow = nullptr;
    m_notifications->post(SystemNotification::windowDidResignKey, window);
}

void HeadlessWindowSystem::bringToFront(HeadlessWindow* window)
{
    const auto found = std::ranges::find_if(m_windows, [window](const auto& entry) { return entry.get() == window; });
    if (found != m_windows.end())
        std::rotate(m_windows.begin(), found, found + 1);
}

} // namespace velmora
