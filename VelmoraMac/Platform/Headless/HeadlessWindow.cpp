#include "HeadlessWindow.h"

#include <algorithm>
#include <utility>

#include "HeadlessWindowSystem.h"
#include "VelmoraMac/Platform/MainThread.h"
#include "VelmoraMac/Platform/SystemNotificationHub.h"

namespace velmora {

HeadlessWindow::HeadlessWindow(
    std::weak_ptr<HeadlessWindowSystem> system, Kind kind, Rect frame, std::unique_ptr<HeadlessContentView> contentView)
    : m_system(std::move(system))
    , m_kind(kind)
    , m_frame(frame)
    , m_contentView(std::move(contentView))
    , m_windowedFrame(frame)
{
}

void HeadlessWindow::setContent(std::shared_ptr<WindowContent> content)
{
    m_content = std::move(content);
    appearedIfShown(false);
}

void HeadlessWindow::setAttributes(const WindowAttributes& attributes)
{
    m_attributes = attributes;
    m_attributes.styleMask &= ~WindowAttributes::fullScreen;
}

std::uint64_t HeadlessWindow::styleMask() const
{
    return m_fullScreen ? (m_attributes.styleMask | WindowAttributes::fullScreen) : m_attributes.styleMask;
}

void HeadlessWindow::setButtonAction(WindowButton button, Action action)
{
    if (action)
        m_buttonActions[button] = std::move(action);
    else
        m_buttonActions.erase(button);
}

bool HeadlessWindow::hasButtonAction(WindowButton button) const
{
    return m_buttonActions.contains(button);
}

void HeadlessWindow::setFrame(const Rect& frame, FrameDisplay display)
{
    const Rect old = m_frame;
    m_frame = frame;
    m_lastFrameDisplay = display;
    if (frame.origin != old.origin)
        moveChildren({frame.minX() - old.minX(), frame.minY() - old.minY()});
    if (frame.size != old.size) {
        if (m_contentView) {
            Rect bounds = m_contentView->bounds();
            bounds.size = {std::max(0.0, bounds.width() + frame.width() - old.width()),
                std::max(0.0, bounds.height() + frame.height() - old.height())};
            m_contentView->setBounds(bounds);
        }
        post(SystemNotification::windowDidResize);
    }
}

bool HeadlessWindow::isKeyWindow() const
{
    const auto system = m_system.lock();
    return system && system->keyWindow() == this;
}

void HeadlessWindow::miniaturize()
{
    if (m_miniaturized)
        return;
    post(SystemNotification::windowWillMiniaturize);
    m_miniaturized = true;
    if (const auto system = m_system.lock())
        system->resignKey(this);
}

void HeadlessWindow::deminiaturize()
{
    if (!m_miniaturized)
        return;
    const bool wasVisible = isVisible();
    m_miniaturized = false;
    m_ordered = true;
    if (const auto system = m_system.lock())
        system->bringToFront(this);
    appearedIfShown(wasVisible);
    post(SystemNotification::windowDidDeminiaturize);
}

void HeadlessWindow::orderOut()
{
    m_ordered = false;
    if (const auto system = m_system.lock())
        system->resignKey(this);
    orderChildren(false);
}

void HeadlessWindow::orderFront()
{
    const bool wasVisible = isVisible();
    m_ordered = true;
    if (const auto system = m_system.lock())
        system->bringToFront(this);
    orderChildren(true);
    appearedIfShown(wasVisible);
}

void HeadlessWindow::makeKeyAndOrderFront()
{
    orderFront();
    // A miniaturized window stays in the Dock and cannot take the keyboard.
    if (m_miniaturized)
        return;
    if (const auto system = m_system.lock())
        system->makeKey(this);
}

void HeadlessWindow::toggleFullScreen()
{
    if (m_transition)
        return;
    const bool entering = !m_fullScreen;
    const auto system = m_system.lock();
    if (!system)
        return;
    m_transition = true;
    post(entering ? SystemNotification::windowWillEnterFullScreen : SystemNotification::windowWillExitFullScreen);
    try {
        system->m_mainThread->submitAsync([weak = weak_from_this(), entering] {
            if (const auto window = weak.lock())
                window->finishFullScreen(entering);
        });
    } catch (const MainThreadStopped&) {
        // A main loop that has stopped runs no animation either; the window
        // stays as it was and never reports the end.
    }
}

void HeadlessWindow::finishFullScreen(bool entering)
{
    m_transition = false;
    const auto system = m_system.lock();
    if (entering) {
        m_windowedFrame = m_frame;
        m_fullScreen = true;
        const std::optional<Screen> screen = system ? system->mainScreen() : std::nullopt;
        setFrame(screen ? screen->frame : m_frame, FrameDisplay::immediate);
        post(SystemNotification::windowDidEnterFullScreen);
    } else {
        m_fullScreen = false;
        setFrame(m_windowedFrame, FrameDisplay::immediate);
        post(SystemNotification::windowDidExitFullScreen);
    }
}

void HeadlessWindow::addChildWindow(Window& child, WindowOrdering ordering)
{
    auto* headless = dynamic_cast<HeadlessWindow*>(&child);
    if (headless == nullptr || headless == this)
        return;
    if (headless->m_parent != nullptr)
        headless->m_parent->removeChildWindow(*headless);
    headless->m_parent = this;
    m_children.emplace_back(headless, ordering);
    // A window system shows a child with its parent.
    if (m_ordered) {
        const bool wasVisible = headless->isVisible();
        headless->m_ordered = true;
        headless->appearedIfShown(wasVisible);
    }
}

void HeadlessWindow::removeChildWindow(Window& child)
{
    auto* headless = dynamic_cast<HeadlessWindow*>(&child);
    if (headless == nullptr || headless->m_parent != this)
        return;
    std::erase_if(m_children, [headless](const auto& entry) { return entry.first == headless; });
    headless->m_parent = nullptr;
}

std::optional<WindowOrdering> HeadlessWindow::childOrdering(const Window& child) const
{
    for (const auto& [window, ordering] : m_children) {
        if (window == &child)
            return ordering;
    }
    return std::nullopt;
}

void HeadlessWindow::pressButton(WindowButton button)
{
    if (const auto found = m_buttonActions.find(button); found != m_buttonActions.end()) {
        // A copy: the action may replace itself.
        const Action action = found->second;
        action();
        return;
    }
    switch (button) {
    case WindowButton::close:
        orderOut();
        break;
    case WindowButton::miniaturize:
        miniaturize();
        break;
    case WindowButton::zoom:
        toggleFullScreen();
        break;
    }
}

void HeadlessWindow::post(SystemNotification notification)
{
    if (const auto system = m_system.lock())
        system->m_notifications->post(notification, this);
}

void HeadlessWindow::appearedIfShown(bool wasVisible) const
{
    if (!wasVisible && isVisible() && m_content) {
        // Held: the content may replace itself.
        const std::shared_ptr<WindowContent> content = m_content;
        content->didAppear();
    }
}

void HeadlessWindow::moveChildren(Point offset)
{
    for (const auto& [child, ordering] : m_children) {
        const Rect frame = child->m_frame;
        child->setFrame(Rect(frame.minX() + offset.x, frame.minY() + offset.y, frame.width(), frame.height()),
            FrameDisplay::immediate);
    }
}

void HeadlessWindow::orderChildren(bool ordered)
{
    for (const auto& [child, ordering] : m_children) {
        const bool wasVisible = child->isVisible();
        child->m_ordered = ordered;
        child->appearedIfShown(wasVisible);
        if (!ordered) {
            if (const auto system = m_system.lock())
                system->resignKey(child);
        }
    }
}

} // namespace velmora
