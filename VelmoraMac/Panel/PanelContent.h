#pragma once

#include <memory>

#include "PanelServices.h"
#include "PracticeView.h"
#include "VelmoraMac/Platform/PlatformToken.h"
#include "VelmoraMac/Platform/SystemNotifications.h"
#include "VelmoraMac/Platform/Window.h"
#include "VelmoraMac/PracticeCoordinator.h"
#include "VelmoraMac/WeakSelf.h"

namespace velmora {

// What the settings panel's window hosts: the panel's pages for the
// coordinator, which the platform's window draws from view().body() and
// operates through the actions it hands out. The view fills its working
// selection when the panel first comes on screen, and rereads the login
// item's status then and whenever the user comes back to the application,
// since the status may have been changed in the system's settings.
// Main thread only.
class PanelContent final : public WindowContent {
public:
    // Throws std::invalid_argument when the model or a service is missing.
    PanelContent(
        std::shared_ptr<PracticeCoordinator> model, PanelServices services, SystemNotifications& notifications);
    PanelContent(const PanelContent&) = delete;
    PanelContent& operator=(const PanelContent&) = delete;
    PanelContent(PanelContent&&) = delete;
    PanelContent& operator=(PanelContent&&) = delete;
    ~PanelContent() override = default;

    [[nodiscard]] PracticeView& view() { return m_view; }
    [[nodiscard]] const PracticeView& view() const { return m_view; }

    void didAppear() override { m_view.appear(); }

private:
    PracticeView m_view;
    std::unique_ptr<PlatformToken> m_activation;
    // Last, so that it goes first: an observer running after that finds
    // nobody.
    WeakSelf<PanelContent> m_weakSelf{this};
};

} // namespace velmora
