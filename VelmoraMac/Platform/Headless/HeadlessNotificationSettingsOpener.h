#pragma once

#include <atomic>

#include "VelmoraMac/Platform/NotificationCenter.h"

namespace velmora {

// Counts the requests to show the notification settings. Thread-safe.
class HeadlessNotificationSettingsOpener final : public NotificationSettingsOpener {
public:
    void openNotificationSettings() override { ++m_openings; }

    [[nodiscard]] int openings() const { return m_openings; }

private:
    std::atomic<int> m_openings{0};
};

} // namespace velmora
