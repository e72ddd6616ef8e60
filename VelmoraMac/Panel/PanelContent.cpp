#include "PanelContent.h"

#include <utility>

namespace velmora {

PanelContent::PanelContent(
    std::shared_ptr<PracticeCoordinator> model, PanelServices services, SystemNotifications& notifications)
    : m_view(std::move(model), std::move(services))
{
    // A refused observer leaves the status as last read; the panel still
    // works.
    m_activation = notifications.addObserver(
        SystemNotification::applicationDidBecomeActive, [weak = m_weakSelf.weak()](Window* /*window*/) {
            if (PanelContent* self = WeakSelf<PanelContent>::lock(weak))
                self->m_view.applicationDidBecomeActive();
        });
}

} // namespace velmora
