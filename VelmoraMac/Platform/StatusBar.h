#pragma once

#include <memory>

#include "StatusItem.h"

namespace velmora {

// The system's menu bar, where the application's status item lives.
// Main thread only.
class StatusBar {
public:
    StatusBar() = default;
    StatusBar(const StatusBar&) = delete;
    StatusBar& operator=(const StatusBar&) = delete;
    StatusBar(StatusBar&&) = delete;
    StatusBar& operator=(StatusBar&&) = delete;
    virtual ~StatusBar() = default;

    // A new item `length` points wide; it stays in the bar while the
    // returned item lives.
    virtual std::shared_ptr<StatusItem> statusItem(double length) = 0;
};

} // namespace velmora
