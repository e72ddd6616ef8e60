#pragma once

#include <cstdint>

namespace velmora {

enum class NotificationSound : std::uint8_t {
    none,
    // The sound the user chose for notifications in the system settings.
    systemDefault,
};

} // namespace velmora
