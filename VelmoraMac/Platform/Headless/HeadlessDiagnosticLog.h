#pragma once

#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "VelmoraMac/Platform/DiagnosticLog.h"

namespace velmora {

// A log in memory that keeps every line for a test to read. Thread-safe.
class HeadlessDiagnosticLog final : public DiagnosticLog {
public:
    void write(std::string_view line) override;

    // In the order they were written.
    [[nodiscard]] std::vector<std::string> lines() const;

private:
    mutable std::mutex m_mutex;
    std::vector<std::string> m_lines;
};

} // namespace velmora
