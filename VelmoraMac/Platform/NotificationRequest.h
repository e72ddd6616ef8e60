#pragma once

#include <string>

#include "NotificationSound.h"
#include "NotificationTrigger.h"

namespace velmora {

// One notification to post later. A request replaces any earlier one with
// the same identifier.
struct NotificationRequest {
    std::string identifier;
    std::string title;
    std::string body;
    NotificationSound sound = NotificationSound::systemDefault;
    NotificationTrigger trigger;

    bool operator==(const NotificationRequest&) const = default;
};

} // namespace velmora
