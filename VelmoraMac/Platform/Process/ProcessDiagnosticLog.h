#pragma once

#include <string_view>

#include "VelmoraMac/Platform/DiagnosticLog.h"

namespace velmora {

// The process's standard error, where a library without a log of its own
// leaves its diagnostics for the host program's output or the session's
// journal. Thread-safe: each line goes out in one write, so lines from
// different threads never interleave.
class ProcessDiagnosticLog final : public DiagnosticLog {
public:
    void write(std::string_view line) override;
};

} // namespace velmora
