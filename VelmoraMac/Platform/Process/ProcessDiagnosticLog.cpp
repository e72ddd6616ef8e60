#include "ProcessDiagnosticLog.h"

#include <cerrno>
#include <string>

#include <unistd.h>

namespace velmora {

void ProcessDiagnosticLog::write(std::string_view line)
{
    std::string text;
    text.reserve(line.size() + 1);
    text.append(line).push_back('\n');
    std::string_view rest = text;
    while (!rest.empty()) {
        const ssize_t written = ::write(STDERR_FILENO, rest.data(), rest.size());
        if (written < 0 && errno == EINTR)
            continue;
        // A closed or full standard error loses the line: a diagnostic is
        // not worth failing or blocking the caller for.
        if (written <= 0)
            return;
        rest.remove_prefix(static_cast<std::size_t>(written));
    }
}

} // namespace velmora
