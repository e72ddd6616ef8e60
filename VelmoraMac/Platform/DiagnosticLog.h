#pragma once

#include <string_view>

namespace velmora {

// Where the library writes the rare line meant for whoever investigates a
// misbehaving installation. Safe to call from any thread.
class DiagnosticLog {
public:
    DiagnosticLog() = default;
    DiagnosticLog(const DiagnosticLog&) = delete;
    DiagnosticLog& operator=(const DiagnosticLog&) = delete;
    DiagnosticLog(DiagnosticLog&&) = delete;
    DiagnosticLog& operator=(DiagnosticLog&&) = delete;
    virtual ~DiagnosticLog() = default;

    // Writes `line`, which holds no line break, as one whole line. Never
    // fails to its caller: a log that cannot be written loses the line.
    virtual void write(std::string_view line) = 0;
};

} // namespace velmora
