#include "HeadlessDiagnosticLog.h"

namespace velmora {

void HeadlessDiagnosticLog::write(std::string_view line)
{
    const std::scoped_lock lock(m_mutex);
    m_lines.emplace_back(line);
}

std::vector<std::string> HeadlessDiagnosticLog::lines() const
{
    const std::scoped_lock lock(m_mutex);
    return m_lines;
}

} // namespace velmora
