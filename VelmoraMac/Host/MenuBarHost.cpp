#include "MenuBarHost.h"

#include <chrono>
#include <utility>

#include "PondChromeView.h"
#include "VelmoraCore/PracticeState.h"
#include "VelmoraCore/WindowPlacement.h"
#include "VelmoraMac/EventEnvelope.h"
#include "VelmoraMac/Panel/PanelContent.h"
#include "VelmoraMac/Panel/PanelImage.h"
#include "VelmoraMac/Platform/StatusBar.h"
#include "VelmoraMac/Services/DisplaySleepPolicy.h"
#include "VelmoraMac/Services/LoginLaunchService.h"

namespace velmora {

namespace {

constexpr Size statusIconSize{22, 22};
constexpr std::chrono::milliseconds tickInterval{1000};

// Control, Option and Command: with any of them held a key is a shortcut,
// not steering. Shift and Caps Lock still steer.
constexpr std::uint64_t blockingModifiers = ModifierFlag::control | ModifierFlag::option | ModifierFlag::command;

// Line-based wheels report lines; the pond scrolls in points.
constexpr double lineScrollScale = 16;

constexpr std::uint64_t keyMask = eventMaskBit(InputEventType::keyDown) | eventMaskBit(InputEventType::keyUp)
    | eventMaskBit(InputEventType::flagsChanged);
constexpr std::uint64_t pointerMask = eventMaskBit(InputEventType::leftMouseDown)
    | eventMaskBit(InputEventType::leftMouseUp) | eventMaskBit(InputEventType::mouseMoved)
    | eventMaskBit(InputEventType::leftMouseDragged);
constexpr std::uint64_t scrollMask = eventMaskBit(InputEventType::scrollWheel);
static_assert(keyMask == 0x1C00 && pointerMask == 0x66 && scrollMask == 0x400000);

std::shared_ptr<MenuBarHost>& currentHost()
{
    static std::shared_ptr<MenuBarHost> host;
    return host;
}

// A body that runs with the host while it lives and does nothing after;
// every closure the host hands out is made here, so none keeps it alive.
template <typename Body> auto weakly(const std::shared_ptr<MenuBarHost>& host, Body body)
{
    return [weak = std::weak_ptr<MenuBarHost>(host), body = std::move(body)](auto&&... arguments) {
        if (const auto self = weak.lock())
            body(*self, std::forward<decltype(arguments)>(arguments)...);
    };
}

} // namespace

std::shared_ptr<MenuBarHost> MenuBarHost::create(std::shared_ptr<PracticeCoordinator> model, ShellPlatform platform)
{
    auto host = std::make_shared<MenuBarHost>(ConstructionKey(), std::move(model), std::move(platform));
    host->construct();
    return host;
}

const std::shared_ptr<MenuBarHost>& MenuBarHost::current()
{
    return currentHost();
}

void MenuBarHost::setCurrent(std::shared_ptr<MenuBarHost> host)
{
    currentHost() = std::move(host);
}

MenuBarHost::MenuBarHost(ConstructionKey /*key*/, std::shared_ptr<PracticeCoordinator> model, ShellPlatform platform)
    : m_platform(std::move(platform))
    , m_model(std::move(model))
{
    m_status = m_platform.statusBar->statusItem(statusItemLength);
    m_launchedAtLogin = LoginLaunchService::isLoginEvent(m_platform.application->currentLaunchEvent());
}

MenuBarHost::~MenuBarHost() = default;

// The rest of the construction needs the host's shared owner, for the weak
// references its closures hold.
void MenuBarHost::construct()
{
    DisplaySleepPolicy::allowSystemTimer(
        *m_platform.powerAssertions, *m_platform.diagnosticLog, m_platform.application->processID());
    // Regular, so that the adopted window can become key and the user can
    // switch to the pond like to any application.
    m_platform.application->setActivationPolicy(ActivationPolicy::regular);
    m_platform.application->setLaunchHandler(
        weakly(shared_from_this(), [](MenuBarHost& host, const LaunchEvent& event) { host.handleLaunchEvent(event); }));
    installStatusButton();
    installCallbacks();
    installObservers();
    installMonitors();
    m_model->load();
    m_timer = m_platform.mainThread->startRepeatingTimer(
        tickInterval, weakly(shared_from_this(), [](MenuBarHost& host) { host.tick(); }));
    attachWindow();
}

void MenuBarHost::installStatusButton()
{
    StatusButton* button = m_status ? m_status->button() : nullptr;
    if (button == nullptr)
        return;
    // An icon that is missing or no image leaves an empty image in place, so
    // the item keeps its width and can still be clicked.
    PanelImage icon;
    const auto& icons = m_model->catalog().uiIcons();
    if (const auto lotus = icons.find("lotus"); lotus != icons.end())
        icon = PanelImage::fromBase64(lotus->second);
    button->setTemplateImage(std::string(icon.png()), statusIconSize);
    button->setToolTip(title);
    button->setAccessibilityLabel(title);
    button->setAction(
        weakly(shared_from_this(), [](MenuBarHost& host, InputEventType trigger) { host.toggle(trigger); }));
    button->sendActionOn(eventMaskBit(InputEventType::leftMouseUp) | eventMaskBit(InputEventType::rightMouseUp));
}

void MenuBarHost::installCallbacks()
{
    const auto self = shared_from_this();
    m_model->setOnSnapshot(weakly(self, [](MenuBarHost& host, const PondSnapshot& snapshot) {
        // Every snapshot carries the whole state, so one not yet read is
        // simply replaced.
        host.m_events.clear();
        host.m_events.push_back(EventEnvelope::wrap(snapshot));
    }));
    m_model->setOnEnterPond(weakly(self, [](MenuBarHost& host) { host.showPond(); }));
    m_model->setOnOpenPanel(weakly(self, [](MenuBarHost& host) { host.showPanel(); }));
    m_model->setOnChromeChanged(weakly(self, [](MenuBarHost& host) { host.updateChrome(); }));
    m_model->reminders().setOnOpen(weakly(self, [](MenuBarHost& host) { host.open(); }));
}

void MenuBarHost::installObservers()
{
    const auto self = shared_from_this();
    SystemNotifications& notifications = *m_platform.systemNotifications;
    const auto observe
        = [this, &notifications](SystemNotification notification, SystemNotifications::Observer observer) {
              if (auto token = notifications.addObserver(notification, std::move(observer)))
                  m_observers.push_back(std::move(token));
          };
    const auto onWindow = [&self](void (MenuBarHost::*member)(Window*)) {
        return weakly(self, [member](MenuBarHost& host, Window* window) { (host.*member)(window); });
    };
    const auto always = [&self](void (MenuBarHost::*member)()) {
        return weakly(self, [member](MenuBarHost& host, Window* /*window*/) { (host.*member)(); });
    };
    const auto refresh = weakly(self, [](MenuBarHost& host, Window* /*window*/) { host.m_model->refresh(); });

    observe(SystemNotification::applicationDidResignActive, always(&MenuBarHost::resetInput));
    observe(SystemNotification::windowWillMiniaturize, onWindow(&MenuBarHost::windowWillMiniaturize));
    observe(SystemNotification::windowDidDeminiaturize, onWindow(&MenuBarHost::windowDidDeminiaturize));
    observe(SystemNotification::windowDidResize, onWindow(&MenuBarHost::windowDidResize));
    observe(SystemNotification::windowWillEnterFullScreen, onWindow(&MenuBarHost::fullScreenWillChange));
    observe(SystemNotification::windowWillExitFullScreen, onWindow(&MenuBarHost::fullScreenWillChange));
    observe(SystemNotification::windowDidEnterFullScreen, onWindow(&MenuBarHost::fullScreenDidChange));
    observe(SystemNotification::windowDidExitFullScreen, onWindow(&MenuBarHost::fullScreenDidChange));
    observe(SystemNotification::windowDidResignKey, onWindow(&MenuBarHost::windowDidResignKey));
    observe(SystemNotification::applicationDidChangeScreenParameters, always(&MenuBarHost::reposition));
    observe(SystemNotification::workspaceWillSleep, always(&MenuBarHost::hide));
    observe(SystemNotification::workspaceScreensDidSleep, always(&MenuBarHost::hide));
    observe(SystemNotification::workspaceDidWake, refresh);
    observe(SystemNotification::systemTimeZoneDidChange, weakly(self, [](MenuBarHost& host, Window* /*window*/) {
        // The calendar is read anew only when told; days must be reckoned
        // in the new zone from this refresh on.
        host.m_platform.systemEnvironment->timeZoneDidChange();
        host.m_model->refresh();
    }));
}

void MenuBarHost::installMonitors()
{
    const auto self = shared_from_this();
    EventMonitors& monitors = *m_platform.eventMonitors;
    const auto monitor
        = [this, &monitors, &self](std::uint64_t mask, EventDisposition (MenuBarHost::*member)(const InputEvent&)) {
              // Not weakly(): a monitor must answer, and a host that is gone
              // lets every event through.
              auto handler = [weak = std::weak_ptr<MenuBarHost>(self), member](const InputEvent& event) {
                  const auto host = weak.lock();
                  return host ? ((*host).*member)(event) : EventDisposition::passOn;
              };
              // A refused monitor leaves its input unrecorded; the others still
              // work.
              if (auto token = monitors.addLocalMonitor(mask, std::move(handler)))
                  m_monitors.push_back(std::move(token));
          };
    monitor(keyMask, &MenuBarHost::handleKeyEvent);
    monitor(pointerMask, &MenuBarHost::handlePointerEvent);
    monitor(scrollMask, &MenuBarHost::handleScrollEvent);
}

// MARK: - Predicates

bool MenuBarHost::interactive() const
{
    return m_visible && m_platform.application->isActive() && m_pond && m_pond->isKeyWindow() && !panelVisible()
        && !m_pond->isMiniaturized() && !m_fullScreenTransition;
}

std::optional<double> MenuBarHost::contentWidth() const
{
    if (!m_pond)
        return std::nullopt;
    const ContentView* content = m_pond->contentView();
    if (content == nullptr)
        return std::nullopt;
    return content->bounds().width();
}

bool MenuBarHost::pondReady() const
{
    return m_model->state().get().onboarded && !m_model->loadFailed().get();
}

bool MenuBarHost::panelVisible() const
{
    return m_panel && m_panel->isVisible();
}

bool MenuBarHost::pondInFullScreen() const
{
    return m_pond && m_pond->isFullScreen();
}

// MARK: - Lifecycle

void MenuBarHost::tick()
{
    DisplaySleepPolicy::allowSystemTimer(
        *m_platform.powerAssertions, *m_platform.diagnosticLog, m_platform.application->processID());
    if (!m_pond)
        attachWindow();
    const SystemEnvironment& system = *m_platform.systemEnvironment;
    std::string today = PracticeState::dayKey(system.now(), system.currentCalendar());
    if (today != m_lastDay) {
        m_lastDay = std::move(today);
        m_model->refresh();
    }
}

void MenuBarHost::handleLaunchEvent(const LaunchEvent& event)
{
    if (event.eventID != LaunchEvent::openApplication || event.propertyData != LaunchEvent::launchedAsLoginItem) {
        open();
        return;
    }
    // Started with the session: wait in the menu bar.
    m_launchedAtLogin = true;
    hide();
}

void MenuBarHost::open()
{
    m_model->refresh();
    if (pondReady())
        m_model->enter();
    else
        showPanel();
}

void MenuBarHost::hide()
{
    if (m_fullScreenTransition)
        return;
    if (pondInFullScreen()) {
        // Hiding a full-screen window would leave an empty space behind;
        // the hide completes once the pond has left full screen.
        m_hideAfterFullScreen = true;
        m_restorePanelAfterFullScreen = false;
        m_pond->toggleFullScreen();
        return;
    }
    rememberFrame();
    resetInput();
    m_visible = false;
    detachWindows();
    if (m_pond)
        m_pond->orderOut();
    if (m_panel)
        m_panel->orderOut();
}

void MenuBarHost::toggle(InputEventType trigger)
{
    if (trigger == InputEventType::rightMouseUp) {
        showMenu();
        return;
    }
    if (m_visible || panelVisible())
        hide();
    else
        open();
}

void MenuBarHost::showMenu()
{
    if (!m_status)
        return;
    const auto self = shared_from_this();
    Menu menu;
    menu.items.push_back(
        MenuItem::item(m_model->text("settings"), ",", weakly(self, [](MenuBarHost& host) { host.settings(); })));
    menu.items.push_back(MenuItem::separatorItem());
    menu.items.push_back(
        MenuItem::item(m_model->text("quitApp"), "q", weakly(self, [](MenuBarHost& host) { host.quit(); })));
    // Attached only while it is open: with a menu attached, the next left
    // click would open the menu instead of reaching toggle().
    m_status->setMenu(std::move(menu));
    if (StatusButton* button = m_status->button())
        button->performClick();
    m_status->setMenu(std::nullopt);
}

void MenuBarHost::settings()
{
    m_model->setPage(m_model->state().get().onboarded ? "settings" : "welcome");
    showPanel();
}

void MenuBarHost::quit()
{
    m_platform.application->terminate();
}

void MenuBarHost::resetInput()
{
    m_pointerState = PondPointerState();
    m_keyboardState.clear();
}

// MARK: - Chrome

void MenuBarHost::updateChrome()
{
    if (!m_chrome)
        return;
    const auto days = static_cast<std::int64_t>(m_model->state().get().practiceDays.size());
    m_chrome->setDaysText(m_model->text("days", days));
    m_chrome->setGearAccessibilityLabel(m_model->text("settings"));
}

void MenuBarHost::showChrome()
{
    if (m_chrome)
        m_chrome->show();
}

void MenuBarHost::hideChrome()
{
    if (m_chrome)
        m_chrome->hide();
}

// MARK: - Windows

void MenuBarHost::attachWindow()
{
    if (m_pond)
        return;
    for (const std::shared_ptr<Window>& window : m_platform.windowSystem->windows()) {
        if (!window->isPanel() && window->contentView() != nullptr) {
            m_pond = window;
            break;
        }
    }
    if (!m_pond)
        return;
    // Out of sight until it is dressed and the state decides what to show.
    m_pond->orderOut();

    WindowAttributes attributes = m_pond->attributes();
    attributes.title = title;
    m_pond->setAttributes(attributes);
    installWindowControls(*m_pond);
    attributes = m_pond->attributes();
    attributes.movable = true;
    attributes.movableByWindowBackground = false;
    // Closing only hides: the renderer's window must outlive every close.
    attributes.releasedWhenClosed = false;
    attributes.level = 0;
    attributes.collectionBehavior = WindowAttributes::fullScreenPrimary;
    m_pond->setAttributes(attributes);
    installToolbar(*m_pond);

    if (m_launchedAtLogin)
        hide();
    else if (pondReady())
        m_model->enter();
    else
        showPanel();
}

void MenuBarHost::installWindowControls(Window& window)
{
    WindowAttributes attributes = window.attributes();
    attributes.styleMask = WindowAttributes::titled | WindowAttributes::closable | WindowAttributes::miniaturizable
        | WindowAttributes::resizable;
    attributes.titleVisible = true;
    attributes.titlebarTransparent = false;
    attributes.darkAppearance = true;
    attributes.standardButtonsShown = true;
    window.setAttributes(attributes);
    const auto self = shared_from_this();
    window.setButtonAction(WindowButton::close, weakly(self, [](MenuBarHost& host) { host.closeWindow(); }));
    window.setButtonAction(WindowButton::zoom, weakly(self, [](MenuBarHost& host) { host.toggleFullScreen(); }));
}

void MenuBarHost::installToolbar(Window& window)
{
    ContentView* content = window.contentView();
    if (content == nullptr)
        return;
    auto chrome = std::make_shared<PondChromeView>(m_model->catalog(), m_model->text("settings"),
        weakly(shared_from_this(), [](MenuBarHost& host) { host.settings(); }));
    content->addOverlay(chrome);
    m_chrome = std::move(chrome);
    updateChrome();
}

void MenuBarHost::showPond()
{
    if (!pondReady()) {
        showPanel();
        return;
    }
    rememberFrame();
    detachWindows();
    if (m_panel)
        m_panel->orderOut();
    showChrome();
    reposition();
    m_visible = true;
    if (m_pond) {
        m_pond->setMouseEvents(MouseEvents::accepted);
        if (m_pond->isMiniaturized())
            m_pond->deminiaturize();
    }
    m_platform.application->activate();
    if (m_pond)
        m_pond->makeKeyAndOrderFront();
    m_model->refresh();
}

void MenuBarHost::showPanel()
{
    rememberFrame();
    resetInput();
    const bool behind = pondReady();
    m_visible = behind;
    if (!behind) {
        detachWindows();
        if (m_pond && !m_pond->isFullScreen())
            m_pond->orderOut();
    }
    if (!m_panel)
        createPanel();
    reposition();
    hideChrome();

    if (m_pond) {
        const bool fullScreen = m_pond->isFullScreen();
        m_pond->setMouseEvents(behind || fullScreen ? MouseEvents::ignored : MouseEvents::accepted);
        if (behind || fullScreen) {
            if (m_pond->isMiniaturized())
                m_pond->deminiaturize();
            if (m_panel) {
                detachWindows();
                if (fullScreen) {
                    // The panel joins the pond's full-screen space, over it.
                    m_panel->setFrame(m_pond->frame(), FrameDisplay::deferred);
                    m_pond->addChildWindow(*m_panel, WindowOrdering::above);
                } else {
                    // The pond shows through the panel's transparent parts
                    // and moves with it.
                    m_panel->addChildWindow(*m_pond, WindowOrdering::below);
                }
            }
            m_pond->orderFront();
        }
    }
    if (m_panel && m_panel->isMiniaturized())
        m_panel->deminiaturize();
    m_platform.application->activate();
    if (m_panel)
        m_panel->makeKeyAndOrderFront();
}

void MenuBarHost::createPanel()
{
    WindowAttributes attributes;
    attributes.title = title;
    attributes.opaque = false;
    attributes.clearBackground = true;
    attributes.floatingPanel = false;
    attributes.level = 0;
    attributes.releasedWhenClosed = false;
    attributes.hidesOnDeactivate = false;
    attributes.collectionBehavior = WindowAttributes::fullScreenAuxiliary;
    m_panel = m_platform.windowSystem->createPanel(targetFrame(), attributes);
    if (!m_panel)
        return;
    installWindowControls(*m_panel);
    PanelServices services{m_platform.urlOpener, m_platform.loginItemService, m_platform.systemEnvironment};
    m_panel->setContent(std::make_shared<PanelContent>(m_model, std::move(services), *m_platform.systemNotifications));
}

void MenuBarHost::rememberFrame()
{
    if (pondInFullScreen() || m_fullScreenTransition)
        return;
    const auto onScreen = [](const std::shared_ptr<Window>& window) {
        return window && window->isVisible() && !window->isMiniaturized();
    };
    const auto inDock = [](const std::shared_ptr<Window>& window) { return window && window->isMiniaturized(); };
    for (const auto* window : {&m_panel, &m_pond}) {
        if (onScreen(*window)) {
            m_lastFrame = (*window)->frame();
            return;
        }
    }
    for (const auto* window : {&m_panel, &m_pond}) {
        if (inDock(*window)) {
            m_lastFrame = (*window)->frame();
            return;
        }
    }
}

Rect MenuBarHost::targetFrame() const
{
    const std::vector<Screen> screens = m_platform.windowSystem->screens();
    std::optional<Screen> screen;
    if (m_lastFrame) {
        const Point centre{m_lastFrame->midX(), m_lastFrame->midY()};
        for (const Screen& candidate : screens) {
            if (candidate.frame.contains(centre)) {
                screen = candidate;
                break;
            }
        }
    }
    if (!screen)
        screen = m_platform.windowSystem->mainScreen();
    if (!screen && !screens.empty())
        screen = screens.front();
    if (!screen) {
        // Nowhere to place anything: stay where the user last saw the
        // window, or where it is, until a screen comes back.
        if (m_lastFrame)
            return *m_lastFrame;
        if (m_pond)
            return m_pond->frame();
        return {0, 0, WindowPlacement::defaultWidth, WindowPlacement::defaultHeight};
    }
    return m_lastFrame ? WindowPlacement::constrained(*m_lastFrame, screen->visibleFrame)
                       : WindowPlacement::frame(screen->visibleFrame);
}

void MenuBarHost::reposition()
{
    if (m_fullScreenTransition)
        return;
    if (pondInFullScreen()) {
        if (panelVisible())
            m_panel->setFrame(m_pond->frame(), FrameDisplay::immediate);
        return;
    }
    rememberFrame();
    const Rect frame = targetFrame();
    m_lastFrame = frame;
    if (m_panel)
        m_panel->setFrame(frame, m_panel->isVisible() ? FrameDisplay::immediate : FrameDisplay::deferred);
    if (m_pond)
        m_pond->setFrame(frame, m_visible ? FrameDisplay::immediate : FrameDisplay::deferred);
}

void MenuBarHost::detachWindows()
{
    if (!m_pond || !m_panel)
        return;
    if (m_pond->parentWindow() == m_panel.get())
        m_panel->removeChildWindow(*m_pond);
    if (m_panel->parentWindow() == m_pond.get())
        m_pond->removeChildWindow(*m_panel);
}

void MenuBarHost::toggleFullScreen()
{
    if (!m_pond || m_fullScreenTransition)
        return;
    rememberFrame();
    m_restorePanelAfterFullScreen = panelVisible();
    detachWindows();
    if (m_panel)
        m_panel->orderOut();
    showChrome();
    m_pond->setMouseEvents(MouseEvents::accepted);
    if (!m_pond->isFullScreen())
        m_pond->setFrame(targetFrame(), FrameDisplay::immediate);
    m_visible = true;
    m_platform.application->activate();
    m_pond->makeKeyAndOrderFront();
    m_pond->toggleFullScreen();
}

void MenuBarHost::closeWindow()
{
    hide();
}

// MARK: - Window observers

void MenuBarHost::windowWillMiniaturize(Window* window)
{
    const bool isPanel = window != nullptr && window == m_panel.get();
    if (!isPanel && (window == nullptr || window != m_pond.get()))
        return;
    rememberFrame();
    m_visible = false;
    resetInput();
    // The pond behind the panel leaves with it.
    if (isPanel && m_pond)
        m_pond->orderOut();
}

void MenuBarHost::windowDidDeminiaturize(Window* window)
{
    if (window == nullptr)
        return;
    if (window == m_panel.get()) {
        showPanel();
    } else if (window == m_pond.get()) {
        m_visible = true;
        m_model->refresh();
    }
}

void MenuBarHost::windowDidResize(Window* window)
{
    if (!m_pond || !m_panel || !m_panel->isVisible() || !m_visible || window == nullptr)
        return;
    if (window == m_panel.get() && m_pond->parentWindow() == m_panel.get() && m_pond->frame() != m_panel->frame())
        m_pond->setFrame(m_panel->frame(), FrameDisplay::immediate);
    else if (window == m_pond.get() && m_panel->parentWindow() == m_pond.get() && m_panel->frame() != m_pond->frame())
        m_panel->setFrame(m_pond->frame(), FrameDisplay::immediate);
}

void MenuBarHost::fullScreenWillChange(Window* window)
{
    if (window == nullptr || window != m_pond.get())
        return;
    m_restorePanelAfterFullScreen = m_restorePanelAfterFullScreen || panelVisible();
    m_fullScreenTransition = true;
    resetInput();
    detachWindows();
    if (m_panel)
        m_panel->orderOut();
    showChrome();
    m_pond->setMouseEvents(MouseEvents::accepted);
}

void MenuBarHost::fullScreenDidChange(Window* window)
{
    if (window == nullptr || window != m_pond.get())
        return;
    m_fullScreenTransition = false;
    if (m_hideAfterFullScreen && !m_pond->isFullScreen()) {
        m_hideAfterFullScreen = false;
        m_restorePanelAfterFullScreen = false;
        hide();
        return;
    }
    if (m_restorePanelAfterFullScreen) {
        m_restorePanelAfterFullScreen = false;
        showPanel();
    }
}

void MenuBarHost::windowDidResignKey(Window* window)
{
    if (window != nullptr && window == m_pond.get())
        resetInput();
}

// MARK: - Input monitors

ContentView* MenuBarHost::pondContent(const InputEvent& event) const
{
    if (!m_pond || event.window == nullptr || event.window != m_pond.get())
        return nullptr;
    return m_pond->contentView();
}

Point MenuBarHost::normalized(const ContentView& content, Point local)
{
    return WindowPlacement::normalizedPointer(
        local, content.bounds(), content.isFlipped() ? WindowPlacement::Flipped::yes : WindowPlacement::Flipped::no);
}

EventDisposition MenuBarHost::handleKeyEvent(const InputEvent& event)
{
    const std::uint64_t flags = event.modifierFlags;
    const bool blocked = (flags & blockingModifiers) != 0;
    switch (event.type) {
    case InputEventType::flagsChanged:
        if (blocked)
            m_keyboardState.clear();
        return EventDisposition::passOn;
    case InputEventType::keyDown:
        if (event.keyCode == KeyCode::f && (flags & ModifierFlag::command) != 0
            && (flags & ModifierFlag::control) != 0) {
            // Holding the shortcut toggles once.
            if (!event.isARepeat)
                toggleFullScreen();
            return EventDisposition::consume;
        }
        if (event.keyCode == KeyCode::escape) {
            if (panelVisible())
                showPond();
            else if (pondInFullScreen())
                toggleFullScreen();
            else
                hide();
            return EventDisposition::consume;
        }
        break;
    case InputEventType::keyUp:
        break;
    default:
        return EventDisposition::passOn;
    }

    const bool belongsToPond = interactive() && event.window != nullptr && event.window == m_pond.get();
    if (!belongsToPond || blocked) {
        // Whatever steered before no longer does once the keys go
        // elsewhere or become a shortcut.
        m_keyboardState.clear();
        return EventDisposition::passOn;
    }
    if (!PondKeyboardState::isNavigation(event.keyCode))
        return EventDisposition::passOn;
    if (event.type == InputEventType::keyDown)
        m_keyboardState.press(event.keyCode);
    else
        m_keyboardState.release(event.keyCode);
    return EventDisposition::consume;
}

EventDisposition MenuBarHost::handlePointerEvent(const InputEvent& event)
{
    const ContentView* content = pondContent(event);
    if (content == nullptr)
        return EventDisposition::passOn;
    const Point local = content->convertFromWindow(event.locationInWindow);
    // Tracked even while the pond is not interactive, so that the renderer
    // knows where the pointer is when input resumes.
    m_eventPointer = normalized(*content, local);
    if (event.type == InputEventType::leftMouseDown) {
        // A press on the title bar or an edge is the window's, not the
        // pond's.
        if (interactive() && content->bounds().contains(local)) {
            m_pointerState.down = true;
            m_pointerState.held = true;
        }
    } else if (event.type == InputEventType::leftMouseUp) {
        if (m_pointerState.held)
            m_pointerState.up = true;
        m_pointerState.held = false;
    }
    // The renderer's view still sees every click: the pond only records.
    return EventDisposition::passOn;
}

EventDisposition MenuBarHost::handleScrollEvent(const InputEvent& event)
{
    const ContentView* content = pondContent(event);
    if (content == nullptr || !interactive())
        return EventDisposition::passOn;
    const Point local = content->convertFromWindow(event.locationInWindow);
    if (!content->bounds().contains(local))
        return EventDisposition::passOn;
    m_eventPointer = normalized(*content, local);
    const double scale = event.hasPreciseScrollingDeltas ? 1 : lineScrollScale;
    m_pointerState.scroll.x += event.scrollingDeltaX * scale;
    m_pointerState.scroll.y += event.scrollingDeltaY * scale;
    return EventDisposition::consume;
}

} // namespace velmora
